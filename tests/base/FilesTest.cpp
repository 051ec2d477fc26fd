// Files on a real disk: what is there after success, and after failure.

#include <cerrno>

#include <gmock/gmock.h>

#include "base/TemporaryFolder.h"
#include "core/base/Files.h"

namespace morvelin {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;

TEST(AtomicWrite, MakesAndReplacesAFileAndLeavesNothingBeside) {
    const TemporaryFolder folder;
    const fs::path file = folder.path() / "a.json";
    // Sizes around the reader's block, and bytes that are no text.
    for (const std::string& content : {std::string(), std::string("{}"), std::string(64 * 1024, '\0'),
                                       std::string(64 * 1024 + 1, '\xff'), std::string(3'000'000, 'x')}) {
        ASSERT_TRUE(writeFileAtomically(file, content));
        EXPECT_EQ(readFile(file).value(), content);
    }
    EXPECT_THAT(folder.names(), ElementsAre("a.json"));
}

TEST(AtomicWrite, OnAFullDiskTheEarlierFileStands) {
    const TemporaryFolder folder;
    const fs::path file = folder.path() / "a.json";
    put(file, "earlier");
    {
        const FullDisk disk(1000);
        const auto written = writeFileAtomically(file, std::string(5000, 'x'));
        ASSERT_FALSE(written);
        EXPECT_EQ(written.error().code, EFBIG);
    }
    EXPECT_EQ(readFile(file).value(), "earlier");
    EXPECT_THAT(folder.names(), ElementsAre("a.json"));
}

TEST(AtomicWrite, SaysWhatFailedAndWhere) {
    const TemporaryFolder folder;
    const auto written = writeFileAtomically(folder.path() / "gone" / "a", "x");
    ASSERT_FALSE(written);
    EXPECT_EQ(written.error().description(),
              "Could not write " + (folder.path() / "gone/a").string() + ": No such file or directory");
    // A folder in the file's place refuses the last step, after the temporary file has been written.
    fs::create_directories(folder.path() / "a" / "full");
    EXPECT_FALSE(writeFileAtomically(folder.path() / "a", "x"));
    EXPECT_THAT(folder.names(), ElementsAre("a"));
    EXPECT_FALSE(readFile(folder.path() / "a"));
}

TEST(MoveItem, ReplacesAFileAndKeepsTheSourceOnFailure) {
    const TemporaryFolder folder;
    const fs::path from = folder.path() / "from", to = folder.path() / "to";
    put(from, "new");
    put(to, "old");
    ASSERT_TRUE(moveItem(from, to));
    EXPECT_EQ(readFile(to).value(), "new");
    EXPECT_FALSE(fs::exists(from));

    EXPECT_FALSE(moveItem(to, folder.path() / "gone" / "to"));
    EXPECT_EQ(readFile(to).value(), "new");
    EXPECT_FALSE(moveItem(from, to)) << "there is nothing to move";
    EXPECT_EQ(readFile(to).value(), "new");
}

TEST(MoveItem, CopiesToAnotherFileSystem) {
    const fs::path memory = "/dev/shm";
    const TemporaryFolder folder;
    std::error_code error;
    if (!fs::is_directory(memory, error)) GTEST_SKIP() << "no second file system at hand";
    const fs::path from = folder.path() / "movie", to = memory / folder.path().filename();
    const std::string content(300'000, 'm');
    put(from, content);
    {
        const FullDisk disk(1000);
        EXPECT_FALSE(moveItem(from, to));
    }
    EXPECT_EQ(readFile(from).value(), content);
    EXPECT_FALSE(fs::exists(to));

    ASSERT_TRUE(moveItem(from, to));
    EXPECT_EQ(readFile(to).value(), content);
    EXPECT_FALSE(fs::exists(from));
    EXPECT_TRUE(removeFile(to));
    EXPECT_TRUE(removeFile(to)) << "a file that isn't there is no error";
}

TEST(CreateFolder, MakesTheWholePathAndRefusesAFile) {
    const TemporaryFolder folder;
    ASSERT_TRUE(createFolder(folder.path() / "a/b/c"));
    EXPECT_TRUE(createFolder(folder.path() / "a/b/c"));
    put(folder.path() / "file", "");
    EXPECT_FALSE(createFolder(folder.path() / "file"));
    EXPECT_FALSE(createFolder(folder.path() / "file/below"));
}

} // namespace
} // namespace morvelin
