// A router on a home folder of its own, called as an agent calls it.
#pragma once

#include <gmock/gmock.h>

#include "agent/MorvelinCommandRouter.h"
#include "core/base/SimulatedEventLoop.h"
#include "media/FFmpegImageProbe.h"
#include "media/FFmpegMovieReader.h"
#include "storage/BundleOnDisk.h"

namespace morvelin {

/// Moves what is thrown away into a folder beside.
class FolderTrash final : public Trash {
public:
    explicit FolderTrash(std::filesystem::path folder) : m_folder(std::move(folder)) {}
    Result<std::optional<std::filesystem::path>, std::string> moveToTrash(const std::filesystem::path& item) override {
        const auto target = m_folder / item.filename();
        std::filesystem::create_directories(m_folder);
        std::filesystem::rename(item, target);
        return std::optional(target);
    }

private:
    std::filesystem::path m_folder;
};

class RouterFixture : public testing::Test {
protected:
    /// A take of ten seconds with a click at 5 s, its versions made.
    std::filesystem::path addProject(const std::string& name) {
        const auto bundle = m_folders.projects.path() / (name + ".morvelin");
        put(bundle / "recording.mov", "movie");
        EXPECT_TRUE(ProjectBundle::writeCursorEvents(ProjectBundle::oneClick(), bundle));
        ProjectBundle::Capture capture;
        capture.name = name;
        capture.createdAt = m_clock.date;
        capture.originalDuration = 10_s;
        EXPECT_TRUE(ProjectBundle::writeCapture(capture, bundle));
        EXPECT_TRUE(open(bundle));
        return bundle;
    }

    Result<ProjectBundle::Contents, ProjectBundle::BundleError> open(const std::filesystem::path& bundle) {
        return ProjectBundle::load(bundle, services());
    }
    ProjectBundle::Services services() {
        return {m_ids, m_clock, [this](std::string_view line) { m_log.emplace_back(line); }};
    }
    /// Changes the current version's edit on disk, as another program would.
    template <class Change>
    void edit(const std::filesystem::path& bundle, Change change) {
        ProjectVersion version = open(bundle)->currentVersion();
        change(version.edit);
        EXPECT_TRUE(ProjectBundle::writeVersion(version, bundle));
    }

    MCPToolResult call(const std::string& tool, JSONValue arguments = {}) {
        std::optional<MCPToolResult> result;
        const auto run = [&]() -> Task<void> { result = co_await m_router.call(tool, arguments, "test"); };
        m_loop.spawn(run());
        m_loop.advance(1_s);
        EXPECT_TRUE(result) << tool << " has not ended";
        return result.value_or(MCPToolResult{});
    }
    /// The facts of a tool that has to work.
    JSONValue facts(const std::string& tool, JSONValue arguments = {}) {
        const MCPToolResult result = call(tool, std::move(arguments));
        EXPECT_FALSE(result.isError) << tool << ": " << result.text;
        return result.structured.value_or(JSONValue::object());
    }
    /// The words of a tool that has to fail.
    std::string refused(const std::string& tool, JSONValue arguments = {}) {
        const MCPToolResult result = call(tool, std::move(arguments));
        EXPECT_TRUE(result.isError) << tool << ": " << result.text;
        return result.text;
    }

    TemporaryFolder m_home;
    AgentFolders m_folders = AgentFolders::below(m_home.path());
    SeededIdSource m_ids{1};
    ProjectBundle::FixedClock m_clock;
    std::vector<std::string> m_log;
    SimulatedEventLoop m_loop;
    FolderTrash m_trash{m_home.path() / "Trash"};
    FFmpegMovieReaderFactory m_movies;
    FFmpegImageProbe m_images;
    MorvelinCommandRouter m_router{{m_folders, services(), m_loop, m_trash, m_images, m_movies, {}}};
};

} // namespace morvelin
