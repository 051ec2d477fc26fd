#include "render/ExportFolder.h"

#include <chrono>

#include <fmt/format.h>
#include <gmock/gmock.h>

#include "base/TemporaryFolder.h"

namespace morvelin {
namespace {

namespace fs = std::filesystem;

using Kind = ExportError::Kind;

void makeOld(const fs::path& path) {
    fs::last_write_time(path, fs::file_time_type::clock::now() - std::chrono::minutes(5));
}

class ExportFolderTest : public testing::Test {
protected:
    Result<ExportFolder, ExportError> create(const fs::path& path) { return ExportFolder::create(path, ids); }

    TemporaryFolder temporary;
    fs::path target = temporary.path() / "Film.mp4";
    SeededIdSource ids{1};
};

TEST_F(ExportFolderTest, TheFinishedFileTakesTheTargetsPlaceAndNothingElseStays) {
    ASSERT_TRUE(writeFileAtomically(target, "older"));
    {
        auto folder = create(target);
        ASSERT_TRUE(folder);
        EXPECT_THAT(folder->file().parent_path().filename().string(), testing::StartsWith("Morvelin-Export-"));
        ASSERT_TRUE(writeFileAtomically(folder->file(), "finished"));
        EXPECT_EQ(readFile(target).value(), "older") << "until the export is whole";
        ASSERT_TRUE(folder->takePlace());
    }
    EXPECT_EQ(readFile(target).value(), "finished");
    EXPECT_THAT(temporary.names(), testing::ElementsAre("Film.mp4"));
}

TEST_F(ExportFolderTest, AnAbandonedExportLeavesTheOlderFile) {
    ASSERT_TRUE(writeFileAtomically(target, "older"));
    {
        auto folder = create(target);
        ASSERT_TRUE(folder);
        ASSERT_TRUE(writeFileAtomically(folder->file(), "half"));
    }
    EXPECT_EQ(readFile(target).value(), "older");
    EXPECT_THAT(temporary.names(), testing::ElementsAre("Film.mp4"));
}

TEST_F(ExportFolderTest, SweepsDeadExportsAndSparesLivingOnes) {
    auto living = create(target);
    ASSERT_TRUE(living);
    const auto working = [&](const char* ending) {
        return temporary.path() / fmt::format("Morvelin-Export-{}{}", ids.next().text(), ending);
    };
    const fs::path dead = working("");
    const fs::path neverLocked = working(".new");
    const fs::path young = working(".new");
    const fs::path foreign = temporary.path() / "Morvelin-Export-notes";
    for (const fs::path& path : {dead, neverLocked, young, foreign}) ASSERT_TRUE(fs::create_directory(path));
    ASSERT_TRUE(writeFileAtomically(dead / "Film.mp4", "half"));
    for (const fs::path& path : {neverLocked, foreign}) makeOld(path);

    const auto another = create(temporary.path() / "Another.mp4");
    ASSERT_TRUE(another);
    EXPECT_FALSE(fs::exists(dead));
    EXPECT_FALSE(fs::exists(neverLocked));
    EXPECT_TRUE(fs::exists(living->file().parent_path()));
    EXPECT_TRUE(fs::exists(young)) << "it may be about to lock itself";
    EXPECT_TRUE(fs::exists(foreign));
}

TEST_F(ExportFolderTest, SaysWhyATargetCannotBeWritten) {
    const fs::path file = temporary.path() / "file";
    ASSERT_TRUE(writeFileAtomically(file, ""));
    struct Case {
        fs::path target;
        Kind kind;
        std::string sentence;
    };
    const std::string folder = temporary.path().string();
    for (const Case& c :
         {Case{temporary.path() / "gone" / "Film.mp4", Kind::TargetFolderMissing,
               "The folder " + folder + "/gone doesn’t exist. Create it or choose another place for the export."},
          {file / "Film.mp4", Kind::TargetFolderMissing,
           "The folder " + folder + "/file doesn’t exist. Create it or choose another place for the export."},
          {temporary.path(), Kind::TargetIsFolder, folder + " is a folder. Give the export the name of a file."}}) {
        const auto created = create(c.target);
        ASSERT_FALSE(created) << c.target;
        EXPECT_EQ(created.error().kind, c.kind);
        EXPECT_EQ(created.error().description(), c.sentence);
    }
}

TEST_F(ExportFolderTest, TellsWhenTheTargetsFolderVanished) {
    const fs::path parent = temporary.path() / "disk";
    ASSERT_TRUE(fs::create_directory(parent));
    auto folder = create(parent / "Film.mp4");
    ASSERT_TRUE(folder);
    fs::remove_all(parent);
    const auto placed = folder->takePlace();
    ASSERT_FALSE(placed);
    EXPECT_EQ(placed.error().kind, Kind::TargetFolderMissing);
}

} // namespace
} // namespace morvelin
