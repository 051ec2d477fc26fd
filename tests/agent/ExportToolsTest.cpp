// An agent renders a project through the router and reads back what the video contains.

#include <gmock/gmock.h>

#include "agent/RouterFixture.h"
#include "media/FFmpegMovieWriter.h"
#include "media/FFmpegSoundReader.h"
#include "media/TestPictures.h"

namespace morvelin {
namespace {

class ExportToolsTest : public RouterFixture {
protected:
    std::filesystem::path addRecordedProject() {
        const auto bundle = addProject("Tour");
        auto writer = m_writers.create({.path = bundle / "recording.mov",
                                        .container = MovieSettings::Container::FragmentedQuickTime,
                                        .pace = MovieSettings::Pace::RealTime,
                                        .size = kTestSize,
                                        .frameRate = 30,
                                        .bitRate = 1'000'000,
                                        .soundTracks = {}});
        EXPECT_TRUE(writer);
        Picture picture = detailedPicture(kTestSize);
        for (int i = 0; i < 10; ++i) EXPECT_TRUE((*writer)->append(picture, Seconds(i), std::vector{whole(picture)}));
        EXPECT_TRUE((*writer)->finish(10_s));
        edit(bundle, [this](EditPayload& edit) {
            edit.fragments = {{m_ids.next(), SourceTime(4.8), SourceTime(5.3), 1, 0, {}}};
        });
        return bundle;
    }

    MCPToolResult callNow(const std::string& tool, JSONValue arguments) {
        std::optional<MCPToolResult> result;
        const auto run = [&]() -> Task<void> { result = co_await m_exporting->call(tool, arguments, "test"); };
        m_loop.spawn(run());
        m_loop.advance(1_s);
        return result.value_or(MCPToolResult{});
    }

    FFmpegMovieWriterFactory m_writers{{.threads = 1}};
    FFmpegSoundReaderFactory m_sounds{{}};
    ExportActivity m_activity;
    std::function<void()> m_whileExporting = [] {};
    std::optional<MorvelinCommandRouter> m_exporting;

    void SetUp() override {
        MorvelinCommandRouter::Services router{m_folders, services(), m_loop, m_trash, m_images, m_movies, {}, {}};
        router.exportEngineFactory = [this] {
            m_whileExporting();
            return ExportEngine({m_movies, m_sounds, m_writers, m_activity, m_ids, m_clock, {}, m_home.path(), "1.0"});
        };
        m_exporting.emplace(std::move(router));
    }
};

TEST_F(ExportToolsTest, AnAgentRendersAndReadsWhatIsInTheVideo) {
    const auto bundle = addRecordedProject();
    struct Case {
        JSONValue arguments;
        const char* ending;
        bool isForAI;
    };
    const auto seconds = std::to_string(m_clock.date.unixSeconds());
    for (const Case& c : {Case{{}, ".mp4", false},
                          {{{"format", "gif"}, {"quality", "lowest"}}, ".gif", false},
                          {{{"for_ai", "true"}, {"format", "gif"}, {"quality", "no such"}}, "-mp4-agent.mp4", true}}) {
        const MCPToolResult result = callNow("export", c.arguments);
        ASSERT_FALSE(result.isError) << result.text;
        const auto video = m_folders.exports / ("Export_" + seconds + c.ending);
        auto events = video;
        EXPECT_EQ(
            result.structured,
            (JSONValue{{"video", video.string()},
                       {"project", bundle.string()},
                       {"for_ai", c.isForAI},
                       {"events", events.replace_extension("events.json").string()},
                       {"note", "The video is ready."},
                       {"next", "Call read_events on the video path to see what it contains without watching it."}}));
        EXPECT_TRUE(std::filesystem::exists(video));
        const MCPToolResult read = callNow("read_events", {{"path", video.string()}});
        EXPECT_EQ(read.structured->at("summary")["clicks"], 1) << read.text;
    }
}

TEST_F(ExportToolsTest, WhatCanNotBeRenderedIsTold) {
    const auto refused = [&](JSONValue arguments) {
        const MCPToolResult result = callNow("export", std::move(arguments));
        EXPECT_TRUE(result.isError);
        return result.text;
    };
    EXPECT_EQ(refused({}), "There are no recordings yet. Call start_recording to make one.");
    addProject("Tour"); // its recording is no movie
    EXPECT_EQ(refused({{"format", "avi"}}), "Invalid value for “format”: expected mp4 or gif, got “avi”");
    EXPECT_EQ(refused({{"quality", "best"}}),
              "Invalid value for “quality”: expected very_low, low, medium, high or ultra, got “best”");
    EXPECT_EQ(refused({{"project", "/no"}}), "No .morvelin project at “/no”.");
    for (int i = 0; i < 2; ++i)
        EXPECT_THAT(refused({}), testing::HasSubstr("“recording.mov” is no movie")) << "each call has its own guard";
}

TEST_F(ExportToolsTest, OneVideoAtATime) {
    addRecordedProject();
    std::string second;
    m_whileExporting = [&] { second = callNow("export", {}).text; };
    EXPECT_FALSE(callNow("export", {}).isError);
    EXPECT_EQ(second, "A video export is already in progress. Wait for it to finish before trying again.");
    m_whileExporting = [] {};
    EXPECT_FALSE(callNow("export", {}).isError);
}

} // namespace
} // namespace morvelin
