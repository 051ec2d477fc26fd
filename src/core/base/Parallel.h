// Spreads independent small work over the machine's cores.
#pragma once

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <thread>
#include <vector>

namespace morvelin {

/// How many processors this process may run on, which can be fewer than the machine has.
[[nodiscard]] std::size_t processorCount();

/// Calls `work(i)` for each i below `count`, from several threads at once where that pays, and returns when all is done.
/// `work` must not throw.
template <class Work>
void inParallel(std::size_t count, Work&& work) {
    constexpr std::size_t kBlock = 64; // a thread's start costs as much as reading a few files
    std::atomic<std::size_t> next = 0;
    const auto run = [&] {
        for (std::size_t begin = next.fetch_add(kBlock); begin < count; begin = next.fetch_add(kBlock))
            for (std::size_t i = begin; i < std::min(begin + kBlock, count); ++i) work(i);
    };
    const std::size_t blocks = (count + kBlock - 1) / kBlock;
    std::vector<std::jthread> helpers;
    for (std::size_t i = 1; i < std::min(blocks, processorCount()); ++i) helpers.emplace_back(run);
    run();
}

} // namespace morvelin
