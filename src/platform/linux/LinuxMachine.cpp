#include "platform/linux/LinuxMachine.h"

#include <algorithm>
#include <fstream>
#include <map>
#include <set>
#include <string>
#include <thread>
#include <vector>

namespace morvelin {

namespace {

namespace fs = std::filesystem;

/// A file's first line; empty where there is none.
std::string lineOf(const fs::path& file) {
    std::string line;
    std::getline(std::ifstream(file), line);
    return line;
}

std::vector<fs::path> foldersIn(const fs::path& folder) {
    std::vector<fs::path> folders;
    std::error_code error;
    for (fs::directory_iterator entry(folder, error), end; !error && entry != end; entry.increment(error))
        folders.push_back(entry->path());
    return folders;
}

bool isProcessor(const fs::path& folder) {
    const std::string name = folder.filename();
    return name.size() > 3 && name.starts_with("cpu") &&
           std::ranges::all_of(name.substr(3), [](unsigned char c) { return std::isdigit(c) != 0; });
}

/// A processor's speed in the kernel's measure, where cores differ; else 0.
long capacityOf(const fs::path& processor) { return std::atol(lineOf(processor / "cpu_capacity").c_str()); }

/// Threads of one core share its list of siblings.
int fastestCores(const fs::path& processors) {
    std::map<long, std::set<std::string>> cores;
    for (const fs::path& processor : foldersIn(processors))
        if (isProcessor(processor))
            if (const std::string siblings = lineOf(processor / "topology" / "thread_siblings_list"); !siblings.empty())
                cores[capacityOf(processor)].insert(siblings);
    return cores.empty() ? 0 : static_cast<int>(cores.rbegin()->second.size());
}

/// A battery of a mouse or a headset counts for nothing.
bool isOnACPower(const fs::path& supplies) {
    bool hasBattery = false;
    for (const fs::path& supply : foldersIn(supplies)) {
        if (lineOf(supply / "scope") == "Device") continue;
        if (lineOf(supply / "type") == "Battery")
            hasBattery = true;
        else if (lineOf(supply / "online") == "1")
            return true;
    }
    return !hasBattery;
}

} // namespace

MachineFacts machineFacts(const fs::path& sys) {
    const int cores = fastestCores(sys / "devices" / "system" / "cpu");
    const int threads = static_cast<int>(std::thread::hardware_concurrency());
    return {cores > 0 ? cores : std::max(1, threads), isOnACPower(sys / "class" / "power_supply")};
}

} // namespace morvelin
