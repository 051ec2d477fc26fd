// Killed processes and several processes at work on one project.

#include <algorithm>
#include <thread>

#include <sys/wait.h>
#include <unistd.h>

#include "core/base/SimulatedEventLoop.h"
#include "storage/ProjectLock.h"
#include "storage/StopAtFileOperation.h"
#include "storage/VersionStoreFixture.h"

namespace morvelin {
namespace {

namespace fs = std::filesystem;

class VersionStoreSafety : public VersionStoreFixture {
protected:
    struct Operation {
        const char* name;
        std::function<void(ProjectVersionStore&)> run;
    };

    std::vector<Operation> operations() {
        return {
            {"save", [this](auto& store) { store.save(edit(0.7), kLater); }},
            {"duplicate", [this](auto& store) { (void)store.duplicate(named(store, "Original"), kLater); }},
            {"switch", [this](auto& store) { (void)store.switchTo(named(store, "Draft").id, edit(0.7), kLater); }},
            {"rename", [this](auto& store) { (void)store.rename(named(store, "Draft").id, "Final", kLater); }},
            {"delete", [](auto& store) { (void)store.deleteVersion(named(store, "Draft").id); }},
            {"rename the project", [](auto& store) { (void)store.renameProject("Other"); }},
        };
    }

    /// A fresh copy of the project in a folder of its own.
    fs::path freshProject() {
        const fs::path folder = m_folder.path() / ("run " + std::to_string(++m_runs));
        fs::create_directories(folder);
        fs::copy(m_url, folder / "Take.morvelin", fs::copy_options::recursive);
        return folder;
    }

    /// Every version in it is as it was before or as it was to become, and only the deleted one may be missing.
    void expectNothingLost(const fs::path& folder, const std::vector<ProjectVersion>& before) {
        const bool isRenamed = fs::exists(folder / "Other.morvelin");
        const auto opened = ProjectBundle::load(folder / (isRenamed ? "Other.morvelin" : "Take.morvelin"), services());
        ASSERT_TRUE(opened) << opened.error().description();
        EXPECT_TRUE(opened->unreadableVersionIDs.empty());
        for (const ProjectVersion& version : before) {
            const auto found = std::ranges::find(opened->versions, version.id, &ProjectVersion::id);
            if (found == opened->versions.end()) {
                EXPECT_EQ(version.name, "Draft");
                continue;
            }
            EXPECT_TRUE(found->edit == version.edit || found->edit == edit(0.7)) << version.name;
            EXPECT_TRUE(found->name == version.name || found->name == "Final") << found->name;
        }
    }

    int m_runs = 0;
};

TEST_F(VersionStoreSafety, AKillBetweenAnyTwoFileOperationsLosesNothing) {
    const std::vector<ProjectVersion> before = openStore().versions();
    for (const Operation& operation : operations()) {
        int stops = 0;
        for (bool isStopped = true; isStopped; ++stops) {
            const fs::path folder = freshProject();
            ProjectVersionStore store = openStore(folder / "Take.morvelin");
            isStopped = stopsAtFileOperation(stops + 1, [&] { operation.run(store); });
            SCOPED_TRACE(std::string(operation.name) + ", stopped at operation " + std::to_string(stops + 1));
            expectNothingLost(folder, before);
        }
        // Each write is at least a file's bytes, its sync, its renaming and the folder's sync.
        EXPECT_GT(stops, 4) << operation.name;
    }
}

TEST_F(VersionStoreSafety, ProcessesThatTakeTurnsLoseNothing) {
    constexpr int kProcesses = 4, kCopies = 4;
    std::vector<pid_t> children;
    for (int process = 0; process < kProcesses; ++process) {
        const pid_t child = ::fork();
        if (child == 0) {
            SeededIdSource ids(static_cast<std::uint64_t>(process) + 100);
            for (int i = 0; i < kCopies; ++i) {
                const auto lock = ProjectLock::take(m_url, 60_s);
                if (!lock) ::_exit(1);
                const ProjectBundle::Services own{ids, m_clock, [](std::string_view) {}};
                ProjectVersionStore store(m_url, ProjectBundle::load(m_url, own).value(), own);
                (void)store.duplicate(named(store, "Draft"), kLater);
            }
            ::_exit(0);
        }
        children.push_back(child);
    }
    for (const pid_t child : children) {
        int status = 0;
        ::waitpid(child, &status, 0);
        EXPECT_EQ(status, 0);
    }
    const std::size_t expected = 3 + kProcesses * kCopies;
    EXPECT_EQ(headerOnDisk().versionOrder.size(), expected);
    auto all = names(openStore());
    std::ranges::sort(all);
    EXPECT_EQ(std::ranges::unique(all).begin() - all.begin(), std::ptrdiff_t(expected)) << "no name was given twice";
}

TEST_F(VersionStoreSafety, ALockIsGivenUpForAndFreedByItsEnd) {
    std::optional held(ProjectLock::take(m_url).value());
    const auto refused = ProjectLock::take(m_url, 0.05_s);
    ASSERT_FALSE(refused);
    EXPECT_EQ(refused.error().description(),
              "“Take” is being changed by another program. Try again when that is done.");
    held.reset();
    held = ProjectLock::take(m_url, 0_s).value();

    // It is the folder that is locked, whatever it is called, and nothing lies in it.
    const fs::path moved = m_folder.path() / "Other.morvelin";
    fs::rename(m_url, moved);
    EXPECT_FALSE(ProjectLock::take(moved, 0_s));
    EXPECT_FALSE(ProjectLock::take(m_url, 0_s));
    EXPECT_FALSE(fs::exists(m_url));
    held.reset();
    EXPECT_TRUE(ProjectLock::take(moved, 0_s));
}

TEST_F(VersionStoreSafety, ALoopGoesOnWhileALockIsWaitedFor) {
    SimulatedEventLoop loop;
    std::optional held(ProjectLock::take(m_url).value());
    std::vector<std::string> events;
    const auto waiting = [&](Seconds patience) -> Task<void> {
        const auto lock = co_await ProjectLock::wait(loop, m_url, patience);
        events.push_back(lock ? "locked" : "gave up");
    };
    loop.spawn(waiting(1_s));
    loop.spawn(waiting(10_s));
    loop.advance(2_s);
    EXPECT_THAT(events, testing::ElementsAre("gave up"));
    held.reset();
    loop.advance(0.1_s);
    EXPECT_THAT(events, testing::ElementsAre("gave up", "locked"));
}

} // namespace
} // namespace morvelin
