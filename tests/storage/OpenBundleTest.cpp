// Opening projects, whole and broken: what comes back, what is repaired on disk, and what stays untouched.

#include "storage/BundleOnDisk.h"

namespace morvelin::ProjectBundle {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;

class OpenBundle : public BundleOnDisk {
protected:
    void expectFailure(const std::string& sentence) {
        const auto before = bytesBelow(m_url);
        const auto contents = open();
        ASSERT_FALSE(contents) << sentence;
        EXPECT_EQ(contents.error().description(), sentence);
        EXPECT_EQ(bytesBelow(m_url), before) << sentence;
    }
};

TEST_F(OpenBundle, AWholeProjectOpensWithoutAWrite) {
    const ProjectVersion first = original(), second = version("Version 1", 3), third = version("Draft", 2);
    for (const ProjectVersion& each : {first, second, third}) ASSERT_TRUE(writeVersion(each, m_url));
    ASSERT_TRUE(writeCapture(header({first.id, third.id, second.id}, second.id), m_url));
    ASSERT_TRUE(writeCursorEvents(oneClick(), m_url));
    put(m_url / "notes.txt", "mine");
    const auto before = bytesBelow(m_url);

    const Contents contents = open().value();
    EXPECT_EQ(contents.versions, (std::vector{first, third, second}));
    EXPECT_EQ(contents.currentVersionID, second.id);
    EXPECT_EQ(contents.currentVersion(), second);
    EXPECT_EQ(contents.cursorEvents, oneClick());
    EXPECT_EQ(contents.recordingURL, m_url / "recording.mov");
    EXPECT_EQ(contents.cameraURL, std::nullopt);
    EXPECT_FALSE(contents.didConvertLegacyBundle);
    EXPECT_EQ(bytesBelow(m_url), before);

    put(m_url / "camera.mov", "");
    EXPECT_EQ(open().value().cameraURL, m_url / "camera.mov");
}

TEST_F(OpenBundle, SaysInOneSentenceWhatIsMissingOrBroken) {
    expectFailure("Bundle is missing capture.json");
    put(m_url / "capture.json", "{");
    const auto broken = open();
    ASSERT_FALSE(broken);
    EXPECT_THAT(broken.error().description(),
                testing::StartsWith("capture.json isn’t as expected. The data isn’t valid"));
    put(m_url / "capture.json", R"({"version":9})");
    expectFailure("capture.json isn’t as expected. The key “name” is missing.");
    fs::remove(m_url / "recording.mov");
    expectFailure("Bundle is missing recording.mov");
    m_url = m_folder.path() / "none.morvelin";
    EXPECT_TRUE(open().error().is<BundleError::MissingRecording>());
}

TEST_F(OpenBundle, LostVersionsAreGeneratedFromThePointersTrack) {
    ASSERT_TRUE(writeCapture(header({m_ids.next()}, m_ids.next()), m_url));
    ASSERT_TRUE(writeCursorEvents(oneClick(), m_url));
    const Contents contents = open().value();
    EXPECT_THAT(names(contents), ElementsAre("Original", "Version 1"));
    const ProjectVersion& first = contents.versions[0];
    EXPECT_TRUE(first.isInitial);
    EXPECT_FALSE(contents.versions[1].isInitial);
    EXPECT_EQ(first.edit, contents.versions[1].edit);
    EXPECT_GT(first.edit.zoomKeyframes.size(), 1U) << "the click makes a zoom";
    EXPECT_EQ(first.createdAt, Date::parse("2026-11-21T04:10:33Z"));
    EXPECT_EQ(contents.currentVersionID, contents.versions[1].id);
    EXPECT_EQ(headerOnDisk(), contents.capture);
    EXPECT_THAT(contents.capture.versionOrder, ElementsAre(first.id, contents.versions[1].id))
        << "ids without a file have left the order";

    const auto before = bytesBelow(m_url);
    EXPECT_EQ(open().value().versions, contents.versions) << "what was written is what was given";
    EXPECT_EQ(bytesBelow(m_url), before);
}

TEST_F(OpenBundle, AnUnreadablePointerTrackIsAnEmptyOne) {
    ASSERT_TRUE(writeCapture(header({}), m_url));
    put(m_url / "cursorEvents.json", "[{]");
    const Contents contents = open().value();
    EXPECT_TRUE(contents.cursorEvents.empty());
    EXPECT_EQ(contents.versions[0].edit.zoomKeyframes.size(), 1U);
    EXPECT_EQ(readFile(m_url / "cursorEvents.json").value(), "[{]");
    EXPECT_EQ(m_log.size(), 1U);
}

TEST_F(OpenBundle, VersionsOfANewerProgramAreLeftUntouched) {
    const ProjectVersion first = original(), second = version("Version 2");
    const UUID newer = m_ids.next();
    const std::string sentence =
        "Its versions can’t be read and are left untouched. They may come from a newer Morvelin.";
    writeNewer(newer);
    ASSERT_TRUE(writeCapture(header({newer}, newer), m_url));
    expectFailure(sentence);
    EXPECT_EQ(m_log.front(), "[ProjectBundle] Version " + newer.text() + " can't be read: " + newer.text() +
                                 ".json isn’t as expected. The key “id” is missing.");

    ASSERT_TRUE(writeVersion(first, m_url));
    ASSERT_TRUE(writeCapture(header({first.id, newer}, newer), m_url));
    expectFailure(sentence);

    ASSERT_TRUE(writeVersion(second, m_url));
    ASSERT_TRUE(writeCapture(header({first.id, newer, second.id}, newer), m_url));
    const auto before = bytesBelow(m_url);
    const Contents contents = open().value();
    EXPECT_THAT(names(contents), ElementsAre("Original", "Version 2"));
    EXPECT_THAT(contents.unreadableVersionIDs, ElementsAre(newer));
    EXPECT_THAT(contents.capture.versionOrder, ElementsAre(first.id, newer, second.id));
    EXPECT_EQ(contents.currentVersionID, second.id);
    auto after = bytesBelow(m_url);
    EXPECT_EQ(headerOnDisk(), contents.capture);
    after["capture.json"] = before.at("capture.json");
    EXPECT_EQ(after, before) << "only the index has changed";
}

TEST_F(OpenBundle, AnOriginalIsMadeBesideAnUnreadableOneAndKeepsItsPlace) {
    const UUID newer = m_ids.next();
    const ProjectVersion draft = version("Draft");
    writeNewer(newer);
    ASSERT_TRUE(writeVersion(draft, m_url));
    ASSERT_TRUE(writeCapture(header({newer, draft.id}), m_url));
    const Contents contents = open().value();
    EXPECT_THAT(names(contents), ElementsAre("Original", "Draft"));
    EXPECT_THAT(contents.capture.versionOrder, ElementsAre(contents.versions[0].id, newer, draft.id));
}

TEST_F(OpenBundle, VersionsOutsideTheOrderFollowByAge) {
    const ProjectVersion first = original(), late = version("late", 9), early = version("early", 2);
    for (const ProjectVersion& each : {first, late, early}) ASSERT_TRUE(writeVersion(each, m_url));
    const UUID gone = m_ids.next();
    ASSERT_TRUE(writeCapture(header({gone, first.id, first.id}, gone), m_url));
    put(m_url / "versions/copy.json", readFile(m_url / "versions" / (late.id.text() + ".json")).value());
    put(m_url / "versions/junk.json", "junk");
    put(m_url / "versions/.X.json.1.0", "left by a crash");
    fs::create_directory(m_url / "versions/folder.json");

    const Contents contents = open().value();
    EXPECT_THAT(names(contents), ElementsAre("Original", "early", "late"));
    EXPECT_EQ(contents.currentVersionID, early.id);
    EXPECT_THAT(headerOnDisk().versionOrder, ElementsAre(first.id, early.id, late.id));
    EXPECT_EQ(headerOnDisk().currentVersionID, early.id);
    EXPECT_TRUE(m_log.empty());
}

TEST_F(OpenBundle, TheLockedOriginalIsNeverTheCurrentVersion) {
    const ProjectVersion first = original(), draft = version("Draft");
    ASSERT_TRUE(writeVersion(first, m_url));
    ASSERT_TRUE(writeCapture(header({first.id}, first.id), m_url));
    const Contents alone = open().value();
    EXPECT_THAT(names(alone), ElementsAre("Original", "Version 1"));
    EXPECT_EQ(alone.currentVersion().edit, first.edit);
    EXPECT_EQ(alone.currentVersionID, headerOnDisk().currentVersionID);

    ASSERT_TRUE(writeVersion(draft, m_url));
    ASSERT_TRUE(writeCapture(header({first.id, draft.id, alone.currentVersionID}, first.id), m_url));
    EXPECT_EQ(open().value().currentVersionID, draft.id) << "the first version that can be edited";
}

TEST_F(OpenBundle, AFileNameWinsOverTheIdInsideAndOldRecordsGetTheirs) {
    ProjectVersion draft = version("Draft");
    JSONValue text = toJSON(draft);
    text["id"] = m_ids.next().text();
    for (JSONValue& key : text["edit"]["positionKeyframes"]) key.erase("id");
    text["edit"]["captions"] = toJSON(CaptionTrack{1, "e", {}, {}, {{{}, 0_s, 1_s, "a", {}}, {{}, 1_s, 2_s, "b", {}}}});
    for (JSONValue& cue : text["edit"]["captions"]["cues"]) cue.erase("id");
    put(m_url / "versions" / (draft.id.text() + ".json"), writeJSON(text, JSONStyle::Compact));
    ASSERT_TRUE(writeCapture(header({draft.id}, draft.id), m_url));
    const Contents contents = open().value();
    EXPECT_EQ(contents.currentVersion().id, draft.id);
    EXPECT_NE(contents.currentVersion().edit.positionKeyframes.at(0).id, UUID{});
    const auto& cues = contents.currentVersion().edit.captions.value().cues;
    EXPECT_TRUE(cues.at(0).id != UUID{} && cues.at(1).id != UUID{} && cues.at(0).id != cues.at(1).id);
}

/// Whatever write the disk refuses, the folder is as it was and a later opening works.
TEST_F(OpenBundle, AFullDiskLeavesTheFolderAsItWas) {
    ASSERT_TRUE(writeCapture(header({}), m_url));
    ASSERT_TRUE(writeCursorEvents(oneClick(), m_url));
    const auto before = bytesBelow(m_url);
    const auto opensWith = [&](rlim_t bytesPerFile) {
        const FullDisk disk(bytesPerFile);
        return open().has_value();
    };
    rlim_t bytes = 0;
    int failures = 0;
    for (; !opensWith(bytes); bytes += 100, ++failures) ASSERT_EQ(bytesBelow(m_url), before) << bytes;
    EXPECT_GT(failures, 5);

    fs::remove_all(m_url / "versions");
    ASSERT_TRUE(writeCapture(header({}), m_url));
    put(m_url / "versions", "a file in the folder's place");
    const auto blocked = bytesBelow(m_url);
    EXPECT_FALSE(open());
    EXPECT_EQ(bytesBelow(m_url), blocked);
}

TEST_F(OpenBundle, ARealRecordingOpens) {
    const fs::path sample = fs::path(MORVELIN_SOURCE_DIR) / "../shared/samples/desktop-60s.morvelin";
    if (!fs::exists(sample)) GTEST_SKIP() << "the sample project is not beside this checkout";
    fs::remove_all(m_url);
    fs::copy(sample, m_url, fs::copy_options::recursive);
    const Contents contents = open().value();
    EXPECT_EQ(contents.capture.name, "Desktop 60 s");
    EXPECT_GT(contents.cursorEvents.size(), 1700U);
    EXPECT_THAT(names(contents), ElementsAre("Original", "Version 1"));
    EXPECT_GT(contents.currentVersion().edit.zoomKeyframes.size(), 3U);
    EXPECT_EQ(open().value().versions, contents.versions);
}

} // namespace
} // namespace morvelin::ProjectBundle
