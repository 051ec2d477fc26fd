// Projects of the older single-file format become whole ones, and no work in them is lost.

#include "storage/BundleOnDisk.h"
#include "storage/LegacyMetadata.h"

namespace morvelin::ProjectBundle {
namespace {

using testing::ElementsAre;

constexpr const char* kMetadata = R"({
    "version": 7, "name": "Old take", "createdAt": "2024-05-01T10:00:00.5Z", "duration": 10,
    "fragments": [], "cursorEvents": [], "zoomKeyframes": [], "positionKeyframes": [],
    "background": {"type": "solidColor", "gradientPresetID": "amber", "wallpaperName": "w",
                   "solidColor": {"red": 1, "green": 0, "blue": 0, "alpha": 1}},
    "padding": 0.1, "cornerRadius": 8, "shadowIntensity": 0.75, "captionSize": 2, "clickAnimationsEnabled": false
})";

class LegacyBundle : public BundleOnDisk {
protected:
    void write(const JSONValue& metadata) { put(m_url / "metadata.json", writeJSON(metadata, JSONStyle::Pretty)); }
    void writeMetadata(const std::vector<CursorEvent>& events) {
        m_metadata["cursorEvents"] = toJSON(events);
        write(m_metadata);
    }
    Contents converted() {
        Contents contents = open().value();
        EXPECT_TRUE(contents.didConvertLegacyBundle);
        return contents;
    }

    JSONValue m_metadata = parseJSON(kMetadata).value();
};

TEST_F(LegacyBundle, APristineProjectGetsAGeneratedTimelineInItsOwnStyle) {
    m_metadata["maskKeyframes"] = toJSON(std::vector{MaskKeyframe{m_ids.next(), 1_s, 2_s, {0, 0, 1, 1}, 9}});
    m_metadata["timelineTrackVisibility"] = {{"audio", false}};
    m_metadata["originalDuration"] = 0;
    writeMetadata(oneClick());
    const std::string old = readFile(m_url / "metadata.json").value();
    put(m_url / "legacy-metadata.json", "an older backup");

    const Contents contents = converted();
    EXPECT_THAT(names(contents), ElementsAre("Original", "Version 1"));
    const EditPayload& edit = contents.versions[0].edit;
    EXPECT_EQ(edit, contents.versions[1].edit);
    EXPECT_GT(edit.zoomKeyframes.size(), 1U);
    EXPECT_EQ(edit.maskKeyframes.size(), 1U);
    EXPECT_EQ(edit.background.type, BackgroundType::SolidColor);
    EXPECT_EQ(edit.padding, 0.1);
    EXPECT_EQ(edit.cornerRadius, 0.02) << "8 of 16 points";
    EXPECT_EQ(edit.shadowIntensity, 0.75);
    EXPECT_FALSE(edit.clickAnimationsEnabled);
    EXPECT_TRUE(edit.captionsEnabled);
    EXPECT_EQ(edit.captionSize, 2);
    EXPECT_FALSE(edit.timelineTrackVisibility.at("audio"));

    const Capture& capture = contents.capture;
    EXPECT_EQ(capture.version, 9);
    EXPECT_EQ(capture.name, "Old take");
    EXPECT_EQ(capture.createdAt, Date::parse("2024-05-01T10:00:00Z"));
    EXPECT_EQ(capture.originalDuration, 10_s);
    EXPECT_EQ(capture.recordingKind, std::nullopt);
    EXPECT_EQ(contents.currentVersionID, contents.versions[1].id);
    EXPECT_EQ(contents.cursorEvents, oneClick());

    EXPECT_EQ(readFile(m_url / "legacy-metadata.json").value(), old);
    EXPECT_FALSE(std::filesystem::exists(m_url / "metadata.json"));
    EXPECT_FALSE(open().value().didConvertLegacyBundle);
}

