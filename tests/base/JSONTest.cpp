// The codec's rules: what is required, what is tolerated, what is written, and how an error names its place.

#include <gtest/gtest.h>

#include "core/base/JSON.h"

namespace morvelin {
namespace {

enum class Shape { Round, Square };

constexpr auto rawValues(std::type_identity<Shape>) {
    return std::to_array<std::pair<Shape, std::string_view>>({{Shape::Round, "round"}, {Shape::Square, "square"}});
}

struct Leaf {
    Shape shape = Shape::Round;
    std::int64_t count = 0;

    bool operator==(const Leaf&) const = default;
};

template <class Fields>
void describe(Fields& fields, Same<Fields, Leaf>& leaf) {
    fields.required("shape", leaf.shape);
    fields.withDefault("count", leaf.count, 7);
}

struct Tree {
    std::string name;
    Seconds height;
    std::vector<Leaf> leaves;
    std::map<std::string, bool> flags;
    std::optional<Leaf> best;
    std::optional<UUID> id;
    std::optional<Date> planted;
    std::optional<std::int32_t> rings;

    bool operator==(const Tree&) const = default;
};

template <class Fields>
void describe(Fields& fields, Same<Fields, Tree>& tree) {
    fields.required("name", tree.name);
    fields.required("height", tree.height);
    fields.required("leaves", tree.leaves);
    fields.required("flags", tree.flags);
    fields.optional("best", tree.best);
    fields.optional("id", tree.id);
    fields.optional("planted", tree.planted);
    fields.optional("rings", tree.rings);
}

constexpr std::string_view kPlain = R"({"name":"oak","height":2,"leaves":[{"shape":"round"}],"flags":{"a":true}})";

/// The plain tree with one key replaced, or removed where the value is empty.
std::string with(const std::string& key, const std::string& value) {
    JSONValue tree = parseJSON(kPlain).value();
    tree.erase(key);
    if (!value.empty()) tree[key] = parseJSON(value).value();
    return writeJSON(tree, JSONStyle::Compact);
}

TEST(Codec, ToleratesWhatReadersMustTolerate) {
    const Tree plain = decode<Tree>(kPlain).value();
    EXPECT_EQ(plain.height, 2_s);
    EXPECT_EQ(plain.leaves.at(0), (Leaf{Shape::Round, 7})) << "a missing key takes its default";
    const std::pair<const char*, const char*> cases[] = {
        {"best", "null"},
        {"unknown", R"({"deep":[1]})"},
        {"height", "2.0"},
        {"flags", R"({"a":true})"},
        {"leaves", R"([{"shape":"round","count":null}])"},
    };
    for (const auto& [key, value] : cases) EXPECT_EQ(decode<Tree>(with(key, value)).value(), plain) << key;
    EXPECT_EQ(decode<Tree>(with("rings", "3.0")).value().rings, 3) << "a whole number may be written with a point";
}

TEST(Codec, NamesThePlaceAndTheReasonOfAnError) {
    struct Case {
        const char* key;
        const char* value;
        const char* sentence;
    };
    const Case cases[] = {
        {"name", "", "The key “name” is missing."},
        {"name", "null", "At “name”: a text was expected, null was found."},
        {"height", R"("2")", "At “height”: a number was expected, string was found."},
        {"leaves", "{}", "At “leaves”: a list was expected, object was found."},
        {"leaves", R"([{"shape":"round"},{}])", "The key “leaves[1].shape” is missing."},
        {"leaves", R"([{"shape":"oval"}])", "At “leaves[0].shape”: unknown value “oval”."},
        {"leaves", R"([{"shape":1}])", "At “leaves[0].shape”: a text was expected, number was found."},
        {"leaves", R"([{"shape":"round","count":1.5}])",
         "At “leaves[0].count”: a whole number was expected, number was found."},
        {"leaves", R"([{"shape":"round","count":9223372036854775808}])",
         "At “leaves[0].count”: a whole number was expected, number was found."},
        {"rings", "2147483648", "At “rings”: a whole number was expected, number was found."},
        {"flags", R"({"a":1})", "At “flags.a”: true or false was expected, number was found."},
        {"id", R"("nonsense")", "At “id”: a UUID was expected, string was found."},
        {"planted", R"("yesterday")", "At “planted”: an ISO 8601 date was expected, string was found."},
        {"best", R"({"shape":"round","count":[]})", "At “best.count”: a whole number was expected, array was found."},
    };
    for (const Case& c : cases) {
        const auto tree = decode<Tree>(with(c.key, c.value));
        ASSERT_FALSE(tree) << c.sentence;
        EXPECT_EQ(tree.error().description(), c.sentence);
    }
    EXPECT_EQ(decode<Tree>("[]").error().description(), "At the top level: an object was expected, array was found.");
}

TEST(Codec, RefusesBrokenTextsWithASentence) {
    const std::string deep(100'000, '[');
    for (const std::string& text : {std::string(), std::string("{"), std::string("{} x"), std::string("{\"a\":1e999}"),
                                    std::string("\"\xff\""), deep, deep + std::string(100'000, ']')}) {
        const auto value = parseJSON(text);
        ASSERT_FALSE(value) << text.substr(0, 20);
        EXPECT_EQ(value.error().kind, JSONError::Kind::Syntax);
        EXPECT_TRUE(value.error().description().starts_with("The data isn’t valid JSON: "));
    }
    const std::string brackets = '"' + deep + '"';
    EXPECT_TRUE(parseJSON(brackets)) << "brackets inside a text are no nesting";
    EXPECT_TRUE(parseJSON(R"(["\"", "]]]"])"));
}

TEST(Codec, WritesNoEmptyOptionalsSortsKeysAndKeepsSlashes) {
    Tree tree{"a/b “ä”", 1.5_s, {{Shape::Square, 2}}, {{"z", false}}, {}, {}, {}, {}};
    EXPECT_EQ(writeJSON(toJSON(tree), JSONStyle::Compact),
              R"({"flags":{"z":false},"height":1.5,"leaves":[{"count":2,"shape":"square"}],"name":"a/b “ä”"})");
    tree.best = Leaf{Shape::Round, 1};
    tree.id = SeededIdSource(1).next();
    tree.planted = Date::fromUnixSeconds(1'000'000'000);
    tree.rings = -3;
    EXPECT_EQ(decode<Tree>(writeJSON(toJSON(tree), JSONStyle::Pretty)).value(), tree);
    EXPECT_EQ(writeJSON(JSONValue("\xff"), JSONStyle::Compact), "\"\xEF\xBF\xBD\"") << "the text stays UTF-8";
}

} // namespace
} // namespace morvelin
