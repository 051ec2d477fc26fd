// Finding projects: by what changed last, by path, by name.

#include <gmock/gmock.h>

#include <chrono>

#include <fmt/format.h>

#include "base/TemporaryFolder.h"
#include "storage/ProjectsFolder.h"

namespace morvelin {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;

class ProjectsFolderTest : public testing::Test {
protected:
    /// A file whose content was changed that many seconds after the test's epoch.
    fs::path changed(const std::string& path, int seconds) {
        const fs::path file = m_folder.path() / path;
        put(file, "{}");
        fs::last_write_time(file, m_epoch + std::chrono::seconds(seconds));
        return file;
    }
    std::vector<std::string> names() const {
        std::vector<std::string> all;
        for (const auto& entry : m_library.byModification()) all.push_back(entry.bundleName);
        return all;
    }

    TemporaryFolder m_folder;
    ProjectsFolder m_library{m_folder.path()};
    const fs::file_time_type m_epoch = fs::file_time_type::clock::now() - std::chrono::hours(100);
};

TEST_F(ProjectsFolderTest, WhatWasEditedLastComesFirst) {
    changed("Old header.morvelin/capture.json", 10);
    changed("Old header.morvelin/versions/A.json", 90);
    changed("Twin b.MORVELIN/capture.json", 50);
    changed("Twin a.morvelin/capture.json", 50);
    changed("Movie.morvelin/capture.json", 20);
    changed("Movie.morvelin/recording.mov", 99);
    put(m_folder.path() / "notes.morvelin", "a file, no folder");
    put(m_folder.path() / "Other" / "capture.json", "{}");
    put(m_folder.path() / ".hidden.morvelin" / "capture.json", "{}");
    EXPECT_THAT(names(), ElementsAre("Old header.morvelin", "Twin a.morvelin", "Twin b.MORVELIN", "Movie.morvelin"));
    EXPECT_EQ(m_library.lastModified()->filename(), "Old header.morvelin");
}

TEST_F(ProjectsFolderTest, ManyAreInOrderToo) {
    for (int i = 0; i < 300; ++i) changed(fmt::format("P{}.morvelin/capture.json", i), i);
    const auto entries = m_library.byModification();
    ASSERT_EQ(entries.size(), 300U);
    for (std::size_t i = 0; i < entries.size(); ++i) EXPECT_EQ(entries[i].name(), fmt::format("P{}", 299 - i));
}

TEST_F(ProjectsFolderTest, AFolderThatIsNotThereIsEmpty) {
    const ProjectsFolder nowhere(m_folder.path() / "none");
    EXPECT_TRUE(nowhere.byModification().empty());
    EXPECT_EQ(nowhere.lastModified(), std::nullopt);
    EXPECT_EQ(nowhere.find("x", "/"), std::nullopt);
}

TEST_F(ProjectsFolderTest, IsFoundByPathOrName) {
    const fs::path bundle = changed("Tour 1.5.MORVELIN/capture.json", 0).parent_path();
    const fs::path home = m_folder.path().parent_path();
    const std::string fromHome = "~/" + m_folder.path().filename().string() + "/Tour 1.5.MORVELIN";
    for (const std::string& wanted : {bundle.string(), bundle.string() + "/", std::string("Tour 1.5"),
                                      std::string("Tour 1.5.morvelin"), fromHome}) {
        const auto found = m_library.find(wanted, home);
        ASSERT_TRUE(found) << wanted;
        EXPECT_EQ(*found, bundle) << wanted;
    }
    for (const char* wanted : {"Tour", "", "../Tour 1.5", "/nowhere/Tour 1.5.morvelin"})
        EXPECT_EQ(m_library.find(wanted, home), std::nullopt) << wanted;
    EXPECT_EQ(m_library.named("Tour 1.5.morvelin"), std::nullopt) << "a name has no extension";
}

} // namespace
} // namespace morvelin
