#include "core/base/Base64.h"

#include <glib.h>

namespace morvelin {

std::string base64(std::string_view bytes) {
    // The steps write into our own text: an image has megabytes, and the one-call form would copy them once more.
    std::string text((bytes.size() / 3 + 1) * 4 + 4, '\0');
    gint state = 0;
    gint saved = 0;
    std::size_t length = g_base64_encode_step(reinterpret_cast<const guchar*>(bytes.data()), bytes.size(), FALSE,
                                              text.data(), &state, &saved);
    length += g_base64_encode_close(FALSE, text.data() + length, &state, &saved);
    text.resize(length);
    return text;
}

std::string bytesOfBase64(std::string_view text) {
    std::string bytes(text.size() / 4 * 3 + 3, '\0');
    gint state = 0;
    guint saved = 0;
    bytes.resize(
        g_base64_decode_step(text.data(), text.size(), reinterpret_cast<guchar*>(bytes.data()), &state, &saved));
    return bytes;
}

} // namespace morvelin
