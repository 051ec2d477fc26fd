#include "capture/EncoderChoice.h"

#include <chrono>
#include <csignal>
#include <thread>

#include <fmt/ranges.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include "platform/DefaultsKeys.h"

namespace morvelin {

namespace {

constexpr std::chrono::milliseconds kLookInterval{20};

/// The exit status of a child, or nothing where it was ended by a signal or had to be.
std::optional<int> waitFor(pid_t child, Seconds patience) {
    const auto giveUp = std::chrono::steady_clock::now() + std::chrono::duration<double>(patience.value);
    int status = 0;
    while (::waitpid(child, &status, WNOHANG) == 0) {
        if (std::chrono::steady_clock::now() >= giveUp) {
            ::kill(child, SIGKILL);
            ::waitpid(child, &status, 0);
            return std::nullopt;
        }
        std::this_thread::sleep_for(kLookInterval);
    }
    return WIFEXITED(status) ? std::optional(WEXITSTATUS(status)) : std::nullopt;
}

} // namespace

std::string chooseTakeEncoder(const std::vector<std::string>& candidates, Defaults& settings, const EncoderProbe& probe,
                              const Log& log) {
    if (candidates.empty()) return {};
    const std::string present = fmt::format("{}", fmt::join(candidates, " "));
    if (settings.get(defaults::kProbedTakeEncoders) == present) return settings.get(defaults::kTakeEncoder);

    std::string chosen;
    for (const std::string& candidate : candidates) {
        if (!chosen.empty()) break;
        if (probe(candidate))
            chosen = candidate;
        else
            log(fmt::format("[CaptureEngine] The encoder {} does not work here and is not used", candidate));
    }
    // The outcome first: a list without one would stand for software.
    auto kept = settings.set(defaults::kTakeEncoder, chosen);
    if (kept) kept = settings.set(defaults::kProbedTakeEncoders, present);
    if (!kept) log("[CaptureEngine] Could not keep which encoder works: " + kept.error());
    return chosen;
}

EncoderProbe probeInChild(std::filesystem::path executable, Seconds patience) {
    return [executable = std::move(executable), patience](const std::string& encoder) {
        std::string program = executable.string();
        std::string command = "probe-encoder";
        std::string name = encoder;
        char* const words[] = {program.data(), command.data(), name.data(), nullptr};
        pid_t child = -1;
        if (::posix_spawn(&child, program.c_str(), nullptr, nullptr, words, environ) != 0) return false;
        return waitFor(child, patience) == 0;
    };
}

} // namespace morvelin
