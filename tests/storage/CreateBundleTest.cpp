// The end of a take: a whole project, or the movie where it was.

#include "storage/BundleOnDisk.h"
#include "storage/CreateBundle.h"
#include "storage/LostKeyframes.h"

namespace morvelin::ProjectBundle {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::HasSubstr;

class CreateBundle : public BundleOnDisk {
protected:
    CreateBundle() {
        fs::remove_all(m_url);
        put(m_take.movie = m_folder.path() / "Take 7.mov", "movie");
        m_take.name = "Recording 7/8";
        m_take.createdAt = Date::fromUnixSeconds(1'700'000'000);
        m_take.duration = 10_s;
        m_take.cursorEvents = oneClick();
        m_take.kind = RecordingKind::Agent;
    }
    void addShapes() {
        const CursorShapeTrack track{
            1,
            1920,
            1080,
            {{0, CursorShapeTrack::Kind::Arrow, 24, 24, 1, 1}, {1, CursorShapeTrack::Kind::Other, 9, 9, 4, 4}},
            {{SourceTime(0), 0}, {SourceTime(1), {}}}};
        m_take.cursorShapes = CursorShapeFiles{track, {{0, std::string("PNG\0", 4)}}};
    }

    FinishedTake m_take;
};

TEST_F(CreateBundle, MakesAProjectThatOpensWithoutAWrite) {
    addShapes();
    put(*(m_take.camera = m_folder.path() / "camera.mp4"), "webcam");
    m_url = createBundle(m_take, services()).value();
    EXPECT_EQ(m_url, m_folder.path() / "Take 7.morvelin");
    EXPECT_THAT(m_folder.names(), ElementsAre("Take 7.morvelin"));
    EXPECT_EQ(readFile(m_url / "recording.mov").value(), "movie");
    EXPECT_EQ(readFile(m_url / "camera.mov").value(), "webcam");
    EXPECT_EQ(readCursorShapes(m_url)->track, m_take.cursorShapes->track);
    EXPECT_EQ(readCursorShapes(m_url)->images, m_take.cursorShapes->images);

    const auto before = bytesBelow(m_url);
    const Contents contents = open().value();
    EXPECT_EQ(bytesBelow(m_url), before);
    EXPECT_THAT(names(contents), ElementsAre("Original", "Version 1"));
    EXPECT_EQ(contents.currentVersion().name, "Version 1");
    EXPECT_GT(contents.currentVersion().edit.zoomKeyframes.size(), 1U);
    EXPECT_EQ(contents.capture.name, "Recording 7/8");
    EXPECT_EQ(contents.capture.recordingKind, RecordingKind::Agent);
    EXPECT_EQ(contents.cursorEvents, m_take.cursorEvents);
    EXPECT_TRUE(m_log.empty());
}

TEST_F(CreateBundle, NeverWritesIntoAnotherProject) {
    put(m_folder.path() / "Take 7.morvelin/recording.mov", "an earlier take");
    EXPECT_EQ(createBundle(m_take, services()).value(), m_folder.path() / "Take 7 2.morvelin");
    EXPECT_EQ(readFile(m_folder.path() / "Take 7.morvelin/recording.mov").value(), "an earlier take");
}

TEST_F(CreateBundle, CameraAndShapesAreNotWorthATake) {
    addShapes();
    m_take.cursorShapes->track.captureWidth = std::numeric_limits<double>::quiet_NaN();
    m_take.camera = m_folder.path() / "gone.mp4";
    m_url = createBundle(m_take, services()).value();
    EXPECT_THAT(m_log, ElementsAre(HasSubstr("[ProjectBundle] Could not store cursor shapes: cursorShapes.json"),
                                   HasSubstr("[ProjectBundle] Could not store camera track: Could not move")));
    EXPECT_EQ(readCursorShapes(m_url), std::nullopt);
    EXPECT_EQ(open().value().cameraURL, std::nullopt);
}

TEST_F(CreateBundle, AFailureLeavesTheMovieWhereItWas) {
    put(*(m_take.camera = m_folder.path() / "camera.mp4"), "webcam");
    addShapes();
    const auto before = bytesBelow(m_folder.path());
    const auto createsWith = [&](rlim_t bytesPerFile) {
        const FullDisk disk(bytesPerFile);
        return createBundle(m_take, services()).has_value();
    };
    int failures = 0;
    for (rlim_t bytes = 0; !createsWith(bytes); bytes += 400, ++failures)
        ASSERT_EQ(bytesBelow(m_folder.path()), before) << bytes;
    EXPECT_GT(failures, 5);

    m_take.movie = m_folder.path() / "gone.mov";
    const auto after = bytesBelow(m_folder.path());
    EXPECT_THAT(createBundle(m_take, services()).error().description(), HasSubstr("gone.mov: No such file"));
    EXPECT_EQ(bytesBelow(m_folder.path()), after);
}

TEST(RecordingNames, TellDateAndTime) {
    EXPECT_THAT(recordingName(Date::fromUnixSeconds(1'700'000'000)), HasSubstr("Recording Nov 1"));
}

TEST(LostKeys, AreTheEmptyTracksAndWhatCanBeDone) {
    SeededIdSource ids(1);
    const EditPayload whole = initialEdit(oneClick(), 10_s, ids);
    EditPayload noZoom = whole, noPosition = whole, neither = whole;
    noZoom.zoomKeyframes.clear();
    noPosition.positionKeyframes.clear();
    neither.zoomKeyframes.clear();
    neither.positionKeyframes.clear();
    EXPECT_EQ(lostKeyframes(whole, oneClick(), "P"), std::nullopt);
    const std::string rebuilt =
        "They can be rebuilt from the cursor activity recorded with this take, exactly as they were generated right "
        "after recording. Any keyframes you added or edited by hand are gone either way; your clips, effects and style "
        "settings are untouched.";
    for (const auto& [edit, what] : {std::pair(noZoom, "zoom keyframes"),
                                     {noPosition, "position keyframes"},
                                     {neither, "zoom or position keyframes"}}) {
        const auto lost = lostKeyframes(edit, oneClick(), "P").value();
        EXPECT_EQ(lost.body, fmt::format("Morvelin found no {} for “P”. They were lost when the app quit unexpectedly."
                                         "\n\n{}",
                                         what, rebuilt));
        EXPECT_THAT(lost.repairs, ElementsAre(KeyframeRepair::Regenerate, KeyframeRepair::StartWithSingleKeyframe));
    }
    const auto lost = lostKeyframes(neither, {}, "P").value();
    EXPECT_THAT(lost.repairs, ElementsAre(KeyframeRepair::StartWithSingleKeyframe));
    EXPECT_THAT(lost.body, testing::EndsWith("\n\nThis take has no recorded clicks, so they can’t be rebuilt from it. "
                                             "A single keyframe has been added at the start of the video. Your clips, "
                                             "effects and style settings are untouched."));
}

TEST(LostKeys, AreRegeneratedOnTheEditsClock) {
    SeededIdSource ids(1);
    std::vector<std::string> lines;
    const Log log = [&](std::string_view line) { lines.emplace_back(line); };
    const EditPayload whole = initialEdit(oneClick(), 10_s, ids);
    EditPayload damaged = whole;
    damaged.zoomKeyframes.clear();
    const EditPayload again = repaired(damaged, KeyframeRepair::Regenerate, oneClick(), ids, log);
    ASSERT_EQ(again.zoomKeyframes.size(), whole.zoomKeyframes.size());
    for (std::size_t i = 0; i < again.zoomKeyframes.size(); ++i)
        EXPECT_EQ(again.zoomKeyframes[i].startTime, whole.zoomKeyframes[i].startTime) << i;
    EXPECT_THAT(lines,
                ElementsAre(fmt::format("[Morvelin] Generated {} zoom + {} position + 0 focus + 0 tap-tap keyframes",
                                        again.zoomKeyframes.size(), again.positionKeyframes.size())));

    // The first two seconds are cut out, so all comes two seconds earlier.
    EditPayload cut = damaged;
    cut.fragments[0].sourceStart = SourceTime(2);
    cut.duration = 8_s;
    const EditPayload earlier = repaired(cut, KeyframeRepair::Regenerate, oneClick(), ids, log);
    EXPECT_NEAR(earlier.zoomKeyframes.at(1).startTime.value, whole.zoomKeyframes.at(1).startTime.value - 2, 1e-9);

    EXPECT_EQ(repaired(damaged, KeyframeRepair::StartWithSingleKeyframe, oneClick(), ids, log).zoomKeyframes.size(),
              1U);
    EXPECT_EQ(repaired(damaged, KeyframeRepair::StartWithSingleKeyframe, oneClick(), ids, log).positionKeyframes,
              whole.positionKeyframes);
}

} // namespace
} // namespace morvelin::ProjectBundle
