// The table of tools: its shape as clients see it, and what the rows must keep among themselves.

#include <map>
#include <set>

#include <gtest/gtest.h>

#include "agent/ToolCatalogue.h"
#include "agent/ToolTable.h"

namespace morvelin {
namespace {

/// Calls `check(path, property)` for every property of every tool, those inside records too.
template <class Check>
void forEachProperty(const Check& check) {
    for (const MCPTool& tool : toolCatalogue())
        for (const auto& [name, property] : tool.inputSchema.at("properties").items()) {
            check(tool.name + "." + name, property);
            if (!property.contains("properties")) continue;
            for (const auto& [member, inner] : property.at("properties").items())
                check(tool.name + "." + name + "." + member, inner);
        }
}

std::set<std::string> keysOf(const JSONValue& object) {
    std::set<std::string> keys;
    for (const auto& [key, value] : object.items()) keys.insert(key);
    return keys;
}

TEST(ToolCatalogue, HoldsAllToolsOnceAndInOrder) {
    const auto& tools = toolCatalogue();
    ASSERT_EQ(tools.size(), 55u);
    EXPECT_EQ(tools.front().name, "start_recording");
    EXPECT_EQ(tools[33].name, "set_zoom");
    EXPECT_EQ(tools.back().name, "read_events");

    for (const MCPTool& tool : tools) EXPECT_EQ(findTool(tool.name), &tool) << "a name is there twice: " << tool.name;
    EXPECT_EQ(findTool("Click"), nullptr);
    EXPECT_EQ(findTool(""), nullptr);
}

TEST(ToolCatalogue, GivesEveryToolAWholeSchema) {
    for (const MCPTool& tool : toolCatalogue()) {
        EXPECT_EQ(keysOf(tool.inputSchema), (std::set<std::string>{"type", "properties", "required"})) << tool.name;
        EXPECT_EQ(tool.inputSchema.at("type"), "object") << tool.name;
        EXPECT_TRUE(tool.inputSchema.at("properties").is_object()) << tool.name;
        ASSERT_TRUE(tool.inputSchema.at("required").is_array()) << tool.name;
        for (const auto& name : tool.inputSchema.at("required"))
            EXPECT_TRUE(tool.inputSchema.at("properties").contains(name.get<std::string>())) << tool.name << name;
    }
    // Nothing to give must read as an empty object and an empty list, not as null.
    EXPECT_EQ(writeJSON(findTool("list_voices")->inputSchema, JSONStyle::Compact),
              R"({"properties":{},"required":[],"type":"object"})");
}

TEST(ToolCatalogue, DescribesEveryPropertyAndLeavesRangesToTheWords) {
    const std::map<std::string, std::set<std::string>> extra{
        {"string", {"enum"}}, {"object", {"properties", "required"}},
        {"array", {"items"}}, {"number", {}},
        {"integer", {}},      {"boolean", {}}};
    forEachProperty([&](const std::string& path, const JSONValue& property) {
        const std::string type = property.value("type", "");
        ASSERT_TRUE(extra.contains(type)) << path;
        EXPECT_FALSE(property.value("description", "").empty()) << path;
        for (const std::string& key : keysOf(property))
            EXPECT_TRUE(key == "type" || key == "description" || extra.at(type).contains(key)) << path << " " << key;
        EXPECT_TRUE(!property.contains("enum") || property.at("enum").size() >= 2) << path;
    });
}

TEST(ToolCatalogue, SharesOneSchemaForOneMeaning) {
    std::map<std::string, std::set<std::string>> schemas;
    forEachProperty([&](const std::string& path, const JSONValue& property) {
        schemas[path.substr(path.find('.') + 1)].insert(property.dump());
    });
    EXPECT_EQ(schemas.at("version").size(), 1u);
    EXPECT_EQ(schemas.at("project").size(), 2u) << "delete_project alone has a project that must be named";
    EXPECT_EQ(schemas.at("rect").size(), 2u) << "points for a recording, normalized for all else";
    EXPECT_EQ(schemas.at("display_id").size(), 3u) << "to record, to look at, of a position";
    EXPECT_EQ(findTool("annotate")->inputSchema["properties"]["rect"]["required"],
              (JSONValue{"x", "y", "width", "height"}));
}

TEST(ToolCatalogue, UnfoldsItsProse) {
    struct Case {
        const char* typed;
        const char* meant;
    };
    for (const Case& c : {Case{"One line.", "One line."},
                          {"\n    Folded\n    here.", "Folded here."},
                          {"\n  One.\n\n  Two,\n  still two.", "One.\n\nTwo, still two."},
                          {"\n  Kinds:\n\n  - a: with\n  more\n  - b\n\n  End", "Kinds:\n\n- a: with more\n- b\n\nEnd"},
                          {"wide   gaps\nstay", "wide   gaps stay"},
                          {"", ""}})
        EXPECT_EQ(table::prose(c.typed), c.meant);
    for (const MCPTool& tool : toolCatalogue()) {
        EXPECT_EQ(tool.description.find("\n "), std::string::npos) << tool.name;
        EXPECT_EQ(tool.description.find("\n\n\n"), std::string::npos) << tool.name;
    }
}

} // namespace
} // namespace morvelin
