// Copies of whole projects, and a project's transcript.

#include "storage/BundleOnDisk.h"
#include "storage/DuplicateProject.h"
#include "storage/StopAtFileOperation.h"
#include "storage/TranscriptFile.h"

namespace morvelin::ProjectBundle {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;

class DuplicateProjectTest : public BundleOnDisk {
protected:
    DuplicateProjectTest() {
        const ProjectVersion only = version("Version 1");
        EXPECT_TRUE(writeVersion(only, m_url));
        EXPECT_TRUE(writeCapture(header({only.id}, only.id), m_url));
        put(m_url / "recording.mov", std::string(5'000'000, 'm'));
        put(m_url / "narration-takes/take.m4a", "audio");
        put(m_url / "empty", "");
        fs::create_directories(m_url / "cursors");
        fs::create_symlink("recording.mov", m_url / "link");
    }

    std::string nameOf(const fs::path& url) const {
        return decode<Capture>(readFile(url / "capture.json").value()).value().name;
    }
};

TEST_F(DuplicateProjectTest, CopiesEverythingUnderAFreeName) {
    const auto copy = duplicateProject(m_url.string() + "/", " A/B ");
    ASSERT_TRUE(copy) << copy.error().description();
    EXPECT_EQ(*copy, m_folder.path() / "A-B.morvelin");
    EXPECT_EQ(nameOf(*copy), "A/B");
    EXPECT_TRUE(fs::is_symlink(*copy / "link"));
    auto original = bytesBelow(m_url), copied = bytesBelow(*copy);
    original.erase("capture.json");
    copied.erase("capture.json");
    EXPECT_EQ(copied, original);
    EXPECT_TRUE(load(*copy, services()));

    EXPECT_EQ(nameOf(duplicateProject(m_url, " ").value()), "Take copy");
    EXPECT_EQ(duplicateProject(m_url, "Take").value(), m_folder.path() / "Take 2.morvelin");
    EXPECT_THAT(m_folder.names(),
                ElementsAre("A-B.morvelin", "Take 2.morvelin", "Take copy.morvelin", "Take.morvelin"));
}

TEST_F(DuplicateProjectTest, KeepsWhatANewerProgramWroteIntoTheHeader) {
    put(m_url / "capture.json", R"({"name":"Take","future":{"x":1}})");
    EXPECT_EQ(readFile(duplicateProject(m_url, "B").value() / "capture.json").value(),
              R"({"future":{"x":1},"name":"B"})");
    fs::rename(m_url / "capture.json", m_url / "metadata.json");
    EXPECT_EQ(readFile(duplicateProject(m_url, "C").value() / "metadata.json").value(),
              R"({"future":{"x":1},"name":"C"})");
}

TEST_F(DuplicateProjectTest, LeavesNothingBehindWhenItFails) {
    const auto description = [&](std::stop_token stop = {}) {
        const auto copy = duplicateProject(m_url, "Copy", stop);
        return copy ? "" : copy.error().description();
    };
    {
        const FullDisk disk(1'000'000);
        EXPECT_THAT(description(), testing::HasSubstr("recording.mov: File too large"));
    }
    std::stop_source stop;
    stop.request_stop();
    EXPECT_THAT(description(stop.get_token()), testing::HasSubstr("Operation canceled"));
    put(m_url / "capture.json", "[]");
    EXPECT_NE(description(), "");
    fs::remove(m_url / "capture.json");
    EXPECT_EQ(description(), "Bundle is missing capture.json");
    fs::remove_all(m_url);
    EXPECT_EQ(description(), "Bundle is missing capture.json");
    EXPECT_THAT(m_folder.names(), ElementsAre());
}

TEST_F(DuplicateProjectTest, WhatAKilledCopyLeftIsClearedByTheNext) {
    ASSERT_TRUE(stopsAtFileOperation(4, [&] { (void)duplicateProject(m_url, "Copy"); }));
    EXPECT_EQ(m_folder.names().size(), 2u);
    EXPECT_TRUE(m_folder.names().front().starts_with('.'));
    ASSERT_TRUE(duplicateProject(m_url, "Copy"));
    EXPECT_THAT(m_folder.names(), ElementsAre("Copy.morvelin", "Take.morvelin"));
}

TEST_F(DuplicateProjectTest, ATranscriptIsReadOrThereIsNone) {
    EXPECT_FALSE(readTranscript(m_url));
    FounderSourceTranscript transcript{"recogniser", "de", Date::fromUnixSeconds(1'700'000'000), {}};
    transcript.segments = FounderSourceTranscript::segmentsFrom({{SourceTime(1), SourceTime(2), "Zoë", 0.5}});
    ASSERT_TRUE(writeTranscript(transcript, m_url));
    EXPECT_EQ(readTranscript(m_url), transcript);
    {
        const FullDisk disk(10);
        EXPECT_FALSE(writeTranscript({}, m_url));
    }
    EXPECT_EQ(readTranscript(m_url), transcript) << "a failed save leaves the earlier file";
    transcript.language.reset();
    ASSERT_TRUE(writeTranscript(transcript, m_url));
    EXPECT_EQ(readTranscript(m_url), transcript);
    put(m_url / "transcript.json", R"({"engine":"recogniser"})");
    EXPECT_FALSE(readTranscript(m_url));
}

} // namespace
} // namespace morvelin::ProjectBundle
