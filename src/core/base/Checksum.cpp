#include "core/base/Checksum.h"

#include <memory>

#include <glib.h>

namespace morvelin {

SHA256Digest sha256(std::string_view text) {
    const std::unique_ptr<GChecksum, decltype(&g_checksum_free)> checksum(g_checksum_new(G_CHECKSUM_SHA256),
                                                                          g_checksum_free);
    g_checksum_update(checksum.get(), reinterpret_cast<const guchar*>(text.data()), static_cast<gssize>(text.size()));
    SHA256Digest digest{};
    gsize length = digest.size();
    g_checksum_get_digest(checksum.get(), digest.data(), &length);
    return digest;
}

} // namespace morvelin
