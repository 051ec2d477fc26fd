// What a piece of work costs, on the clock and of the processors, here or in a command that is run.
#pragma once

#include <chrono>
#include <cstdlib>
#include <string>

#include <sys/resource.h>

#include "Bench.h"

namespace morvelin::bench {

struct Cost {
    double wall = 0; ///< seconds
    double cpu = 0;
};

inline double cpuSeconds(int who) {
    rusage usage{};
    ::getrusage(who, &usage);
    const auto seconds = [](const timeval& t) {
        return static_cast<double>(t.tv_sec) + static_cast<double>(t.tv_usec) * 1e-6;
    };
    return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

/// `who` is `RUSAGE_SELF`, or `RUSAGE_CHILDREN` for work that waits for commands.
template <class Work>
Cost measure(int who, Work&& work) {
    const double cpu = cpuSeconds(who);
    const auto start = std::chrono::steady_clock::now();
    work();
    const std::chrono::duration<double> wall = std::chrono::steady_clock::now() - start;
    return {wall.count(), cpuSeconds(who) - cpu};
}

/// Runs a shell command that must succeed.
inline Cost run(const std::string& command) {
    return measure(RUSAGE_CHILDREN, [&] {
        if (std::system(command.c_str()) != 0) stop("failed: " + command);
    });
}

inline double median(std::vector<Cost> costs, double Cost::*part) {
    std::ranges::sort(costs, {}, part);
    return costs[costs.size() / 2].*part;
}

} // namespace morvelin::bench
