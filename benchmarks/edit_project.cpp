// Single edits by an agent of a project of an hour: 108,000 pointer samples, 500 zooms, 2,000 position keys, 300
// fragments; from the call to the saved file. The rival reads the same files, parses them with nlohmann-json, and writes
// and syncs the version again. Then the same with the timeline's tracks doubled twice. Medians of one run.

#include <fstream>

#include <nlohmann/json.hpp>

#include "AnHour.h"
#include "agent/MorvelinCommandRouter.h"
#include "core/base/SimulatedEventLoop.h"
#include "media/FFmpegImageProbe.h"
#include "media/FFmpegMovieReader.h"

namespace {

using namespace morvelin;
using namespace morvelin::bench;
namespace fs = std::filesystem;

constexpr int kRuns = 7;
constexpr int kClickInterval = 300;

/// The sizes of a timeline's tracks, times a factor.
struct Sizes {
    int factor = 1;
    [[nodiscard]] int zooms() const { return 500 * factor; }
    [[nodiscard]] int positions() const { return 2000 * factor; }
    [[nodiscard]] int fragments() const { return 300 * factor; }
};

EditPayload editOf(const Sizes& sizes, EditPayload edit, IdSource& ids) {
    edit.fragments.clear();
    for (int i = 0; i < sizes.fragments(); ++i) {
        const double length = kHour.value / sizes.fragments();
        edit.fragments.push_back({ids.next(), SourceTime(i * length), SourceTime((i + 1) * length), 1, i, {}});
    }
    const double zoomGap = kHour.value / sizes.zooms();
    edit.zoomKeyframes = {ZoomKeyframe::baseline(ids)};
    for (int i = 1; i < sizes.zooms(); ++i)
        edit.zoomKeyframes.push_back({ids.next(), EditTime(i * zoomGap), Seconds(zoomGap / 8), i % 2 ? 2.0 : 1.0,
                                      ZoomTransitionType::Smooth, false});
    const double keyGap = kHour.value / sizes.positions();
    edit.positionKeyframes.clear();
    for (int i = 0; i < sizes.positions(); ++i) {
        PositionKeyframe key = PositionKeyframe::baseline(ids);
        key.time = EditTime(i * keyGap);
        key.targetX = (i * 37 % 100) / 100.0;
        key.targetY = (i * 61 % 100) / 100.0;
        edit.positionKeyframes.push_back(key);
    }
    edit.duration = kHour;
    return edit;
}

/// A home folder with the one project, and the router that agents' calls go through.
class Home {
public:
    Home() { writeAnHour(m_bundle, pointerOfAnHour(kClickInterval)); }

    void resize(const Sizes& sizes) {
        auto contents = must(ProjectBundle::load(m_bundle, services()));
        ProjectVersion version = contents.currentVersion();
        version.edit = editOf(sizes, version.edit, m_ids);
        must(ProjectBundle::writeVersion(version, m_bundle));
        m_versionFile = m_bundle / "versions" / (version.id.text() + ".json");
    }

    JSONValue call(const std::string& tool, const JSONValue& arguments) {
        std::optional<MCPToolResult> result;
        const auto run = [&]() -> Task<void> { result = co_await m_router.call(tool, arguments, "benchmark"); };
        m_loop.spawn(run());
        if (!result || result->isError) stop(tool + ": " + (result ? result->text : "did not end"));
        return result->structured.value_or(JSONValue());
    }

    /// What nobody can do without: the files read and parsed, the version written and synced.
    void readAndWrite() const {
        for (const auto& entry : fs::recursive_directory_iterator(m_bundle))
            if (entry.path().extension() == ".json" && nlohmann::json::parse(must(readFile(entry.path()))).empty())
                stop("the rival read nothing");
        must(writeFileAtomically(m_versionFile, must(readFile(m_versionFile))));
    }

private:
    ProjectBundle::Services services() {
        return {m_ids, m_clock, [](std::string_view line) { stop(std::string(line)); }};
    }

    Folder m_folder;
    AgentFolders m_folders = AgentFolders::below(m_folder.path);
    fs::path m_bundle = m_folders.projects.path() / "An hour.morvelin";
    fs::path m_versionFile;
    SeededIdSource m_ids{1};
    SystemClock m_clock;
    SimulatedEventLoop m_loop;
    FFmpegMovieReaderFactory m_movies;
    FFmpegImageProbe m_images;

    class NoTrash final : public Trash {
        Result<std::optional<fs::path>, std::string> moveToTrash(const fs::path&) override {
            return failure(std::string("There is no Trash."));
        }
    } m_trash;

    MorvelinCommandRouter m_router{{m_folders, services(), m_loop, m_trash, m_images, m_movies, {}}};
};

/// One run of each edit; each changes something every time.
struct Edit {
    const char* name;
    std::function<void(Home&, int run)> run;
};

std::vector<Edit> edits() {
    return {{"cut",
             [](Home& home, int run) {
                 home.call("cut", {{"from", 100 + run}, {"to", 100.5 + run}});
             }},
            {"set_speed",
             [](Home& home, int run) {
                 home.call("set_speed", {{"from", 1000 + 9 * run}, {"to", 1003 + 9 * run}, {"speed", 2}});
             }},
            {"add_position_key",
             [](Home& home, int run) {
                 home.call("add_position_key", {{"at", 2000.45 + 0.45 * run}, {"x", 0.3}, {"y", 0.4}});
             }},
            {"annotate",
             [](Home& home, int run) {
                 home.call("annotate", {{"type", "tap"}, {"at", run}, {"x", 0.3}, {"y", 0.4}});
             }},
            {"set_style",
             [](Home& home, int run) {
                 home.call("set_style", {{"padding", 0.01 * run}});
             }},
            {"set_auto_timeline", [](Home& home, int run) {
                 home.call("set_auto_timeline", {{"zoom_out_after", 2 + run % 2}, {"force", true}});
             }}};
}

} // namespace

int main() {
    Home home;
    double rival = 0;
    for (const int factor : {1, 2, 4}) {
        home.resize({factor});
        if (factor == 1) rival = medianMilliseconds(kRuns, [&] { home.readAndWrite(); });
        std::string line;
        for (const Edit& edit : edits()) {
            int run = 0;
            const double ours = medianMilliseconds(kRuns, [&] { edit.run(home, ++run); });
            line += factor == 1 ? fmt::format("  {} {:.2f}", edit.name, ours / rival)
                                : fmt::format("  {} {:.0f} ms", edit.name, ours);
        }
        if (factor == 1)
            fmt::print("edits of reading, parsing, writing and syncing ({:.0f} ms):{}\n", rival, line);
        else
            fmt::print("tracks × {}:{}\n", factor, line);
    }
}
