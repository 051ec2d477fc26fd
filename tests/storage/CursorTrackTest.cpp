// The fast road of the pointer's track must agree with the codec on every text, whole or broken.

#include <limits>
#include <random>

#include <gtest/gtest.h>

#include "storage/CursorTrackFile.h"

namespace morvelin::ProjectBundle {
namespace {

using Events = std::vector<CursorEvent>;

Events someEvents(std::size_t count) {
    std::mt19937 random(7);
    std::uniform_real_distribution<double> place(0, 1);
    Events events;
    for (std::size_t i = 0; i < count; ++i) {
        CursorEvent sample;
        sample.timestamp = SourceTime(static_cast<double>(i) / 30);
        sample.x = place(random);
        sample.y = place(random);
        if (i % 7 == 3) {
            sample.event = i % 2 == 0 ? CursorEventType::MouseDown : CursorEventType::MouseUp;
            sample.button = MouseButton(i % 3);
            sample.clickCount = static_cast<std::int64_t>(i % 4);
        }
        events.push_back(sample);
    }
    return events;
}

/// Both roads take the text and give the same, or both refuse it with the same sentence.
testing::AssertionResult agreeOn(const std::string& text) {
    const auto fast = decodeCursorEvents(text);
    const auto codec = decode<Events>(text);
    if (fast.has_value() != codec.has_value())
        return testing::AssertionFailure() << (fast ? "taken: " : "refused: ") << text.substr(0, 2000);
    if (fast && *fast != *codec) return testing::AssertionFailure() << "read differently: " << text.substr(0, 2000);
    if (!fast && fast.error().description() != codec.error().description())
        return testing::AssertionFailure() << fast.error().description();
    return testing::AssertionSuccess();
}

TEST(CursorTrack, IsWrittenInTheCodecsFormAndComesBack) {
    const CursorEvent move{SourceTime(0), 1, 0.125, CursorEventType::Move, {}, {}};
    const CursorEvent press{SourceTime(12.5), 1e-7, 5e-324, CursorEventType::MouseDown, MouseButton::Other, 2};
    for (const Events& events : {Events{}, Events{move}, Events{press, move}})
        EXPECT_EQ(encodeCursorEvents(events), writeJSON(toJSON(events), JSONStyle::Compact));

    const Events events = someEvents(500);
    const std::string text = encodeCursorEvents(events);
    EXPECT_TRUE(agreeOn(text));
    EXPECT_TRUE(decodeCursorEvents(text).value() == events);
}

TEST(CursorTrack, LosesOneSampleRatherThanAllWhenANumberIsNotFinite) {
    Events events = someEvents(3);
    events[1].y = std::numeric_limits<double>::quiet_NaN();
    EXPECT_EQ(decodeCursorEvents(encodeCursorEvents(events)).value(), (Events{events[0], events[2]}));
    events[0].timestamp = SourceTime(-std::numeric_limits<double>::infinity());
    EXPECT_EQ(decodeCursorEvents(encodeCursorEvents(events)).value(), (Events{events[2]}));
}

TEST(CursorTrack, AgreesWithTheCodecOnUnusualTexts) {
    const std::string sample = R"({"timestamp":1,"x":0.5,"y":0.25,"event":"move"})";
    for (const std::string& text : {
             std::string(),
             std::string("[]"),
             std::string(" [\n] "),
             std::string("[]]"),
             std::string("[],"),
             std::string("{}"),
             std::string("null"),
             "[" + sample + "]",
             "[" + sample + ",]",
             "[" + sample + " " + sample + "]",
             "[" + sample + "] x",
             "[" + sample,
             "\xEF\xBB\xBF[" + sample + "]",
             std::string(R"([{"x":1,"y":2,"event":"move"}])"),
             std::string(R"([{"timestamp":1,"x":1,"y":2,"event":"fly"}])"),
             std::string(R"([{"timestamp":1,"x":1,"y":2,"event":"mo\u0076e"}])"),
             std::string(R"([{"timestamp":1,"\u0078":1,"y":2,"event":"move"}])"),
             std::string(R"([{"timestamp":1,"x":1,"y":2,"event":"move","button":null,"clickCount":null}])"),
             std::string(R"([{"timestamp":1,"x":1,"y":2,"event":"mouseUp","button":"left","clickCount":2.0}])"),
             std::string(R"([{"timestamp":1,"x":1,"y":2,"event":"mouseUp","button":"left","clickCount":2.5}])"),
             std::string(R"([{"timestamp":1,"x":1,"x":3,"y":2,"event":"move"}])"),
             std::string(R"([{"timestamp":"1","x":1,"y":2,"event":"move"}])"),
             std::string(R"([{"timestamp":1,"x":1,"y":2,"event":"move","pressure":[{},{"a":[1]}]}])"),
             std::string(R"([{"timestamp":1,"x":1,"y":2,"event":"move","pressure":tru}])"),
             std::string(R"([{"timestamp":01,"x":1,"y":2,"event":"move"}])"),
             std::string(R"([{"timestamp":1.,"x":.1,"y":2,"event":"move"}])"),
             std::string(R"([{"timestamp":-.5,"x":0.1,"y":2,"event":"move"}])"),
             std::string("[{\"timestamp\":1\x01,\"x\":1,\"y\":2,\"event\":\"move\"}]"),
             std::string(R"([{"timestamp":inf,"x":0.1,"y":2,"event":"move"}])"),
             std::string(R"([{"timestamp":1.e5,"x":0.1,"y":2,"event":"move"}])"),
             std::string(R"([{"timestamp" : -0.5E+1 ,"x":00.1,"y":2,"event":"move"}])"),
             std::string(R"([ { "timestamp" : -0.5E+1 , "x" : 0 , "y":-2e3	,"event" : "move" } ])"),
             std::string(R"([{"timestamp":1e999,"x":1,"y":2,"event":"move"}])"),
             std::string(R"([{"timestamp":-0.0,"x":1e-400,"y":123456789012345678901234567890,"event":"move"}])"),
             std::string(R"([{"timestamp":0.26387227339074964701,"x":0.00000000000000000000000000012345678901234567,)"
                         R"("y":1234567890.1234567890e-05,"event":"move"}])"),
             std::string(R"([{"timestamp":NaN,"x":1,"y":2,"event":"move"}])"),
             "[[" + sample + "]]",
         })
        EXPECT_TRUE(agreeOn(text));
}

TEST(CursorTrack, AgreesWithTheCodecOnDamagedTexts) {
    std::mt19937 random(11);
    const std::string alphabet = "{}[]\",:.-+eE0123456789 \\\n\tnulltruexyx\x01\x7f\xff\x80";
    const std::string whole = encodeCursorEvents(someEvents(5));
    const auto pick = [&](std::size_t count) {
        return std::uniform_int_distribution<std::size_t>(0, count - 1)(random);
    };
    for (int i = 0; i < 20'000; ++i) {
        std::string text = whole;
        for (std::size_t damages = 1 + pick(2); damages > 0; --damages) {
            const std::size_t at = pick(text.size());
            switch (pick(4)) {
            case 0: text[at] = alphabet[pick(alphabet.size())]; break;
            case 1: text.erase(at, 1 + pick(8)); break;
            case 2: text.insert(at, 1, alphabet[pick(alphabet.size())]); break;
            default: text.insert(at, text.substr(pick(text.size()), 1 + pick(60))); break;
            }
        }
        ASSERT_TRUE(agreeOn(text)) << "round " << i;
    }
}

/// The reader takes a long text in slices: damage where one ends must not slip through.
TEST(CursorTrack, AgreesWithTheCodecWhereItCutsALongText) {
    const std::string whole = encodeCursorEvents(someEvents(3200));
    constexpr std::size_t kSliceBytes = 256 * 1024;
    ASSERT_GT(whole.size(), kSliceBytes + 1000);
    EXPECT_TRUE(agreeOn(whole));
    const std::size_t cut = whole.find("},", kSliceBytes) + 1;
    const std::string sample = R"({"timestamp":1,"x":0.5,"y":0.25,"event":"move"})";
    const std::string before = whole.substr(0, cut), after = whole.substr(cut + 1);
    for (const std::string& between : {std::string(",,"), std::string("],["), std::string(", "), std::string(",]"),
                                       std::string("]"), std::string(",{},"), std::string(",[],"), std::string("},"),
                                       std::string(",{\"a\":\"},{\"},"), ',' + sample + ',', ",[" + sample + "],"})
        EXPECT_TRUE(agreeOn(before + between + after)) << between;
    for (const std::string& end : {std::string(), std::string(","), std::string("]"), std::string(",]"),
                                   std::string("]]"), std::string(",") + sample})
        EXPECT_TRUE(agreeOn(before + end)) << end;
    for (std::size_t length = cut - 3; length < cut + 60; ++length)
        ASSERT_TRUE(agreeOn(whole.substr(0, length))) << length;
}

} // namespace
} // namespace morvelin::ProjectBundle
