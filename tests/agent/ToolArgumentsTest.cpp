// Words of a command line as a tool's arguments: types by the schema, refusals that tell what to type instead.

#include <gtest/gtest.h>

#include "agent/ToolArguments.h"
#include "base/TemporaryFolder.h"

namespace morvelin {
namespace {

using Words = std::vector<std::string>;

TEST(ToolArguments, TakeTheTypesOfTheSchema) {
    struct Case {
        const char* tool;
        Words words;
        const char* arguments;
    };
    for (const Case& c : std::initializer_list<Case>{
             {"list_voices", {}, R"({})"},
             {"click", {"x=0.75", "y=1", "count=2"}, R"({"x":0.75,"y":1,"count":2})"},
             {"scroll", {"dy=-1e3"}, R"({"dy":-1000})"},
             {"export", {"for_ai=true", "format=gif"}, R"({"for_ai":true,"format":"gif"})"},
             // A text stays one, whatever it looks like; only the first sign of equality counts.
             {"type", {"text=a=b, 12 {}"}, R"({"text":"a=b, 12 {}"})"},
             {"type", {"text="}, R"({"text":""})"},
             {"use_narration_take", {"take=2"}, R"({"take":"2"})"},
             {"press_key", {"key=s", "modifiers=cmd,shift"}, R"({"key":"s","modifiers":["cmd","shift"]})"},
             {"press_key", {"key=s", "modifiers=[\"a,b\"]"}, R"({"key":"s","modifiers":["a,b"]})"},
             {"press_key", {"key=s", "modifiers="}, R"({"key":"s","modifiers":[]})"},
             {"update_annotation",
              {"id=A", R"(rect={"x":0,"y":0.5,"width":1,"height":0.5})"},
              R"({"id":"A","rect":{"x":0,"y":0.5,"width":1,"height":0.5}})"}}) {
        const auto arguments = toolArguments(*findTool(c.tool), c.words);
        ASSERT_TRUE(arguments) << arguments.error();
        EXPECT_EQ(*arguments, JSONValue::parse(c.arguments));
    }
    EXPECT_TRUE(toolArguments(*findTool("click"), {"x=0", "y=0", "count=2"})->at("count").is_number_integer());
}

TEST(ToolArguments, LeadPathsFromWhereTheyWereTyped) {
    const TemporaryFolder folder;
    put(folder.path() / "Here.morvelin" / "capture.json", "{}");
    const std::string here = folder.path().string() + "/";
    for (const auto& [name, typed, meant] :
         {std::tuple<const char*, std::string, std::string>{"project", "Here.morvelin", here + "Here.morvelin"},
          {"project", "Tour", "Tour"},
          {"project", "x/Tour", here + "x/Tour"},
          {"project", "~/Tour", "~/Tour"},
          {"path", "new.srt", here + "new.srt"},
          {"path", "/new.srt", "/new.srt"},
          {"text", "a/b", "a/b"}})
        EXPECT_EQ(withPathsFrom(folder.path(), {{name, typed}}), (JSONValue{{name, meant}})) << typed;
}

TEST(ToolArguments, RefuseInPlainWords) {
    struct Case {
        const char* tool;
        Words words;
        const char* sentence;
    };
    for (const Case& c : std::initializer_list<Case>{
             {"wait", {"secnds=3"}, "wait has no argument “secnds”. Did you mean “seconds”? wait takes seconds."},
             {"wait", {"x=3"}, "wait has no argument “x”. wait takes seconds."},
             {"list_voices", {"x=3"}, "list_voices has no argument “x”. list_voices takes no arguments."},
             {"wait", {"3"}, "“3” has no “=”: arguments are given as name=value. wait takes seconds."},
             {"click", {}, "click needs x, y."},
             {"click", {"y=0"}, "click needs x."},
             {"wait", {"seconds=1", "seconds=2"}, "“seconds” is given twice."},
             {"wait", {"seconds=1s"}, "seconds: “1s” is not a number."},
             {"wait", {"seconds="}, "seconds: “” is not a number."},
             {"wait", {"seconds=inf"}, "seconds: “inf” is not a number."},
             {"list_projects", {"limit=2.5"}, "limit: “2.5” is not a whole number."},
             {"list_projects", {"limit=99999999999999999999"}, "limit: “99999999999999999999” is not a whole number."},
             {"set_zoom", {"clear=yes"}, "clear: “yes” is neither true nor false."},
             {"press_key",
              {"key=a", "modifiers=[cmd"},
              "modifiers: “[cmd” is not a JSON list, nor texts with commas "
              "between them."},
             {"start_recording",
              {"rect=1,2"},
              "rect: “1,2” is not a JSON object like "
              R"({"x":…,"y":…,"width":…,"height":…}.)"}}) {
        const auto arguments = toolArguments(*findTool(c.tool), c.words);
        ASSERT_FALSE(arguments) << c.sentence;
        EXPECT_EQ(arguments.error(), c.sentence);
    }
}

} // namespace
} // namespace morvelin
