// Ids, dates and texts as files and users see them.

#include <ctime>
#include <set>

#include <gtest/gtest.h>

#include "core/base/Date.h"
#include "core/base/Identity.h"
#include "core/base/Text.h"

namespace morvelin {
namespace {

TEST(UUIDs, AreReadInEitherCaseAndWrittenInUpperCase) {
    const std::string canonical = "0123ABCD-4567-89EF-0123-456789ABCDEF";
    EXPECT_EQ(UUID::parse(canonical).value().text(), canonical);
    EXPECT_EQ(UUID::parse("0123abcd-4567-89ef-0123-456789abcdef").value().text(), canonical);
    for (const char* text : {"", "0123ABCD456789EF0123456789ABCDEF", "{0123ABCD-4567-89EF-0123-456789ABCDE}",
                             "0123ABCD-4567-89EF-0123-456789ABCDEG", "0123ABCD-4567-89EF-0123-456789ABCDEF0",
                             "0123ABCD4-567-89EF-0123-456789ABCDEF"})
        EXPECT_FALSE(UUID::parse(text)) << text;
}

TEST(UUIDs, FreshOnesAreVersionFourAndASeedRepeatsThem) {
    SeededIdSource seeded(5), again(5), other(6);
    RandomIdSource random, second;
    std::set<UUID> seen;
    for (int i = 0; i < 1000; ++i) {
        const UUID id = seeded.next();
        EXPECT_EQ(id, again.next());
        for (const UUID& each : {id, other.next(), random.next(), second.next()}) {
            EXPECT_EQ(each.text()[14], '4');
            EXPECT_NE(std::string("89AB").find(each.text()[19]), std::string::npos);
            EXPECT_TRUE(seen.insert(each).second);
        }
    }
}

TEST(Dates, AreWrittenInWholeSecondsAndReadInAllForms) {
    struct Case {
        const char* text;
        const char* written; ///< null where the text is no date
    };
    const Case cases[] = {
        {"2026-11-21T04:10:33Z", "2026-11-21T04:10:33Z"},
        {"2026-11-21T04:10:33.999Z", "2026-11-21T04:10:33Z"},
        {"2026-11-21T04:10:33.123456789Z", "2026-11-21T04:10:33Z"},
        {"2026-11-21T01:10:33+02:30", "2026-11-20T22:40:33Z"},
        {"2026-12-31T23:30:00-0100", "2027-01-01T00:30:00Z"},
        {"2024-02-29T00:00:00Z", "2024-02-29T00:00:00Z"},
        {"1969-12-31T23:59:59.500Z", "1969-12-31T23:59:59Z"},
        {"2026-02-29T00:00:00Z", nullptr},
        {"2026-11-21T24:00:00Z", nullptr},
        {"2026-11-21T04:10:33.Z", nullptr},
        {"2026-11-21T04:10:33", nullptr},
        {"2026-11-21 04:10:33Z", nullptr},
        {"2026-11-21", nullptr},
        {"2026-11-21T04:10:33Z ", nullptr},
        {"+026-11-21T04:10:33Z", nullptr},
    };
    for (const Case& c : cases) {
        const auto date = Date::parse(c.text);
        ASSERT_EQ(date.has_value(), c.written != nullptr) << c.text;
        if (!date) continue;
        EXPECT_EQ(date->text(), c.written) << c.text;
    }
    EXPECT_EQ((*Date::parse("2026-11-21T04:10:33.25Z") <=> *Date::parse("2026-11-21T04:10:33Z")),
              std::strong_ordering::greater)
        << "fractions are kept in memory";
}

TEST(Dates, NameARecordingInTheLocalClock) {
    ::setenv("TZ", "UTC", 1);
    ::tzset();
    const std::pair<const char*, const char*> cases[] = {
        {"2026-11-21T00:05:59Z", "Nov 21, 2026 at 12:05 AM"},
        {"2026-01-02T12:00:00Z", "Jan 2, 2026 at 12:00 PM"},
        {"2026-05-31T23:59:00Z", "May 31, 2026 at 11:59 PM"},
    };
    for (const auto& [text, name] : cases) EXPECT_EQ(Date::parse(text)->localDateAndTime(), name);
}

TEST(Texts, AreTrimmedOfUnicodeWhiteSpaceOnly) {
    const std::pair<std::string, std::string> cases[] = {
        {"", ""},
        {" \t\r\n", ""},
        {"  a b\n", "a b"},
        {"\u00a0\u2003ä\u3000\u2028\u0085", "ä"},
        {"\u200bx\u200b", "x"},
        {std::string(" \0 ", 3), std::string("\0", 1)},
        {"\xff \xff", "\xff \xff"},
        {"a \x80", "a \x80"},
        {"\xe2\x80", "\xe2\x80"},
    };
    for (const auto& [text, expected] : cases) EXPECT_EQ(trimmed(text), expected) << text;
}

TEST(Texts, AreCutBetweenCharacters) {
    const std::string text = "aä€😀"; // 1 + 2 + 3 + 4 bytes
    const std::pair<std::size_t, std::string> cases[] = {{0, ""},    {1, "a"},   {2, "a"},   {3, "aä"}, {5, "aä"},
                                                         {6, "aä€"}, {9, "aä€"}, {10, text}, {99, text}};
    for (const auto& [limit, expected] : cases) EXPECT_EQ(cutAtCharacter(text, limit), expected) << limit;
}

} // namespace
} // namespace morvelin
