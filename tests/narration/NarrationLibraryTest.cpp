// The list of takes on a real disk: nothing that was ever in it is lost.

#include <gmock/gmock.h>

#include "base/TemporaryFolder.h"
#include "core/base/AdvisoryLock.h"
#include "narration/NarrationLibrary.h"

namespace morvelin {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;

class NarrationLibraryTest : public testing::Test {
protected:
    NarrationLibrary load() {
        return NarrationLibrary::load(m_url, [this](std::string_view line) { m_log.emplace_back(line); });
    }
    NarrationTake take(std::optional<std::int64_t> number) {
        NarrationTake made;
        made.storedID = m_ids.next();
        made.number = number;
        made.duration = 2.5_s;
        made.createdAt = Date::fromUnixSeconds(1'700'000'000);
        return made;
    }
    void putAudio(const NarrationTake& take) { put(take.fileURL(m_url), "audio of " + take.id().text()); }
    void putLegacy(int version = 1) {
        put(m_url / "narration.m4a", "legacy audio");
        put(m_url / "narration.json", R"({"version":)" + std::to_string(version) +
                                          R"(,"timelineStart":1,"duration":3,"createdAt":"2025-01-02T03:04:05Z"})");
    }

    TemporaryFolder m_folder;
    fs::path m_url = m_folder.path();
    SeededIdSource m_ids{1};
    std::vector<std::string> m_log;
};

TEST_F(NarrationLibraryTest, KeepsTakesInOrderAndThoseWithoutAudio) {
    NarrationTake third = take(3), first = take({}), gone = take(9);
    first.words = {{{0.25_s, 1_s, "Zoë", 0.5}}};
    first.source = NarrationTake::Source::ElevenLabs;
    third.arrangement.emplace();
    putAudio(third);
    putAudio(first);
    NarrationLibrary library;
    library.takes = {third, gone, first};
    library.script = "draft";
    ASSERT_TRUE(library.save(m_url));

    library = load();
    third.arrangement.reset();
    EXPECT_THAT(library.takes, ElementsAre(first, third));
    EXPECT_THAT(library.unavailableTakes, ElementsAre(gone));
    EXPECT_EQ(library.script, "draft");
    EXPECT_EQ(library.nextNumber(), 10);
    ASSERT_TRUE(library.save(m_url));
    putAudio(gone);
    EXPECT_THAT(load().takes, ElementsAre(first, third, gone)) << "its file has come back";
    EXPECT_THAT(m_log, testing::IsEmpty());
}

TEST_F(NarrationLibraryTest, LeavesAnUnreadableListUntouched) {
    for (const std::string content :
         {R"({"version":2,"takes":[]})", R"({"version":1,"takes":[{"version":1}]})", "", "[]"}) {
        put(m_url / kNarrationFile, content);
        putLegacy();
        m_log.clear();
        NarrationLibrary library = load();
        EXPECT_TRUE(library.isUnreadable);
        EXPECT_THAT(library.takes, testing::IsEmpty());
        EXPECT_THAT(m_log, ElementsAre("[Morvelin] narration-takes.json could not be read; it is left untouched and "
                                       "takes are not saved."));
        library.takes = {take(1)};
        const auto saved = library.save(m_url);
        ASSERT_FALSE(saved);
        EXPECT_TRUE(saved.error().is<NarrationError::LibraryUnreadable>());
        EXPECT_EQ(readFile(m_url / kNarrationFile).value(), content);
    }
}

TEST_F(NarrationLibraryTest, TakesInTheTakeOfTheOlderFormatWithItsAudio) {
    putLegacy();
    put(m_url / kPendingNarrationFile, "pending");
    NarrationLibrary library = load();
    ASSERT_EQ(library.takes.size(), 1u);
    EXPECT_TRUE(library.takes[0].isLegacy());
    EXPECT_EQ(library.takes[0].id().text(), "6E617272-6174-696F-6E00-000000000001");
    EXPECT_EQ(library.nextNumber(), 2);

    library.takes.push_back(take(library.nextNumber()));
    putAudio(library.takes[1]);
    ASSERT_TRUE(library.save(m_url));
    for (const NarrationLibrary& now : {library, load()}) {
        ASSERT_EQ(now.takes.size(), 2u);
        EXPECT_EQ(now.takes[0].id(), NarrationTake::kLegacyID);
        EXPECT_EQ(readFile(now.takes[0].fileURL(m_url)).value_or("lost"), "legacy audio");
        EXPECT_EQ(now.nextNumber(), 3);
    }
    for (const char* name : {"narration.m4a", "narration.json", "narration-pending.m4a"})
        EXPECT_FALSE(fs::exists(m_url / name)) << name;
}

TEST_F(NarrationLibraryTest, ARecordingThatIsBeingMadeStays) {
    putLegacy();
    put(m_url / kPendingNarrationFile, "so far");
    const auto recorder = AdvisoryLock::attempt(m_url / kPendingNarrationFile, AdvisoryLock::Target::File);
    ASSERT_TRUE(recorder && *recorder);
    NarrationLibrary library = load();
    ASSERT_TRUE(library.save(m_url));
    EXPECT_EQ(readFile(m_url / kPendingNarrationFile).value_or("lost"), "so far");
    EXPECT_FALSE(fs::exists(m_url / "narration.m4a"));
}

TEST_F(NarrationLibraryTest, AFailedSaveLeavesTheOlderFormatReadable) {
    putLegacy();
    NarrationLibrary library = load();
    library.takes[0].duration = Seconds(std::numeric_limits<double>::quiet_NaN());
    EXPECT_TRUE(library.save(m_url).error().is<NarrationError::NotFinite>());
    library = load();
    {
        const FullDisk disk(16);
        EXPECT_TRUE(library.save(m_url).error().is<FileError>());
    }
    EXPECT_TRUE(library.takes[0].isLegacy());
    EXPECT_EQ(readFile(load().takes.at(0).fileURL(m_url)).value(), "legacy audio");
    EXPECT_TRUE(library.save(m_url)) << "the next try finds the audio's second name there already";
    EXPECT_EQ(readFile(load().takes.at(0).fileURL(m_url)).value(), "legacy audio");
}

TEST_F(NarrationLibraryTest, ReadsTheOlderFormatOnlyAsFarAsItIsKnown) {
    putLegacy(2);
    EXPECT_THAT(load().takes, testing::IsEmpty());
    putLegacy();
    put(m_url / kNarrationFile,
        R"({"version":1,"takes":[{"version":1,"timelineStart":1,"duration":3,"createdAt":"2025-01-02T03:04:05Z"}],)"
        R"("legacyDeletedAt":"2025-02-02T03:04:05Z"})");
    const NarrationLibrary library = load();
    ASSERT_EQ(library.takes.size(), 1u);
    EXPECT_TRUE(library.takes[0].deletedAt);
    EXPECT_EQ(library.live(NarrationTake::kLegacyID), nullptr);
    EXPECT_TRUE(library.knows(NarrationTake::kLegacyID));
    EXPECT_THAT(library.liveTakes(), testing::IsEmpty());
}

TEST(NarrationNumbers, GoOnFromTheLargest) {
    const auto next = [](std::vector<std::optional<std::int64_t>> numbers) {
        NarrationLibrary library;
        for (const auto number : numbers) library.takes.emplace_back().number = number;
        return library.nextNumber();
    };
    EXPECT_EQ(next({}), 1);
    EXPECT_EQ(next({std::nullopt}), 2);
    EXPECT_EQ(next({1, 3, 7}), 8);
    EXPECT_EQ(next({std::nullopt, 4}), 5);
}

} // namespace
} // namespace morvelin
