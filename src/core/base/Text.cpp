#include "core/base/Text.h"

#include <memory>

#include <glib.h>

namespace morvelin {

namespace {

bool isSpaceAt(const char* at) {
    const gunichar c = g_utf8_get_char_validated(at, -1);
    // Next line and the zero-width space count as white space for names, though GLib's test leaves them out.
    return c == 0x85 || c == 0x200b || (c < 0x110000 && g_unichar_isspace(c));
}

using OwnedText = std::unique_ptr<char, decltype(&g_free)>;

OwnedText folded(std::string_view text) {
    const OwnedText valid(g_utf8_make_valid(text.data(), static_cast<gssize>(text.size())), g_free);
    const OwnedText composed(g_utf8_normalize(valid.get(), -1, G_NORMALIZE_NFC), g_free);
    return {g_utf8_casefold(composed.get(), -1), g_free};
}

/// Whether a mark only colours the letter before it. Vowel signs and viramas of other scripts are marks as well, but
/// without them it is another word.
bool isDiacritic(gunichar c) {
    constexpr int kOverlay = 1, kFirstPoint = 10, kLastPoint = 36, kFirstAttached = 200;
    const int place = g_unichar_combining_class(c);
    return place == kOverlay || (place >= kFirstPoint && place <= kLastPoint) || place >= kFirstAttached;
}

} // namespace

std::string trimmed(std::string_view text) {
    const std::string whole(text);
    const char* begin = whole.c_str();
    const char* end = begin + whole.size();
    while (begin < end && isSpaceAt(begin)) begin = g_utf8_next_char(begin);
    while (begin < end) {
        const char* last = g_utf8_find_prev_char(begin, end);
        // Stray bytes behind a space belong to no character; they stay.
        if (last == nullptr || g_utf8_next_char(last) != end || !isSpaceAt(last)) break;
        end = last;
    }
    return std::string(begin, end < begin ? begin : end);
}

bool isUTF8(std::string_view bytes) { return g_utf8_validate_len(bytes.data(), bytes.size(), nullptr) != FALSE; }

std::string cutAtCharacter(std::string_view text, std::size_t limit) {
    if (text.size() <= limit) return std::string(text);
    std::size_t end = limit;
    while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xc0) == 0x80) --end;
    return std::string(text.substr(0, end));
}

std::string caseFolded(std::string_view text) { return folded(text).get(); }

std::string withoutCaseAndDiacritics(std::string_view text) {
    const OwnedText parts(g_utf8_normalize(folded(text).get(), -1, G_NORMALIZE_NFD), g_free);
    std::string bare;
    for (const char* at = parts.get(); *at != '\0'; at = g_utf8_next_char(at))
        if (!isDiacritic(g_utf8_get_char(at))) bare.append(at, static_cast<std::size_t>(g_utf8_next_char(at) - at));
    return bare;
}

} // namespace morvelin
