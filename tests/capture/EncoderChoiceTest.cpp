// Hardware encoders are tried once, in processes of their own.

#include <fstream>

#include <gmock/gmock.h>

#include "base/TemporaryFolder.h"
#include "capture/EncoderChoice.h"
#include "platform/DefaultsKeys.h"
#include "platform/null/MemoryDefaults.h"

namespace morvelin {

using testing::ElementsAre;
using testing::IsEmpty;

TEST(EncoderChoice, TriesEachOnceAndRemembers) {
    MemoryDefaults settings;
    std::vector<std::string> tried;
    std::string_view good = "b";
    const auto choose = [&](const std::vector<std::string>& candidates) {
        tried.clear();
        const EncoderProbe probe = [&](const std::string& encoder) {
            tried.push_back(encoder);
            return encoder == good;
        };
        return chooseTakeEncoder(candidates, settings, probe, [](std::string_view) {});
    };
    EXPECT_EQ(choose({}), "") << "no hardware: nothing is tried, and nothing remembered";
    EXPECT_EQ(choose({"a", "b", "c"}), "b");
    EXPECT_THAT(tried, ElementsAre("a", "b"));
    EXPECT_EQ(choose({"a", "b", "c"}), "b");
    EXPECT_THAT(tried, IsEmpty());
    good = {};
    EXPECT_EQ(choose({"b"}), "") << "other hardware";
    EXPECT_THAT(tried, ElementsAre("b"));
    good = "b";
    EXPECT_EQ(choose({"b"}), "") << "what failed is not tried again";
    EXPECT_THAT(tried, IsEmpty());
}

TEST(EncoderChoice, OutlivesAProbeThatFailsCrashesOrHangs) {
    const TemporaryFolder folder;
    const auto outcome = [&](const std::string& script) {
        const auto program = folder.path() / "program";
        std::ofstream(program) << "#!/bin/sh\n" << script << "\n";
        std::filesystem::permissions(program, std::filesystem::perms::owner_all);
        return probeInChild(program, 0.5_s)("h264_test");
    };
    EXPECT_TRUE(outcome("[ \"$1 $2\" = 'probe-encoder h264_test' ]"));
    EXPECT_FALSE(outcome("exit 1"));
    EXPECT_FALSE(outcome("kill -SEGV $$"));
    EXPECT_FALSE(outcome("exec sleep 60"));
    EXPECT_FALSE(probeInChild(folder.path() / "missing", 0.5_s)("h264_test"));
}

} // namespace morvelin
