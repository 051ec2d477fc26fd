// Narration, transcript, subtitles and takes by agents, on the files.

#include <gmock/gmock.h>

#include "agent/RouterFixture.h"
#include "narration/NarrationLibrary.h"
#include "storage/TranscriptFile.h"

namespace morvelin {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

class WordToolsTest : public RouterFixture {
protected:
    [[nodiscard]] EditPayload onDisk() { return open(m_bundle)->currentVersion().edit; }

    void addTake(std::int64_t number) {
        NarrationLibrary library = NarrationLibrary::load(m_bundle, services().log);
        NarrationTake take;
        take.storedID = m_ids.next();
        take.number = number;
        take.duration = 4_s;
        take.createdAt = m_clock.date;
        take.words = {{SourceTime(0.5), SourceTime(1), "Welcome.", 1}};
        put(take.fileURL(m_bundle), "audio");
        library.takes.push_back(take);
        EXPECT_TRUE(library.save(m_bundle));
    }

    const std::filesystem::path m_bundle = addProject("Tour");
};

TEST_F(WordToolsTest, ALineIsWrittenShownAndCleared) {
    facts("set_style", {{"captions", false}});
    facts("cut", {{"from", 2}, {"to", 4}});
    const JSONValue line = facts("narrate", {{"text", " Now we order coffee. "}, {"at", "2"}, {"duration", 1}});
    EXPECT_EQ(line, (JSONValue{{"text", "Now we order coffee."}, {"at", 2.0}, {"until", 3.0}, {"segments", 1}}));
    facts("narrate", {{"text", "Hm."}, {"at", 0.5}});
    const auto transcript = ProjectBundle::readTranscript(m_bundle);
    ASSERT_EQ(transcript->segments.size(), 2U);
    EXPECT_EQ(transcript->segments[1].t, SourceTime(4)) << "words lie in the recording's time, behind the cut";
    const JSONValue project = facts("describe_project");
    EXPECT_EQ(project["narration"][0]["until"], 1.7) << "nobody reads faster than in 1.2 s";
    EXPECT_EQ(project["narration"][1]["at"], 2);
    EXPECT_EQ(project["style"]["captions"], true);
    EXPECT_EQ(onDisk().captions->cues.size(), 2U);
    EXPECT_EQ(facts("transcription_status")["has_transcript"], true);
    EXPECT_EQ(facts("clear_narration")["cleared"], true);
    EXPECT_FALSE(onDisk().captions.has_value());
    EXPECT_TRUE(onDisk().captionsEnabled);
    EXPECT_EQ(facts("clear_narration")["note"], "There was no narration on this project.");
    EXPECT_EQ(refused("narrate", {{"text", "  "}, {"at", 1}}), "Narration text is empty.");
    EXPECT_EQ(refused("narrate", {{"at", 1}}), "Invalid value for “text”: expected something to say");
    EXPECT_THAT(refused("narrate", {{"text", "Late."}, {"at", 9}}), StartsWith("9.00s is outside this recording"));
}

TEST_F(WordToolsTest, ATranscriptIsCorrectedAndExported) {
    EXPECT_THAT(refused("edit_transcript", {{"text", "x"}}), HasSubstr("this project has no transcript yet"));
    EXPECT_THAT(refused("export_captions"), HasSubstr("this project has no transcript yet"));
    facts("narrate", {{"text", "Order a coffe"}, {"at", 1}, {"duration", 1.5}});
    EXPECT_EQ(facts("edit_transcript", {{"text", "Order a coffee"}})["captions"], "written");
    EXPECT_EQ(onDisk().captions->cues[0].text, "Order a coffee");
    EXPECT_THAT(refused("edit_transcript", {{"text", " \n"}}), HasSubstr("that leaves no words; use clear_narration"));
    EXPECT_THAT(refused("edit_transcript"), HasSubstr("expected the corrected transcript"));
    EXPECT_THAT(refused("export_captions", {{"format", "txt"}}), HasSubstr("expected srt or vtt"));
    const JSONValue srt = facts("export_captions");
    EXPECT_EQ(srt["path"], (m_folders.exports / "Tour.srt").string());
    EXPECT_EQ(readFile(srt["path"].get<std::string>()).value(), "1\n00:00:01,000 --> 00:00:02,500\nOrder a coffee\n");
    const JSONValue vtt = facts("export_captions", {{"format", "vtt"}, {"path", "~/sub/own.vtt"}});
    EXPECT_THAT(readFile(vtt["path"].get<std::string>()).value(), StartsWith("WEBVTT\n\n00:00:01.000 --> "));
    facts("cut", {{"from", 0.5}, {"to", 3}});
    EXPECT_THAT(refused("export_captions"), HasSubstr("every transcribed word falls in a cut"));
}

TEST_F(WordToolsTest, ATakeIsHeardAlone) {
    EXPECT_THAT(refused("use_narration_take", {{"take", "1"}}), HasSubstr("this project has no narration takes yet"));
    addTake(1);
    addTake(2);
    EXPECT_THAT(refused("use_narration_take", {{"take", "7"}}), HasSubstr("no such take; this project has takes 1, 2"));
    EXPECT_THAT(refused("use_narration_take", {{"take", "original"}}), HasSubstr("no sound of its own to go back to"));
    const JSONValue heard = facts("use_narration_take", {{"take", 2}});
    EXPECT_EQ(heard["note"], "Take 2 is now the only track heard, on top of the version’s audio tracks.");
    EXPECT_EQ(heard["captions"], "written");
    EXPECT_EQ(onDisk().captions->cues.at(0).text, "Welcome.");
    facts("use_narration_take", {{"take", "1"}});
    const JSONValue project = facts("describe_project");
    ASSERT_EQ(project["audio_tracks"].size(), 3U);
    EXPECT_EQ(project["audio_tracks"][0]["take"], 1);
    EXPECT_EQ(project["audio_tracks"][0]["ticked"], true);
    EXPECT_EQ(project["audio_tracks"][1]["ticked"], false);
    EXPECT_EQ(project["narration_takes"][1]["has_word_timings"], true);
}

TEST_F(WordToolsTest, WhatCannotBeSavedLeavesTheWordsAsTheyWere) {
    facts("narrate", {{"text", "First."}, {"at", 1}});
    put(m_bundle / "narration-takes.json", R"({"version":2,"takes":[]})");
    const auto before = bytesBelow(m_bundle);
    {
        // Room for the transcript, none for the version.
        const FullDisk disk(900);
        EXPECT_THAT(refused("narrate", {{"text", "Second."}, {"at", 3}}), HasSubstr("could not be saved"));
        EXPECT_THAT(refused("clear_narration"), HasSubstr("could not be saved"));
    }
    EXPECT_EQ(bytesBelow(m_bundle), before);
    EXPECT_TRUE(call("use_narration_take", {{"take", "1"}}).isError);
    facts("narrate", {{"text", "Second."}, {"at", 3}});
    EXPECT_EQ(readFile(m_bundle / "narration-takes.json").value(), R"({"version":2,"takes":[]})");
}

} // namespace
} // namespace morvelin
