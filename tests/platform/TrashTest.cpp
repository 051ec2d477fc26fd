// A real Trash folder, below a home of its own.

#include <gmock/gmock.h>

#include "base/TemporaryFolder.h"
#include "platform/linux/GioTrash.h"

namespace morvelin {
namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;

/// GIO asks for the user's data folder once and remembers it, so it is set before any test begins.
class HomeOfItsOwn : public testing::Environment {
public:
    void SetUp() override {
        ::setenv("HOME", m_home.path().c_str(), 1);
        ::setenv("XDG_DATA_HOME", dataFolder().c_str(), 1);
    }
    fs::path dataFolder() const { return m_home.path() / "data"; }
    fs::path newItem(const std::string& name) const {
        put(m_home.path() / name, "content of " + name);
        return m_home.path() / name;
    }

private:
    TemporaryFolder m_home;
};

const HomeOfItsOwn& home() {
    static HomeOfItsOwn* environment = new HomeOfItsOwn; // GoogleTest owns it
    return *environment;
}

const bool isAdded = testing::AddGlobalTestEnvironment(const_cast<HomeOfItsOwn*>(&home())) != nullptr;

TEST(GioTrashTest, TellsWhereItemsOfOneNameLie) {
    GioTrash trash;
    std::vector<fs::path> places;
    for (const std::string content : {"first", "second", "third"}) {
        const fs::path project = home().newItem("Zoë’s take; 100%.morvelin/capture.json").parent_path();
        put(project / "capture.json", content);
        const auto moved = trash.moveToTrash(project.string() + "/");
        ASSERT_TRUE(moved) << moved.error();
        ASSERT_TRUE(*moved);
        EXPECT_FALSE(fs::exists(project));
        EXPECT_EQ((*moved)->parent_path(), home().dataFolder() / "Trash/files");
        EXPECT_EQ(readFile(**moved / "capture.json").value(), content);
        const fs::path note = home().dataFolder() / "Trash/info" / ((*moved)->filename().string() + ".trashinfo");
        EXPECT_THAT(readFile(note).value_or(""), HasSubstr("100%25.morvelin")) << "a file manager can put it back";
        places.push_back(**moved);
    }
    EXPECT_NE(places[0], places[1]);
    EXPECT_NE(places[1], places[2]);
}

TEST(GioTrashTest, SaysWhyAnItemStaysWhereItIs) {
    GioTrash trash;
    const auto missing = trash.moveToTrash(home().newItem("x").parent_path() / "missing.morvelin");
    ASSERT_FALSE(missing);
    EXPECT_EQ(missing.error(), "“missing.morvelin” could not be moved to the Trash: No such file or directory.");

    const fs::path memory = "/dev/shm/morvelin-trash-test";
    std::error_code error;
    if (!fs::is_directory(memory.parent_path(), error)) GTEST_SKIP() << "no file system without a Trash at hand";
    put(memory, "content");
    const auto refused = trash.moveToTrash(memory);
    EXPECT_EQ(readFile(memory).value_or("gone"), "content");
    ASSERT_FALSE(refused);
    EXPECT_THAT(refused.error(), HasSubstr("“morvelin-trash-test” could not be moved to the Trash: "));
    EXPECT_GT(refused.error().size(), std::string("“morvelin-trash-test” could not be moved to the Trash: ").size());
    fs::remove(memory);
}

} // namespace
} // namespace morvelin
