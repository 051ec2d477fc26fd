// Names, renames, the first edit, and the single files of a project.

#include <limits>

#include "core/base/PercentEncoding.h"
#include "storage/BackgroundImage.h"
#include "storage/BundleOnDisk.h"

namespace morvelin::ProjectBundle {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;

TEST(FolderNames, AreSafeForAnyFileSystem) {
    std::string long200;
    for (int i = 0; i < 100; ++i) long200 += "ä";
    const std::pair<std::string, std::string> cases[] = {
        {"Demo", "Demo"},
        {" a/b:c\\d ", "a-b-c-d"},
        {"a\tb\nc\x7f", "a-b-c-"},
        {"a\u0080b\u009fc", "a-b-c"},
        {std::string("a\0b", 3), "a-b"},
        {"a\u00a0b", "a\u00a0b"},
        {"", "Recording"},
        {" \n ", "Recording"},
        {"..", "Recording"},
        {". .hidden", "hidden"},
        {"../../etc", "-..-etc"},
        {"a.b.", "a.b."},
        {long200 + "x", long200},
        {"x" + long200, "x" + long200.substr(0, 198)},
        {std::string(199, 'x') + " yz", std::string(199, 'x')},
    };
    for (const auto& [name, expected] : cases) EXPECT_EQ(folderName(name), expected) << name;
}

class RenameBundle : public BundleOnDisk {
protected:
    RenameBundle() { (void)writeCapture(header({}), m_url); }

