// What the benchmarks of files share: a folder to work in, medians, and an end with a reason.
#pragma once

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include <fmt/format.h>

namespace morvelin::bench {

[[noreturn]] inline void stop(const std::string& why) {
    fmt::print(stderr, "{}: {}\n", program_invocation_short_name, why);
    std::exit(1);
}

/// The outcome's value; an error ends the benchmark.
template <class Outcome>
auto must(Outcome outcome) {
    if (!outcome) stop(outcome.error().description());
    if constexpr (!std::is_void_v<typename Outcome::Value>) return std::move(*outcome);
}

/// A folder of its own that goes with the object.
struct Folder {
    std::filesystem::path path = makePath();

    Folder() = default;
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;
    ~Folder() { std::filesystem::remove_all(path); }

private:
    static std::filesystem::path makePath() {
        std::string name = (std::filesystem::temp_directory_path() / "morvelin-bench-XXXXXX").string();
        const char* made = ::mkdtemp(name.data());
        if (made == nullptr) stop("no temporary folder can be made");
        return made;
    }
};

/// The median time of some runs, in milliseconds.
template <class Work>
double medianMilliseconds(int runs, Work&& work) {
    std::vector<double> times;
    for (int run = 0; run < runs; ++run) {
        const auto start = std::chrono::steady_clock::now();
        work();
        times.push_back(std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count());
    }
    std::ranges::sort(times);
    return times[times.size() / 2];
}

} // namespace morvelin::bench
