// A project's versions at run time: what may be done with them, and what the disk holds afterwards.

#include "narration/NarrationLibrary.h"
#include "storage/VersionStoreFixture.h"

namespace morvelin {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::IsEmpty;

class ProjectVersionStoreTest : public VersionStoreFixture {};

TEST_F(ProjectVersionStoreTest, SavesTheCurrentVersionOnceForEachChange) {
    ProjectVersionStore store = openStore();
    const UUID current = store.currentID();
    EXPECT_TRUE(store.save(edit(0.2), kLater));
    EXPECT_EQ(store.version(current)->updatedAt, kLater);
    EXPECT_EQ(*openStore().version(current), *store.version(current));

    const auto written = fs::last_write_time(fileOf(current));
    EXPECT_TRUE(store.save(edit(0.2), Date{}));
    EXPECT_EQ(fs::last_write_time(fileOf(current)), written);
    EXPECT_EQ(store.version(current)->updatedAt, kLater) << "nothing changed";
}

TEST_F(ProjectVersionStoreTest, TriesAFailedWriteAgain) {
    ProjectVersionStore store = openStore();
    {
        const FullDisk disk(100);
        EXPECT_FALSE(store.save(edit(0.2), kLater));
        EXPECT_FALSE(store.save(edit(0.2), kLater)) << "the same edit is tried again";
    }
    EXPECT_THAT(store.unwrittenVersionIDs(), ElementsAre(store.currentID()));
    ASSERT_EQ(m_log.size(), 2u);
    EXPECT_THAT(m_log[0], testing::StartsWith("[Morvelin] Could not save version “Version 1”: Could not write "));
    EXPECT_TRUE(store.save(edit(0.2), kLater));
    EXPECT_THAT(store.unwrittenVersionIDs(), IsEmpty());
    EXPECT_EQ(openStore().version(store.currentID())->edit, edit(0.2));
}

TEST_F(ProjectVersionStoreTest, DoesNotBringADeletedProjectBack) {
    ProjectVersionStore store = openStore();
    fs::remove_all(m_url);
    EXPECT_FALSE(store.save(edit(0.2), kLater));
    EXPECT_THAT(m_log,
                ElementsAre("[Morvelin] Not saving version “Version 1”: the project is gone from " + m_url.string()));
    (void)store.duplicate(named(store, "Draft"), kLater);
    fs::create_directories(m_url); // half deleted
    (void)store.switchTo(named(store, "Draft").id, edit(0.3), kLater);
    EXPECT_TRUE(fs::is_empty(m_url));
}

TEST_F(ProjectVersionStoreTest, NamesCopies) {
    ProjectVersionStore store = openStore();
    const ProjectVersion initial = named(store, "Original"), draft = named(store, "Draft");
    const auto copy = [&](const ProjectVersion& source) { return store.duplicate(source, kLater).name; };
    EXPECT_EQ(copy(draft), "Draft copy");
    EXPECT_EQ(copy(draft), "Draft copy 2");
    EXPECT_EQ(copy(initial), "Version 5") << "four can be edited";
    ASSERT_TRUE(store.rename(draft.id, "vérsion 6", kLater));
    EXPECT_EQ(copy(initial), "Version 7") << "case and accents don't make another name";
    ASSERT_TRUE(store.deleteVersion(named(store, "Draft copy").id));
    EXPECT_EQ(copy(initial), "Version 8") << "the count gives 6, which is taken, and so is 7";
    EXPECT_EQ(names(openStore()), names(store));
}

TEST_F(ProjectVersionStoreTest, ACopyIsCurrentAndACopyOfTheOriginalHasNoNarration) {
    ProjectVersionStore store = openStore();
    for (const char* name : {"Original", "Draft"}) {
        ProjectVersion source = named(store, name);
        source.edit.audioTracks = {{m_ids.next(), m_ids.next(), true, {}}};
        source.edit.narrationTakeIDs.emplace();
        source.edit.captionsSourceID = m_ids.next();
        const ProjectVersion copy = store.duplicate(source, kLater);
        EXPECT_EQ(store.currentID(), copy.id);
        EXPECT_FALSE(copy.isInitial);
        EXPECT_EQ(copy.createdAt, kLater);
        EXPECT_NE(copy.id, source.id);
        if (source.isInitial) {
            source.edit.audioTracks = {AudioTrackRef::recording()};
            source.edit.narrationTakeIDs.reset();
            source.edit.captionsSourceID.reset();
        }
        EXPECT_EQ(copy.edit, source.edit);
        EXPECT_EQ(*openStore().version(copy.id), copy);
        EXPECT_EQ(openStore().currentID(), copy.id);
    }
}

TEST_F(ProjectVersionStoreTest, AWantedNameIsHadOrNothingIsMade) {
    ProjectVersionStore store = openStore();
    const auto before = bytesBelow(m_url);
    const ProjectVersion draft = named(store, "Draft");
    EXPECT_EQ(store.duplicateNamed(draft, " \n", kLater).error().description(), "A version needs a name.");
    EXPECT_EQ(store.duplicateNamed(draft, " draft ", kLater).error().description(),
              "A version named “draft” already exists in this project.");
    EXPECT_EQ(bytesBelow(m_url), before);
    EXPECT_EQ(store.versions().size(), 3u);
    EXPECT_EQ(store.duplicateNamed(draft, " Final ", kLater).value().name, "Final");
    EXPECT_EQ(names(openStore()), names(store));
}

TEST_F(ProjectVersionStoreTest, SwitchesAndKeepsTheOpenWork) {
    ProjectVersionStore store = openStore();
    const UUID first = store.currentID(), draft = named(store, "Draft").id, initial = named(store, "Original").id;
    EXPECT_FALSE(store.switchTo(first, edit(0.9), kLater)) << "it is current already";
    bool isRecording = true;
    store.setRecordingCheck([&] { return isRecording; });
    EXPECT_FALSE(store.switchTo(draft, edit(0.9), kLater));
    EXPECT_NE(store.version(first)->edit, edit(0.9));
    isRecording = false;

    const auto switched = store.switchTo(draft, edit(0.2), kLater);
    ASSERT_TRUE(switched);
    EXPECT_EQ(switched->version.id, draft);
    EXPECT_FALSE(switched->didClone);
    EXPECT_EQ(openStore().currentID(), draft);
    EXPECT_EQ(openStore().version(first)->edit, edit(0.2));

    EXPECT_FALSE(store.switchTo(m_ids.next(), edit(0.3), kLater)) << "no such version";
    EXPECT_EQ(openStore().version(draft)->edit, edit(0.3)) << "but the work is kept";

    const auto cloned = store.switchTo(initial, edit(0.4), kLater);
    ASSERT_TRUE(cloned);
    EXPECT_TRUE(cloned->didClone);
    EXPECT_EQ(cloned->version.name, "Version 3");
    EXPECT_EQ(openStore().currentID(), cloned->version.id);
}

TEST_F(ProjectVersionStoreTest, RenamesVersions) {
    ProjectVersionStore store = openStore();
    const UUID draft = named(store, "Draft").id, initial = named(store, "Original").id;
    const auto error = [&](const UUID& id, const std::string& name) {
        const auto renamed = store.rename(id, name, kLater);
        return renamed ? "" : renamed.error().description();
    };
    EXPECT_EQ(error(m_ids.next(), " "), "A version needs a name.");
    EXPECT_EQ(error(m_ids.next(), "x"), "") << "an unknown version changes nothing";
    EXPECT_EQ(error(initial, "x"), "The original version can’t be renamed.");
    EXPECT_EQ(error(draft, " VERSION 1\n"), "A version named “VERSION 1” already exists in this project.");
    EXPECT_EQ(error(draft, "ORIGINAL"), "A version named “ORIGINAL” already exists in this project.");
    EXPECT_EQ(error(draft, " draft "), "") << "its own name in another form";
    EXPECT_EQ(openStore().version(draft)->name, "draft");
    EXPECT_EQ(openStore().version(draft)->updatedAt, kLater);
}

TEST_F(ProjectVersionStoreTest, DeletesVersions) {
    ProjectVersionStore store = openStore();
    const UUID draft = named(store, "Draft").id;
    const auto error = [&](const UUID& id) { return store.deleteVersion(id).error().description(); };
    EXPECT_EQ(error(m_ids.next()), "There is no such version in this project.");
    EXPECT_EQ(error(named(store, "Original").id), "The original version can’t be deleted.");
    EXPECT_EQ(error(store.currentID()), "The version being edited can’t be deleted. Switch to another one first.");
    ASSERT_TRUE(store.deleteVersion(named(store, "Draft").id));
    EXPECT_FALSE(fs::exists(fileOf(draft)));
    EXPECT_THAT(names(openStore()), ElementsAre("Original", "Version 1"));
}

TEST_F(ProjectVersionStoreTest, UnreadableVersionsKeepTheirPlaceInTheOrder) {
    const UUID newer = m_ids.next();
    writeNewer(newer);
    ProjectBundle::Capture capture = headerOnDisk();
    capture.versionOrder.insert(capture.versionOrder.begin() + 2, newer);
    ASSERT_TRUE(ProjectBundle::writeCapture(capture, m_url));

    ProjectVersionStore store = openStore();
    EXPECT_THAT(store.unreadableVersionIDs(), ElementsAre(newer));
    const ProjectVersion first = named(store, "Version 1"), draft = named(store, "Draft");
    const ProjectVersion copy = store.duplicate(draft, kLater);
    ASSERT_TRUE(store.deleteVersion(first.id));
    EXPECT_THAT(headerOnDisk().versionOrder, ElementsAre(named(store, "Original").id, newer, draft.id, copy.id));
}

TEST_F(ProjectVersionStoreTest, RenamesTheProject) {
    put(m_folder.path() / "A-B.morvelin/capture.json", "a sibling");
    ProjectVersionStore store = openStore();
    const auto before = bytesBelow(m_folder.path());
    EXPECT_TRUE(store.renameProject(" "));
    EXPECT_TRUE(store.renameProject(" Take "));
    EXPECT_EQ(bytesBelow(m_folder.path()), before);

    ASSERT_TRUE(store.renameProject(" A/B "));
    EXPECT_EQ(store.bundleURL(), m_folder.path() / "A-B 2.morvelin");
    EXPECT_EQ(store.projectName(), "A/B");
    EXPECT_TRUE(store.save(edit(0.5), kLater));
    (void)store.duplicate(named(store, "Draft"), kLater);
    EXPECT_EQ(openStore(store.bundleURL()).projectName(), "A/B") << "the index is written with the new name";

    fs::remove(store.bundleURL() / "capture.json");
    const auto failed = store.renameProject("Other");
    ASSERT_FALSE(failed);
    EXPECT_EQ(failed.error().description(), "The project keeps the name “A/B”. Could not read " +
                                                (store.bundleURL() / "capture.json").string() +
                                                ": No such file or directory");
    EXPECT_EQ(m_log.back(), "[Morvelin] Could not rename project: " + failed.error().reason);
}

TEST_F(ProjectVersionStoreTest, OldVersionsGetTheirListOfTracks) {
    NarrationLibrary library;
    NarrationTake take;
    take.storedID = m_ids.next();
    library.takes = {take};
    ASSERT_TRUE(library.save(m_url));
    ProjectVersion draft = *openStore().version(openStore().versions()[2].id), first = openStore().versions()[1];
    for (ProjectVersion* version : {&first, &draft}) {
        version->edit.audioTracks.reset();
        version->edit.narrationTakeIDs = {m_ids.next(), *take.storedID};
    }
    ASSERT_TRUE(ProjectBundle::writeVersion(draft, m_url));
    ASSERT_TRUE(ProjectBundle::writeVersion(first, m_url));

    const AudioTrackRef track{*take.storedID, take.storedID, true, {}};
    for (int opening = 0; opening < 2; ++opening) {
        m_log.clear();
        std::optional<ProjectVersionStore> store;
        {
            std::optional<FullDisk> disk;
            if (opening == 0) disk.emplace(100);
            store.emplace(m_url, open().value(), services());
        }
        EXPECT_THAT(store->version(draft.id)->edit.audioTracks.value(), ElementsAre(track, AudioTrackRef::recording()))
            << "the take that the project doesn't know is left out, the one without audio is not";
        EXPECT_EQ(store->unwrittenVersionIDs().size(), opening == 0 ? 2u : 0u);
        EXPECT_EQ(open().value().versions[2].edit.audioTracks.has_value(), opening == 1) << "written at once";
    }
}

TEST_F(ProjectVersionStoreTest, TellsOfChanges) {
    ProjectVersionStore store = openStore();
    int changes = 0;
    store.onChange([&] { ++changes; });
    store.save(edit(0.2), kLater);
    (void)store.rename(store.currentID(), "Final", kLater);
    EXPECT_EQ(changes, 2);
    store.save(edit(0.2), kLater);
    (void)store.rename(store.currentID(), "", kLater);
    EXPECT_EQ(changes, 2);
}

} // namespace
} // namespace morvelin
