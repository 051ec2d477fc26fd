// Another program's file under two hands at once.

#include <thread>

#include <gtest/gtest.h>

#include "agent/ConfigFile.h"
#include "base/TemporaryFolder.h"
#include "core/base/JSON.h"

namespace morvelin {
namespace {

namespace fs = std::filesystem;

TEST(ConfigFile, TwoAtOnceLoseNothing) {
    const TemporaryFolder folder;
    const fs::path file = folder.path() / "config.json";
    put(file, "{}");
    constexpr std::size_t kEdits = 6;
    const auto addMembers = [&](const std::string& prefix) {
        for (std::size_t i = 0; i < kEdits; ++i) {
            const auto outcome = editConfigFile(file, [&](const std::optional<std::string>& text) {
                JSONValue root = JSONValue::parse(*text);
                root[prefix + std::to_string(i)] = i;
                return Result<std::optional<std::string>, MCPInstallError>(root.dump());
            });
            EXPECT_TRUE(outcome) << outcome.error().description();
        }
    };
    std::thread other(addMembers, "a");
    addMembers("b");
    other.join();
    EXPECT_EQ(JSONValue::parse(readFile(file).value_or("")).size(), 2 * kEdits);
}

TEST(ConfigFile, EditsAgainWhenAnotherProgramWroteMeanwhile) {
    const TemporaryFolder folder;
    const fs::path file = folder.path() / "config.json";
    put(file, "first");
    int edits = 0;
    ASSERT_TRUE(editConfigFile(file, [&](const std::optional<std::string>& text) {
        if (++edits == 1) put(file, "second");
        return Result<std::optional<std::string>, MCPInstallError>(*text + " edited");
    }));
    EXPECT_EQ(*readFile(file), "second edited");
    EXPECT_EQ(*readFile(file.string() + ".morvelin-backup"), "second");

    const auto endless = editConfigFile(file, [&](const std::optional<std::string>& text) {
        put(file, *text + "+");
        return Result<std::optional<std::string>, MCPInstallError>("lost");
    });
    EXPECT_FALSE(endless);
    EXPECT_TRUE(readFile(file).value_or("").ends_with("++")) << "the other program's words stand";
}

} // namespace
} // namespace morvelin
