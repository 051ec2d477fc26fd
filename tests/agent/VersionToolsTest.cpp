// Versions and projects managed by agents, on the files.

#include <gmock/gmock.h>

#include <sys/file.h>

#include <fcntl.h>

#include "agent/RouterFixture.h"
#include "core/base/OwnedDescriptor.h"

namespace morvelin {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

class VersionToolsTest : public RouterFixture {
protected:
    std::vector<std::string> names() {
        std::vector<std::string> all;
        const JSONValue list = facts("list_versions");
        for (const JSONValue& version : list["versions"])
            all.push_back(version["name"].get<std::string>() + (version["current"].get<bool>() ? "*" : ""));
        return all;
    }

    const std::filesystem::path m_bundle = addProject("Tour");
};

TEST_F(VersionToolsTest, VersionsAreMadeNamedSwitchedAndDeleted) {
    EXPECT_THAT(names(), ElementsAre("Original", "Version 1*"));
    EXPECT_EQ(facts("create_version")["name"], "Version 1 copy");
    const JSONValue draft = facts("create_version", {{"name", " Draft "}});
    EXPECT_THAT(names(), ElementsAre("Original", "Version 1", "Version 1 copy", "Draft*"));
    EXPECT_EQ(facts("rename_version", {{"name", "draft"}})["id"], draft["id"]);
    EXPECT_EQ(facts("switch_version", {{"version", "VERSION 1"}})["current"], true);
    EXPECT_EQ(facts("switch_version", {{"version", "Version 1"}})["name"], "Version 1") << "is current already";
    EXPECT_EQ(facts("delete_version", {{"version", draft["id"]}})["deleted"], draft["id"]);
    const JSONValue clone = facts("switch_version", {{"version", "Original"}});
    EXPECT_EQ(clone["name"], "Version 3");
    EXPECT_EQ(clone["note"], "The original is locked, so a copy of it was made and opened.");
    EXPECT_THAT(names(), ElementsAre("Original", "Version 1", "Version 1 copy", "Version 3*"));
}

TEST_F(VersionToolsTest, WhatIsRefusedChangesNothing) {
    const auto before = bytesBelow(m_bundle);
    EXPECT_EQ(refused("create_version", {{"name", "original"}}),
              "A version named “original” already exists in this project.");
    EXPECT_EQ(refused("create_version", {{"name", " "}}), "A version needs a name.");
    EXPECT_EQ(refused("rename_version"), "Invalid value for “name”: expected the new name");
    EXPECT_EQ(refused("rename_version", {{"name", "x"}, {"version", "none"}}),
              "No version “none”. Call list_versions for the ones on this project.");
    EXPECT_EQ(refused("rename_version", {{"name", "x"}, {"version", "Original"}}),
              "The original version can’t be renamed.");
    EXPECT_EQ(refused("switch_version"), "Invalid value for “version”: expected a version id or name");
    EXPECT_EQ(refused("delete_version", {{"version", "Original"}}), "The original version can’t be deleted.");
    EXPECT_EQ(refused("delete_version", {{"version", "Version 1"}}),
              "The version being edited can’t be deleted. Switch to another one first.");
    EXPECT_EQ(refused("rename_project", {{"name", " "}}), "Invalid value for “name”: expected the new name");
    EXPECT_THAT(refused("delete_project"), HasSubstr("never falls back to the most recent project"));
    EXPECT_EQ(refused("open_project"), "Could not open the editor: No editor is running.");
    EXPECT_EQ(bytesBelow(m_bundle), before);
}

TEST_F(VersionToolsTest, AnEditThatCannotBeSavedIsNotCalledDone) {
    const FullDisk disk(64);
    EXPECT_THAT(refused("create_version"), HasSubstr("could not be saved"));
}

TEST_F(VersionToolsTest, ProjectsAreRenamedCopiedAndThrownAway) {
    const JSONValue copy = facts("duplicate_project", {{"project", "Tour"}});
    EXPECT_EQ(copy["name"], "Tour copy");
    const JSONValue renamed = facts("rename_project", {{"project", copy["path"]}, {"name", "Grand tour"}});
    EXPECT_EQ(renamed["path"], (m_folders.projects.path() / "Grand tour.morvelin").string());
    EXPECT_EQ(facts("describe_project", {{"project", "Grand tour"}})["clicks"], 1);
    const JSONValue deleted = facts("delete_project", {{"project", "Grand tour"}});
    EXPECT_EQ(deleted["deleted"], renamed["path"]);
    EXPECT_TRUE(std::filesystem::exists(deleted["trash_path"].get<std::string>()));
    EXPECT_EQ(facts("list_projects")["projects"].size(), 1U);
    put(m_home.path() / "Documents" / "letter.txt", "Dear friend");
    EXPECT_EQ(refused("delete_project", {{"project", "~/Documents"}}), "No .morvelin project at “~/Documents”.");
    EXPECT_EQ(refused("duplicate_project", {{"project", "~/Documents"}}), "Bundle is missing capture.json");
}

TEST_F(VersionToolsTest, WaitsForWhoeverHoldsTheProject) {
    std::optional<OwnedDescriptor> other(::open(m_bundle.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    ASSERT_EQ(::flock(other->get(), LOCK_EX | LOCK_NB), 0);
    std::optional<MCPToolResult> result;
    const auto run = [&]() -> Task<void> { result = co_await m_router.call("create_version", {}, "test"); };
    m_loop.spawn(run());
    m_loop.advance(5_s);
    EXPECT_FALSE(result);
    EXPECT_FALSE(call("list_versions").isError) << "reading waits for nobody";
    other.reset();
    m_loop.advance(1_s);
    ASSERT_TRUE(result);
    EXPECT_FALSE(result->isError) << result->text;

    const OwnedDescriptor stubborn(::open(m_bundle.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    ASSERT_EQ(::flock(stubborn.get(), LOCK_EX | LOCK_NB), 0);
    result.reset();
    m_loop.spawn(run());
    m_loop.advance(11_s);
    ASSERT_TRUE(result);
    EXPECT_TRUE(result->isError);
}

} // namespace
} // namespace morvelin