    std::string rename(const std::string& name) {
        const auto renamed = renameBundle(m_url, name);
        if (!renamed) return renamed.error().description();
        m_url = *renamed;
        return m_url.filename().string();
    }
};

TEST_F(RenameBundle, MovesTheFolderAndKeepsTheDisplayNameAsAsked) {
    EXPECT_EQ(rename(" Talk 1/2 \n"), "Talk 1-2.morvelin");
    EXPECT_EQ(headerOnDisk().name, "Talk 1/2");
    EXPECT_EQ(readFile(m_url / "recording.mov").value(), "movie");
    EXPECT_THAT(m_folder.names(), ElementsAre("Talk 1-2.morvelin"));

    const auto before = bytesBelow(m_folder.path());
    EXPECT_EQ(rename("  "), "Talk 1-2.morvelin");
    EXPECT_EQ(bytesBelow(m_folder.path()), before);
    EXPECT_EQ(rename("Talk 1:2"), "Talk 1-2.morvelin") << "the folder's name stays, the display name doesn't";
    EXPECT_EQ(headerOnDisk().name, "Talk 1:2");

    m_url /= ""; // as a shell completes it
    EXPECT_EQ(rename("Other"), "Other.morvelin");
}

TEST_F(RenameBundle, TakesTheFirstFreeNumeral) {
    fs::create_directory(m_folder.path() / "A-B.morvelin");
    put(m_folder.path() / "A-B 2.morvelin", "a file");
    fs::create_symlink("nowhere", m_folder.path() / "A-B 3.morvelin");
    EXPECT_EQ(rename("A/B"), "A-B 4.morvelin");
    EXPECT_EQ(headerOnDisk().name, "A/B");
    EXPECT_EQ(rename("A:B"), "A-B 4.morvelin") << "its own name is free for it";
}

TEST_F(RenameBundle, AFailureLeavesEverythingAsItWas) {
    // So deep that the bundle's files still have paths that the system takes, and the longer new name has not.
    constexpr std::size_t kDepth = 3960;
    fs::path deep = m_folder.path();
    while (deep.string().size() + 102 < kDepth) deep /= std::string(100, 'd');
    deep /= std::string(kDepth - deep.string().size() - 1, 'd');
    fs::create_directories(deep);
    fs::rename(m_url, deep / "b.morvelin");
    m_url = deep / "b.morvelin";
    const auto before = bytesBelow(deep);
    EXPECT_THAT(rename(std::string(199, 'n')), testing::HasSubstr("File name too long"));
    EXPECT_EQ(bytesBelow(deep), before);

    put(m_url / "capture.json", "{}");
    EXPECT_THAT(rename("New"), testing::HasSubstr("capture.json"));
    fs::remove(m_url / "capture.json");
    EXPECT_THAT(rename("New"), testing::HasSubstr("No such file"));
    EXPECT_TRUE(fs::exists(m_url / "recording.mov"));
}

TEST(InitialEdit, HoldsTheWholeRecordingAndNeverAnEmptyTrack) {
    SeededIdSource ids(1);
    const EditPayload quiet = initialEdit({}, 10_s, ids);
    EXPECT_EQ(quiet.duration, 10_s);
    ASSERT_EQ(quiet.fragments.size(), 1U);
    EXPECT_EQ(quiet.fragments[0].sourceEnd, SourceTime(10));
    ASSERT_EQ(quiet.zoomKeyframes.size(), 1U);
    EXPECT_EQ(quiet.zoomKeyframes[0].zoomFactor, 1);
    EXPECT_TRUE(quiet.zoomKeyframes[0].isManual);
    EXPECT_EQ(quiet.positionKeyframes.size(), 1U);
    EXPECT_EQ(quiet.editing, EditingSettings{});
    EXPECT_THAT(quiet.audioTracks.value(), ElementsAre(AudioTrackRef::recording()));
    EXPECT_EQ(quiet.cursor, std::nullopt);

    const EditPayload empty = initialEdit({}, 0_s, ids);
    EXPECT_TRUE(empty.fragments.empty());
    EXPECT_EQ(empty.zoomKeyframes.size(), 1U);
    EXPECT_EQ(empty.positionKeyframes.size(), 1U);

    const EditPayload clicked = initialEdit(oneClick(), 10_s, ids);
    EXPECT_TRUE(std::ranges::any_of(clicked.zoomKeyframes, [](const auto& key) { return key.zoomFactor > 1; }));
    EXPECT_FALSE(clicked.zoomKeyframes[0].isManual);
}

class BundleFile : public BundleOnDisk {};

TEST_F(BundleFile, NoFileIsReplacedByOneThatCannotBeReadBack) {
    ProjectVersion draft = version("Draft");
    ASSERT_TRUE(writeVersion(draft, m_url));
    const auto before = bytesBelow(m_url);
    draft.edit.zoomKeyframes[0].zoomFactor = std::numeric_limits<double>::infinity();
    const auto written = writeVersion(draft, m_url);
    ASSERT_FALSE(written);
    EXPECT_TRUE(written.error().is<BundleError::NotFinite>());
    EXPECT_EQ(bytesBelow(m_url), before);

    EXPECT_TRUE(deleteVersionFile(draft.id, m_url));
    EXPECT_TRUE(deleteVersionFile(draft.id, m_url));
    EXPECT_THAT(bytesBelow(m_url), ElementsAre(testing::Key("recording.mov"), testing::Key("versions/")));
}

TEST(BackgroundImage, MovesWithItsProject) {
    const TemporaryFolder library;
    const fs::path mine = library.path() / "My tour.morvelin";
    put(mine / "background-1.png", "picture");
    put(mine / "pictures" / "deep.png", "picture");
    put(library.path() / "Old.morvelin" / "background-1.png", "the other project's");
    struct Case {
        fs::path stored, found;
    };
    for (const Case& c :
         {Case{mine / "background-1.png", mine / "background-1.png"},
          {library.path() / "Old.morvelin" / "background-1.png", mine / "background-1.png"}, // a copy has its own
          {"/gone/Before its name.MORVELIN/background-1.png", mine / "background-1.png"},
          {"/gone/A.morvelin/pictures/deep.png", mine / "pictures" / "deep.png"},
          {"/gone/A.morvelin/../elsewhere/background-1.png", "/gone/elsewhere/background-1.png"},
          {"/gone/A.morvelin/lost.png", "/gone/A.morvelin/lost.png"},
          {"/photos/background-1.png", "/photos/background-1.png"}}) { // the user's own file
        Background background;
        background.imageURL = fileURL(c.stored);
        EXPECT_EQ(backgroundImagePath(mine, background), c.found) << c.stored;
    }
    EXPECT_EQ(backgroundImagePath(mine, Background()), std::nullopt);
}

} // namespace
} // namespace morvelin::ProjectBundle
