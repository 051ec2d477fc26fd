// What counts as a project in the library, and in which order the list comes.

#include <gmock/gmock.h>

#include "base/TemporaryFolder.h"
#include "core/base/SimulatedEventLoop.h"
#include "storage/RecentProjectsStore.h"
#include "storage/RecentProjectsViewModel.h"

namespace morvelin {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::IsEmpty;

class RecentProjectsTest : public testing::Test {
protected:
    fs::path project(const std::string& folder, const std::string& header, const char* headerFile = "capture.json") {
        const fs::path url = m_library / folder;
        put(url / "recording.mov", "movie");
        put(url / headerFile, header);
        return url;
    }
    static std::string header(const std::string& name, const std::string& day, const std::string& more = "") {
        return R"({"name":")" + name + R"(","createdAt":"2026-)" + day + R"(T10:00:00Z","unknown":[1])" + more + "}";
    }
    std::vector<std::string> titles() const {
        std::vector<std::string> all;
        const auto list = m_store.list();
        for (const RecentProject& each : list.value()) all.push_back(each.title);
        return all;
    }

    TemporaryFolder m_folder;
    fs::path m_library = m_folder.path() / "Projects";
    RecentProjectsStore m_store{m_library};
};

TEST_F(RecentProjectsTest, AreListedNewestFirstAndThenByPath) {
    project("b.morvelin", header("second", "01-02"));
    project("c.MORVELIN", header("third", "01-02"));
    project("a.morvelin", header("oldest", "01-01"));
    project("z.morvelin", header("newest", "01-03"));
    EXPECT_THAT(titles(), ElementsAre("newest", "second", "third", "oldest"));
}

TEST_F(RecentProjectsTest, SkipWhatIsNoProject) {
    put(m_library / "file.morvelin", "no folder");
    put(m_library / "no recording.morvelin/capture.json", header("x", "01-01"));
    put(m_library / "no header.morvelin/recording.mov", "movie");
    project("folder", header("x", "01-01"));
    project("damaged.morvelin", "{");
    project("no name.morvelin", R"({"createdAt":"2026-01-01T10:00:00Z"})");
    project("newer kind.morvelin", header("x", "01-01", R"(,"recordingKind":"hologram")"));
    // A header that can't be read isn't one that is missing.
    put(project("both.morvelin", "{") / "metadata.json", header("x", "01-01"));
    fs::create_directory_symlink("nowhere", m_library / "gone.morvelin");
    EXPECT_THAT(titles(), IsEmpty());
}

TEST_F(RecentProjectsTest, TakeTitleAndKindFromTheHeader) {
    struct Case {
        const char* header;
        const char* title;
        std::optional<RecordingKind> kind;
    };
    const Case cases[] = {
        {R"("name":" Demo \n")", "Demo", {}},
        {R"("name":" \t")", "The folder.1", {}},
        {R"("name":"Talk mode 12")", "Talk mode 12", RecordingKind::TalkMode},
        {R"("name":"Talk modes")", "Talk modes", {}},
        {R"("name":"Talk mode 12","recordingKind":"agent")", "Talk mode 12", RecordingKind::Agent},
    };
    for (const Case& c : cases) {
        const fs::path url = project("The folder.1.morvelin",
                                     std::string("{\"createdAt\":\"2026-01-01T10:00:00Z\",") + c.header + "}");
        const RecentProject expected{url, c.title, Date::parse("2026-01-01T10:00:00Z").value(), c.kind};
        EXPECT_EQ(RecentProjectsStore::entry(url), expected) << c.header;
    }
}

TEST_F(RecentProjectsTest, ListAProjectOfTheOlderFormatWithoutConvertingIt) {
    project("old.morvelin", header("Old one", "01-01", R"(,"cursorEvents":[])"), "metadata.json");
    const auto before = bytesBelow(m_library);
    EXPECT_THAT(titles(), ElementsAre("Old one"));
    EXPECT_EQ(bytesBelow(m_library), before);
}

TEST_F(RecentProjectsTest, FailWhereTheFolderCannotBeRead) {
    const auto list = m_store.list();
    ASSERT_FALSE(list);
    EXPECT_EQ(list.error().description(), "Could not read " + m_library.string() + ": No such file or directory");
}

class RecentProjectsViewModelTest : public testing::Test {
protected:
    using Projects = ProjectListLoader::Projects;

    RecentProjectsViewModel model() {
        return RecentProjectsViewModel(m_loop, m_ids, [this]() -> Result<Projects, FileError> {
            ++m_readings;
            if (m_isBroken) return failure(FileError{FileError::Operation::Read, "library", 13});
            return Projects{{"reading " + std::to_string(m_readings), "", {}, {}}};
        });
    }

    SimulatedEventLoop m_loop;
    SeededIdSource m_ids{1};
    int m_readings = 0;
    bool m_isBroken = false;
};

TEST_F(RecentProjectsViewModelTest, AQuickSuccessionOfLoadsShowsTheLastOne) {
    RecentProjectsViewModel picker = model();
    std::vector<std::string> shown;
    picker.onChange(
        [&] { shown.push_back(picker.isLoading() ? "loading" : picker.projects().at(0).bundleURL.string()); });
    picker.load();
    picker.load();
    m_loop.advance(0_s);
    EXPECT_THAT(shown, ElementsAre("loading", "loading", "reading 2")) << "the first result came, but was not shown";
}

TEST_F(RecentProjectsViewModelTest, AnErrorLeavesTheListAndGoesWithTheNextLoad) {
    RecentProjectsViewModel picker = model();
    picker.present();
    m_loop.advance(0_s);
    m_isBroken = true;
    picker.load();
    m_loop.advance(0_s);
    EXPECT_EQ(picker.loadError(), "Could not read library: Permission denied");
    EXPECT_EQ(picker.projects().size(), 1u);
    m_isBroken = false;
    picker.load();
    m_loop.advance(0_s);
    EXPECT_FALSE(picker.loadError());
    EXPECT_TRUE(picker.isPresented());
}

TEST_F(RecentProjectsViewModelTest, AResultThatComesTooLateIsDropped) {
    RecentProjectsViewModel picker = model();
    picker.present();
    picker.dismiss();
    m_loop.advance(0_s);
    EXPECT_THAT(picker.projects(), IsEmpty());
    EXPECT_FALSE(picker.isLoading());
    {
        RecentProjectsViewModel shortLived = model();
        shortLived.load();
    }
    m_loop.advance(0_s); // must not touch the model that is gone
}

} // namespace
} // namespace morvelin
