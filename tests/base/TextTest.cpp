// Comparing texts as a person does: case, accents, and how they are composed.

#include <gtest/gtest.h>

#include "core/base/Text.h"

namespace morvelin {
namespace {

TEST(CaseFolded, MakesTextsEqualThatDifferInCaseOrComposition) {
    const std::pair<const char*, const char*> same[] = {
        {"", ""}, {"ABC", "abc"}, {"ÄÖÜ", "äöü"}, {"STRASSE", "straße"}, {"ΣΑΣ", "σας"}, {"E\u0301", "é"}, {"ЖЖ", "жж"},
    };
    for (const auto& [a, b] : same) EXPECT_EQ(caseFolded(a), caseFolded(b)) << a;
    const std::pair<const char*, const char*> different[] = {{"e", "é"}, {"a", "a "}, {"I", "ı"}};
    for (const auto& [a, b] : different) EXPECT_NE(caseFolded(a), caseFolded(b)) << a;
    EXPECT_EQ(caseFolded("A\xff"), "a\ufffd") << "bytes that are no UTF-8";
}

TEST(WithoutCaseAndDiacritics, DropsAccentsButNoLetters) {
    const std::pair<const char*, const char*> same[] = {
        {"Café", "cafe"}, {"CAFE\u0301", "café"}, {"Ångström", "angstrom"},
        {"Việt", "viet"}, {"ёлка", "елка"},       {"مُحَمَّد", "محمد"},
    };
    for (const auto& [a, b] : same) EXPECT_EQ(withoutCaseAndDiacritics(a), withoutCaseAndDiacritics(b)) << a;
    // Vowel signs and voicing marks are letters of their scripts.
    const std::pair<const char*, const char*> different[] = {{"कि", "कु"}, {"กิ", "กุ"}, {"が", "か"}, {"ø", "o"}};
    for (const auto& [a, b] : different) EXPECT_NE(withoutCaseAndDiacritics(a), withoutCaseAndDiacritics(b)) << a;
}

} // namespace
} // namespace morvelin