TEST_F(LegacyBundle, EditsOfTheUserAreImportedBesideTheGeneratedOriginal) {
    const auto importedName = [&](const JSONValue& fragments, const JSONValue& zooms) {
        m_metadata["fragments"] = fragments;
        m_metadata["zoomKeyframes"] = zooms;
        m_metadata["cursorEvents"] = toJSON(oneClick());
        return convertedEdits(fromJSON<Metadata>(m_metadata).value(), m_ids).imported.has_value();
    };
    VideoFragment whole = VideoFragment::whole(10_s, m_ids);
    VideoFragment fast = whole, cut = whole, nearly = whole;
    fast.speed = 1.001;
    cut.sourceEnd = SourceTime(9.99);
    nearly.sourceStart = SourceTime(0.0000005);
    nearly.sourceEnd = SourceTime(10.0000005);
    const JSONValue none = JSONValue::array(), zoom = toJSON(std::vector{ZoomKeyframe::baseline(m_ids)});
    EXPECT_FALSE(importedName(none, none));
    EXPECT_FALSE(importedName(toJSON(std::vector{nearly}), none));
    EXPECT_TRUE(importedName(toJSON(std::vector{fast}), none));
    EXPECT_TRUE(importedName(toJSON(std::vector{cut}), none));
    EXPECT_TRUE(importedName(toJSON(std::vector{whole, whole}), none));
    EXPECT_TRUE(importedName(none, zoom));

    m_metadata["positionKeyframes"] = parseJSON(R"([{"time":1,"centerX":0.5,"centerY":0.5}])").value();
    writeMetadata(oneClick());
    const Contents contents = converted();
    EXPECT_THAT(names(contents), ElementsAre("Original", "Imported"));
    const EditPayload& imported = contents.versions[1].edit;
    EXPECT_EQ(imported.zoomKeyframes.size(), 1U);
    EXPECT_NE(imported.positionKeyframes.at(0).id, UUID{});
    EXPECT_EQ(imported.fragments.at(0).sourceEnd, SourceTime(10)) << "no fragments mean the whole recording";
    EXPECT_EQ(imported.editing, EditingSettings{});
    EXPECT_EQ(imported.audioTracks, std::nullopt);
    EXPECT_GT(contents.versions[0].edit.zoomKeyframes.size(), 1U);
    EXPECT_EQ(contents.versions[0].edit.padding, 0.1);
    EXPECT_TRUE(contents.versions[0].edit.maskKeyframes.empty());
}

TEST_F(LegacyBundle, WithoutAPointerTrackTheOldTimelineIsTheOriginal) {
    m_metadata["zoomKeyframes"] = toJSON(std::vector{ZoomKeyframe::baseline(m_ids), ZoomKeyframe::baseline(m_ids)});
    writeMetadata({});
    const Contents contents = converted();
    EXPECT_THAT(names(contents), ElementsAre("Original", "Version 1"));
    EXPECT_EQ(contents.versions[0].edit.zoomKeyframes.size(), 2U);
    EXPECT_EQ(contents.versions[0].edit, contents.versions[1].edit);
}

TEST_F(LegacyBundle, OnlySomeKeysMayBeMissing) {
    for (const char* key : {"version", "fragments", "captionSize", "clickAnimationsEnabled"}) {
        JSONValue without = m_metadata;
        without.erase(key);
        EXPECT_TRUE(fromJSON<Metadata>(without)) << key;
    }
    for (const char* key : {"name", "createdAt", "duration", "cursorEvents", "zoomKeyframes", "positionKeyframes",
                            "background", "padding", "cornerRadius", "shadowIntensity"}) {
        JSONValue without = m_metadata;
        without.erase(key);
        write(without);
        const auto before = bytesBelow(m_url);
        EXPECT_EQ(open().error().description(),
                  fmt::format("metadata.json isn’t as expected. The key “{}” is missing.", key));
        EXPECT_EQ(bytesBelow(m_url), before);
    }
}

TEST(LegacyCornerRadius, IsCarriedOverFromPoints) {
    struct Case {
        std::int64_t version;
        double before, after;
    };
    for (const Case& c :
         {Case{1, 16, 0.04}, {7, 4, 0.01}, {7, 99, 0.04}, {7, 0, 0}, {7, -3, 0}, {8, 0.03, 0.03}, {8, -3, -3}})
        EXPECT_DOUBLE_EQ(cornerRadiusOfVersion(c.version, c.before), c.after) << c.before;
}

TEST_F(LegacyBundle, AFullDiskLeavesTheFolderAsItWas) {
    writeMetadata(oneClick());
    put(m_url / "cursorEvents.json", "left by a conversion that a crash ended");
    const auto before = bytesBelow(m_url);
    int failures = 0;
    for (rlim_t bytes = 100; std::filesystem::exists(m_url / "metadata.json"); bytes += 700, ++failures) {
        ASSERT_EQ(bytesBelow(m_url), before) << bytes;
        const FullDisk disk(bytes);
        (void)open();
    }
    EXPECT_GT(failures, 3);
    EXPECT_THAT(names(open().value()), ElementsAre("Original", "Version 1"));
}

TEST_F(LegacyBundle, AFailedLastMoveFailsTheOpeningButNotTheNext) {
    writeMetadata(oneClick());
    put(m_url / "legacy-metadata.json/in the way", "");
    EXPECT_FALSE(open());
    const Contents contents = open().value();
    EXPECT_FALSE(contents.didConvertLegacyBundle);
    EXPECT_THAT(names(contents), ElementsAre("Original", "Version 1"));
}

} // namespace
} // namespace morvelin::ProjectBundle
