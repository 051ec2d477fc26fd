// Numbers as outside callers write them, and numbers as we write them.

#include <bit>
#include <cmath>
#include <limits>
#include <random>

#include <gtest/gtest.h>

#include "core/base/Base64.h"
#include "core/base/JSONCoercion.h"

namespace morvelin {
namespace {

TEST(JSONCoercion, ReadsNumbersAndTextsThatAreOneNumber) {
    struct Case {
        JSONValue value;
        std::optional<double> number;
        std::optional<std::int64_t> integer;
    };
    for (const Case& c : {
             Case{0.5, 0.5, 0},
             {-7.9, -7.9, -7},
             {3, 3, 3},
             {18446744073709551615ULL, 18446744073709551615.0, std::nullopt},
             {9007199254740993, 9007199254740992.0, 9007199254740992},
             {-9223372036854775807 - 1, -0x1p63, std::numeric_limits<std::int64_t>::min()},
             {"0.5", 0.5, 0},
             {"1e3", 1000, 1000},
             {"+2.", 2, 2},
             {".25", 0.25, 0},
             {"0x1p4", 16, 16},
             {"-0", -0.0, 0},
             {"1e-999", 0, 0},
             {"9223372036854775808", 0x1p63, std::nullopt},
             {"1e999", {}, {}},
             {"inf", {}, {}},
             {"nan", {}, {}},
             {"", {}, {}},
             {" 1", {}, {}},
             {"\t1", {}, {}},
             {"\r1", {}, {}},
             {"1 ", {}, {}},
             {"1,5", {}, {}},
             {"one", {}, {}},
             {std::string("\0001", 2), {}, {}},
             {std::string("1\0", 2), {}, {}},
             {true, {}, {}},
             {JSONValue(), {}, {}},
             {JSONValue::array({1}), {}, {}},
             {JSONValue::object(), {}, {}},
             {std::numeric_limits<double>::infinity(), {}, {}},
         }) {
        EXPECT_EQ(coercedNumber(c.value), c.number) << c.value;
        EXPECT_EQ(coercedInteger(c.value), c.integer) << c.value;
    }
}

TEST(JSONNumbers, AreWrittenWithoutAFractionWhenTheyAreWhole) {
    struct Case {
        double number;
        const char* text;
    };
    for (const Case& c : {
             Case{5.0, "5"},
             {-3.0, "-3"},
             {100.0, "100"},
             {0.5, "0.5"},
             {1.05, "1.05"},
             {10.01, "10.01"},
             {999'999'999'999'999.0, "999999999999999"},
             {1e15, "1000000000000000"},
             {-1'234'567'890'123'456.0, "-1234567890123456"},
             {1'174'362'064'995'010.25, "1.1743620649950102e+15"},
             {0x1p53 - 1, "9007199254740991"},
             {0x1p53, "9.007199254740992e+15"},
             {1e150, "1e+150"},
             {1e-15, "1e-15"},
         }) {
        EXPECT_EQ(writeJSON(c.number, JSONStyle::Compact), c.text);
        const JSONValue inside{{"1.0", {c.number, "\\\" 2.0,1e+15 \\", c.number}}, {"\"x.0", c.number}};
        for (const JSONStyle style : {JSONStyle::Compact, JSONStyle::Pretty}) {
            const std::string text = writeJSON(inside, style);
            EXPECT_EQ(parseJSON(text).value_or(JSONValue()), inside) << text;
            EXPECT_EQ(text.find(".0,\n"), std::string::npos) << text;
        }
    }
    EXPECT_EQ(writeJSON({{"a", 1.0}, {"b", {2.0, 3.0}}, {"c", "4.0"}}, JSONStyle::Compact),
              R"({"a":1,"b":[2,3],"c":"4.0"})");
}

TEST(JSONNumbers, ComeBackTheSame) {
    std::mt19937_64 random(3);
    for (int i = 0; i < 20'000; ++i) {
        const double whole = std::trunc(std::ldexp(1.0, static_cast<int>(random() % 60)) *
                                        static_cast<double>(random() % 1000) / 999);
        const double any = std::bit_cast<double>(random());
        for (const double number : {whole, -whole, whole + 0.5, any}) {
            if (!std::isfinite(number)) continue;
            const std::string text = writeJSON(number, JSONStyle::Compact);
            ASSERT_EQ(parseJSON(text).value_or(JSONValue()).get<double>(), number) << text;
        }
    }
}

TEST(Base64, IsTheStandardForm) {
    for (const auto& [bytes, text] : {std::pair<std::string, const char*>{"", ""},
                                      {"f", "Zg=="},
                                      {"fo", "Zm8="},
                                      {"foo", "Zm9v"},
                                      {std::string("\x00\xff\xfe\x3e\x3f\xfb", 6), "AP/+Pj/7"}}) {
        EXPECT_EQ(base64(bytes), text);
        EXPECT_EQ(bytesOfBase64(text), bytes);
    }
    EXPECT_EQ(base64(std::string(600, '\0')), std::string(800, 'A')) << "one line";
}

} // namespace
} // namespace morvelin
