// Owners of what GLib and GIO allocate.
#pragma once

#include <memory>

#include <gio/gio.h>

namespace morvelin {

template <auto destroy>
struct GLibDeleter {
    void operator()(auto* owned) const { destroy(owned); }
};

using OwnedText = std::unique_ptr<char, GLibDeleter<g_free>>;
using OwnedError = std::unique_ptr<GError, GLibDeleter<g_error_free>>;
using OwnedKeyFile = std::unique_ptr<GKeyFile, GLibDeleter<g_key_file_unref>>;
template <class Object>
using OwnedObject = std::unique_ptr<Object, GLibDeleter<g_object_unref>>;

} // namespace morvelin
