// Listing a library of 2,000 projects; the rival reads the same headers and parses them with nlohmann-json, and knows
// beforehand where they lie. One line, medians of one run.

#include <fstream>

#include <nlohmann/json.hpp>

#include "Bench.h"
#include "agent/ProjectSummary.h"
#include "storage/ProjectBundle.h"
#include "storage/RecentProjectsStore.h"

namespace {

using namespace morvelin;
using namespace morvelin::bench;
namespace fs = std::filesystem;

constexpr int kProjects = 2000;
constexpr int kVersions = 3;
constexpr int kRuns = 5;

struct Library {
    Folder folder;
    std::vector<fs::path> headers;

    Library() {
        SeededIdSource ids(1);
        for (int i = 0; i < kProjects; ++i) addProject(i, ids);
    }

private:
    void addProject(int number, IdSource& ids) {
        ProjectBundle::Capture capture;
        capture.name = fmt::format("Recording Nov 21, 2026 at {}", number);
        capture.createdAt = Date::fromUnixSeconds(1'700'000'000 + number * 977LL % kProjects);
        capture.originalDuration = 61.5_s;
        capture.recordingKind = RecordingKind::Screen;
        for (int i = 0; i < kVersions; ++i) capture.versionOrder.push_back(ids.next());
        capture.currentVersionID = capture.versionOrder.back();

        const fs::path bundle = folder.path / fmt::format("Recording {}.morvelin", number);
        fs::create_directories(bundle / "versions");
        for (const UUID& id : capture.versionOrder) std::ofstream(bundle / "versions" / (id.text() + ".json")) << "{}";
        std::ofstream(bundle / "recording.mov") << "movie";
        std::ofstream(bundle / "capture.json") << writeJSON(toJSON(capture), JSONStyle::Compact);
        headers.push_back(bundle / "capture.json");
    }
};

} // namespace

int main() {
    const Library library;
    const RecentProjectsStore store(library.folder.path);
    const ProjectsFolder folder(library.folder.path);
    const auto list = [&] {
        const auto projects = store.list();
        if (!projects || projects->size() != kProjects) stop("the list isn't whole");
    };
    const auto parse = [&] {
        std::size_t names = 0;
        for (const fs::path& header : library.headers) {
            const auto text = readFile(header);
            if (text) names += nlohmann::json::parse(*text).contains("name");
        }
        if (names != kProjects) stop("the rival read something else");
    };
    const auto summarize = [&] {
        if (projectSummaries(folder, kProjects).size() != kProjects) stop("the summaries aren't whole");
    };
    list(); // all find the files in memory
    const double rival = medianMilliseconds(kRuns, parse);
    const double listing = medianMilliseconds(kRuns, list);
    const double summaries = medianMilliseconds(kRuns, summarize);
    fmt::print("list {:.2f}, agents' list {:.2f} of reading and parsing the headers: {:.1f} and {:.1f} ms against "
               "{:.1f} ms; {} projects\n",
               listing / rival, summaries / rival, listing, summaries, rival, kProjects);
}
