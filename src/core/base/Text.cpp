#include "core/base/Text.h"

#include <glib.h>

namespace morvelin {

namespace {

bool isSpaceAt(const char* at) {
    const gunichar c = g_utf8_get_char_validated(at, -1);
    // Next line and the zero-width space count as white space for names, though GLib's test leaves them out.
    return c == 0x85 || c == 0x200b || (c < 0x110000 && g_unichar_isspace(c));
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

std::string cutAtCharacter(std::string_view text, std::size_t limit) {
    if (text.size() <= limit) return std::string(text);
    std::size_t end = limit;
    while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xc0) == 0x80) --end;
    return std::string(text.substr(0, end));
}

} // namespace morvelin
