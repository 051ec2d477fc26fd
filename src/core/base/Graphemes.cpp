#include "core/base/Graphemes.h"

#include <glib.h>

namespace morvelin {

namespace {

constexpr char32_t kZeroWidthNonJoiner = 0x200c;
constexpr char32_t kZeroWidthJoiner = 0x200d;

constexpr bool isBetween(char32_t c, char32_t first, char32_t last) { return c >= first && c <= last; }

constexpr bool isRegionalIndicator(char32_t c) { return isBetween(c, 0x1f1e6, 0x1f1ff); }

/// Accents, vowel signs, joiners, skin tones and the tags of flags: never the start of a character.
bool isExtending(char32_t c) {
    if (c == kZeroWidthJoiner || c == kZeroWidthNonJoiner) return true;
    if (isBetween(c, 0x1f3fb, 0x1f3ff) || isBetween(c, 0xe0020, 0xe007f)) return true;
    const GUnicodeType type = g_unichar_type(c);
    return type == G_UNICODE_NON_SPACING_MARK || type == G_UNICODE_ENCLOSING_MARK || type == G_UNICODE_SPACING_MARK;
}

bool isControl(char32_t c) {
    if (c == kZeroWidthJoiner || c == kZeroWidthNonJoiner) return false;
    const GUnicodeType type = g_unichar_type(c);
    return type == G_UNICODE_CONTROL || type == G_UNICODE_LINE_SEPARATOR || type == G_UNICODE_PARAGRAPH_SEPARATOR;
}

/// Whether a Korean syllable goes on from `before` to `c`.
bool isSameSyllable(char32_t before, char32_t c) {
    const GUnicodeBreakType first = g_unichar_break_type(before);
    const GUnicodeBreakType next = g_unichar_break_type(c);
    switch (first) {
    case G_UNICODE_BREAK_HANGUL_L_JAMO:
        return next == G_UNICODE_BREAK_HANGUL_L_JAMO || next == G_UNICODE_BREAK_HANGUL_V_JAMO ||
               next == G_UNICODE_BREAK_HANGUL_LV_SYLLABLE || next == G_UNICODE_BREAK_HANGUL_LVT_SYLLABLE;
    case G_UNICODE_BREAK_HANGUL_V_JAMO:
    case G_UNICODE_BREAK_HANGUL_LV_SYLLABLE:
        return next == G_UNICODE_BREAK_HANGUL_V_JAMO || next == G_UNICODE_BREAK_HANGUL_T_JAMO;
    case G_UNICODE_BREAK_HANGUL_T_JAMO:
    case G_UNICODE_BREAK_HANGUL_LVT_SYLLABLE: return next == G_UNICODE_BREAK_HANGUL_T_JAMO;
    default: return false;
    }
}

/// Whether `c` belongs to the cluster, which isn't empty.
bool continues(const std::u32string& cluster, char32_t c) {
    const char32_t before = cluster.back();
    if (before == '\r' && c == '\n') return true;
    if (isControl(before) || isControl(c)) return false;
    if (isExtending(c)) return true;
    if (before == kZeroWidthJoiner && g_unichar_type(c) == G_UNICODE_OTHER_SYMBOL) return true;
    if (isRegionalIndicator(c)) return cluster.size() == 1 && isRegionalIndicator(before);
    return isSameSyllable(before, c);
}

} // namespace

std::vector<std::u32string> graphemes(std::string_view text) {
    constexpr auto kIncomplete = static_cast<gunichar>(-2);
    std::vector<std::u32string> clusters;
    while (!text.empty()) {
        const gunichar c = g_utf8_get_char_validated(text.data(), static_cast<gssize>(text.size()));
        if (c >= kIncomplete || c == 0) {
            // GLib takes a NUL for the text's end, which it is not.
            if (text.front() == '\0') clusters.emplace_back(1, U'\0');
            text.remove_prefix(1);
            continue;
        }
        if (!clusters.empty() && continues(clusters.back(), c))
            clusters.back() += c;
        else
            clusters.emplace_back(1, c);
        text.remove_prefix(static_cast<std::size_t>(g_unichar_to_utf8(c, nullptr)));
    }
    return clusters;
}

} // namespace morvelin
