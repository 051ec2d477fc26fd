// An agent looks at a project through the router: the picture, the sentence beside it, and the facts.

#include <gmock/gmock.h>

#include "agent/RouterFixture.h"
#include "media/FFmpegMovieWriter.h"
#include "media/PNG.h"
#include "media/TestPictures.h"

namespace morvelin {
namespace {

using testing::HasSubstr;

constexpr PixelSize kScreen{1920, 1080};

class FrameToolsTest : public RouterFixture {
protected:
    /// A project whose recording is real: ten frames, one for each second, that carry their numbers.
    std::filesystem::path addRecordedProject() {
        const auto bundle = addProject("Tour");
        std::filesystem::remove(bundle / "recording.mov");
        FFmpegMovieWriterFactory writers({.threads = 2});
        auto writer = writers.create({.path = bundle / "recording.mov",
                                      .container = MovieSettings::Container::FragmentedQuickTime,
                                      .pace = MovieSettings::Pace::RealTime,
                                      .size = kScreen,
                                      .frameRate = 30,
                                      .bitRate = 4'000'000});
        EXPECT_TRUE(writer);
        Picture picture = detailedPicture(kScreen);
        for (int i = 0; i < 10; ++i) {
            drawNumber(picture, i);
            EXPECT_TRUE((*writer)->append(picture, Seconds(i), std::vector{whole(picture)}));
        }
        EXPECT_TRUE((*writer)->finish(10_s));
        edit(bundle, [](EditPayload& edit) {
            edit.padding = 0;
            edit.cornerRadius = 0;
            edit.zoomKeyframes.clear();
            edit.positionKeyframes.clear();
            edit.clickAnimationsEnabled = false;
        });
        return bundle;
    }

    /// The number in the picture of a tool that has to work.
    int numberIn(const MCPToolResult& result) {
        EXPECT_FALSE(result.isError) << result.text;
        const std::string& png = result.imagePNG.value_or("");
        const auto image = decodePNG({reinterpret_cast<const std::uint8_t*>(png.data()), png.size()});
        EXPECT_TRUE(image) << result.text;
        if (!image) return -1;
        EXPECT_EQ(image->size, (PixelSize{1536, 864}));
        int number = 0;
        for (int bit = 0; bit < kNumberBits; ++bit) {
            const PixelBox box = bitBox(bit);
            const int pixel = (box.y + 24) * 4 / 5 * image->size.width + (box.x + 8) * 4 / 5;
            if (image->pixels[static_cast<std::size_t>(4 * pixel + 1)] > 120) number |= 1 << bit;
        }
        return number;
    }
};

TEST_F(FrameToolsTest, AnAgentSeesTheRecordingAndTheVideo) {
    const auto bundle = addRecordedProject();
    facts("cut", {{"from", 2}, {"to", 6}});

    const MCPToolResult source = call("read_source_frame", {{"at", "3.5"}});
    EXPECT_EQ(numberIn(source), 7);
    EXPECT_EQ(source.text, "1536×864 source frame at 3.50s on the edit timeline (7.50s into the recording). Positions "
                           "are normalized 0–1 from the top-left of this image, which is the capture space: pass them "
                           "straight to set_zoom, annotate or a mask.");
    EXPECT_EQ(source.structured, (JSONValue{{"project", bundle.string()},
                                            {"width", 1536},
                                            {"height", 864},
                                            {"source_time", 7.5},
                                            {"at", 3.5},
                                            {"kind", "capture"}}));

    const MCPToolResult cutAway = call("read_source_frame", {{"at", 3.5}, {"clock", "source"}});
    EXPECT_EQ(numberIn(cutAway), 3);
    EXPECT_THAT(cutAway.text, HasSubstr("1536×864 source frame at 3.50s into the recording. Positions"));
    EXPECT_THAT(cutAway.text, HasSubstr("a mask. This moment has been cut out of the edit, so no editing tool can "
                                        "reach it."));
    EXPECT_FALSE(cutAway.structured->contains("at"));

    const MCPToolResult rendered = call("read_rendered_frame", {{"at", 3.5}, {"project", "Tour"}});
    EXPECT_EQ(numberIn(rendered), 7);
    EXPECT_EQ(rendered.text,
              "1536×864 rendered frame at 3.50s on the edit timeline (7.50s into the recording), as the export would "
              "draw it. Positions in this image are NOT capture coordinates: padding and zoom move everything. To aim "
              "an edit, read the source frame at the same time instead.");
    EXPECT_EQ(rendered.structured->at("kind"), "rendered");

    facts("trim", {{"start", 1}, {"end", 4}});
    EXPECT_EQ(numberIn(call("read_rendered_frame", {{"at", 2.5}})), 7) << "the frames follow each edit";
    m_loop.advance(120_s); // the reader is given back
    EXPECT_EQ(numberIn(call("read_rendered_frame", {{"at", 0.5}})), 1);
}

TEST_F(FrameToolsTest, WhatCanNotBeShownIsTold) {
    EXPECT_EQ(refused("read_source_frame", {{"at", 0}}),
              "There are no recordings yet. Call start_recording to make one.");
    const auto bundle = addProject("Tour"); // its recording is no movie
    for (const char* tool : {"read_source_frame", "read_rendered_frame"}) {
        for (const JSONValue& at : {JSONValue(), JSONValue("nan"), JSONValue("soon"), JSONValue(true)})
            EXPECT_EQ(refused(tool, {{"at", at}}), "Invalid value for “at”: expected a time in seconds") << at;
        EXPECT_THAT(refused(tool, {{"at", 1}, {"project", "/no"}}), "No .morvelin project at “/no”.");
        EXPECT_THAT(refused(tool, {{"at", 1}}), HasSubstr("Could not decode the frame: “recording.mov” is no movie"));
    }
    EXPECT_EQ(refused("read_source_frame", {{"at", 1}, {"clock", "wall"}}),
              "Invalid value for “clock”: expected timeline or source");
    addRecordedProject();
    EXPECT_EQ(refused("read_rendered_frame", {{"at", -0.01}}),
              "-0.01s is outside this recording, which is 10.00s long.");
    EXPECT_EQ(refused("read_rendered_frame", {{"at", 10.1}}),
              "10.10s is outside this recording, which is 10.00s long.");
    EXPECT_EQ(refused("read_source_frame", {{"at", 10.1}}),
              "10.10s is outside the edit timeline, which is 10.00s long.");
    edit(bundle, [](EditPayload& edit) { edit.fragments.clear(); });
    EXPECT_EQ(refused("read_rendered_frame", {{"at", 0}}), "This project has no timeline yet.");
}

} // namespace
} // namespace morvelin
