// An agent asks for a project of an hour, 108,000 pointer samples and 500 zooms; the rival is nlohmann-json, which
// parses the project's files into trees. One line, medians of one run.

#include <fstream>

#include <nlohmann/json.hpp>

#include "AnHour.h"
#include "agent/ProjectDescription.h"

namespace {

using namespace morvelin;
using namespace morvelin::bench;
namespace fs = std::filesystem;

constexpr int kRuns = 9;
constexpr int kClickInterval = 400; // 13 s: each click has a zoom in and a zoom out
constexpr std::size_t kZooms = 500;

std::vector<std::string> filesOf(const fs::path& bundle) {
    std::vector<std::string> texts;
    for (const auto& entry : fs::recursive_directory_iterator(bundle))
        if (entry.path().extension() == ".json") texts.push_back(must(readFile(entry.path())));
    return texts;
}

} // namespace

int main() {
    const Folder folder;
    const fs::path bundle = folder.path / "An hour.morvelin";
    SeededIdSource ids(1);
    const SystemClock clock;
    const ProjectBundle::Services services{ids, clock, [](std::string_view line) { stop(std::string(line)); }};
    writeAnHour(bundle, pointerOfAnHour(kClickInterval));

    const auto describe = [&](ProjectSnapshots& snapshots) {
        const auto description = describeProject(*must(snapshots.read(bundle)), {}, EditorState::Closed);
        if (!description || description->at("zooms").size() < kZooms) stop("the description isn't whole");
        if (writeJSON(*description, JSONStyle::Pretty).empty()) stop("there is no text");
    };
    ProjectSnapshots kept(services);
    describe(kept); // makes the versions
    describe(kept); // and keeps them
    const double again = medianMilliseconds(kRuns, [&] { describe(kept); });
    const double first = medianMilliseconds(kRuns, [&] {
        ProjectSnapshots fresh(services);
        describe(fresh);
    });
    const auto texts = filesOf(bundle);
    const double rival = medianMilliseconds(kRuns, [&] {
        for (const std::string& text : texts)
            if (nlohmann::json::parse(text).empty()) stop("the rival read nothing");
    });
    fmt::print("describe {:.2f}, again {:.3f} of nlohmann's parse: {:.1f} and {:.2f} ms against {:.1f} ms\n",
               first / rival, again / rival, first, again, rival);
}
