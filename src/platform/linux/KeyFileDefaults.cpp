#include "platform/linux/KeyFileDefaults.h"

#include <vector>

#include "platform/linux/KeyFile.h"

namespace morvelin {

namespace fs = std::filesystem;

namespace {

constexpr const char* kGroup = "morvelin";

/// A value as GLib gives it, unless it couldn't be read as what was asked for.
template <class Value, class Read>
std::optional<Value> valueOf(Read&& read) {
    GError* error = nullptr;
    Value value = static_cast<Value>(read(&error));
    if (!error) return value;
    g_error_free(error);
    return std::nullopt;
}

/// A key file holds UTF-8 alone; other bytes, and the one that ends a C text, become replacement characters.
std::string storable(const std::string& text) {
    return OwnedText(g_utf8_make_valid(text.data(), static_cast<gssize>(text.size()))).get();
}

Defaults::Texts readTexts(GKeyFile* file, const char* key) {
    gsize count = 0;
    char** list = g_key_file_get_string_list(file, kGroup, key, &count, nullptr);
    Defaults::Texts texts(list, list + count);
    g_strfreev(list);
    return texts;
}

void writeTexts(GKeyFile* file, const char* key, const Defaults::Texts& texts) {
    Defaults::Texts valid;
    for (const std::string& text : texts) valid.push_back(storable(text));
    std::vector<const char*> list;
    for (const std::string& text : valid) list.push_back(text.c_str());
    g_key_file_set_string_list(file, kGroup, key, list.data(), list.size());
}

} // namespace

/// Watches the file, also while it doesn't exist yet.
class KeyFileDefaults::Monitor {
public:
    Monitor(const fs::path& path, std::function<void()> listener)
        : m_path(path),
          m_listener(std::move(listener)),
          m_seen(FileStamp::of(path)) {
        const OwnedObject<GFile> file(g_file_new_for_path(path.c_str()));
        m_monitor.reset(g_file_monitor_file(file.get(), G_FILE_MONITOR_NONE, nullptr, nullptr));
        if (m_monitor) g_signal_connect(m_monitor.get(), "changed", G_CALLBACK(changed), this);
    }
    Monitor(const Monitor&) = delete;
    Monitor& operator=(const Monitor&) = delete;
    ~Monitor() {
        if (!m_monitor) return;
        g_signal_handlers_disconnect_by_data(m_monitor.get(), this);
        g_file_monitor_cancel(m_monitor.get());
    }

    [[nodiscard]] bool isWatching() const { return m_monitor != nullptr; }

private:
    static void changed(GFileMonitor*, GFile*, GFile*, GFileMonitorEvent, gpointer self) {
        static_cast<Monitor*>(self)->look();
    }

    /// One writing makes several events, but the listener hears of it once.
    void look() {
        const FileStamp now = FileStamp::of(m_path);
        if (now == m_seen) return;
        m_seen = now;
        const auto listener = m_listener; // the listener may end the listening, and this object with it
        listener();
    }

    fs::path m_path;
    std::function<void()> m_listener;
    FileStamp m_seen;
    OwnedObject<GFileMonitor> m_monitor;
};

KeyFileDefaults::KeyFileDefaults(const fs::path& configFolder, Log log)
    : m_file(std::make_unique<KeyFile>(configFolder / "morvelin" / "defaults.conf", std::move(log))) {}

KeyFileDefaults::~KeyFileDefaults() = default;

void KeyFileDefaults::onChange(std::function<void()> listener) {
    m_monitor.reset();
    if (!listener) return;
    // The system's watch is on the folder, so there has to be one.
    (void)createFolder(m_file->path().parent_path());
    m_monitor = std::make_unique<Monitor>(m_file->path(), std::move(listener));
    if (!m_monitor->isWatching())
        m_file->log("[Morvelin] Changes of the settings go unnoticed: no file can be watched.");
}

std::optional<bool> KeyFileDefaults::flag(const char* key) const {
    return valueOf<bool>([&](GError** error) { return g_key_file_get_boolean(m_file->content(), kGroup, key, error); });
}

std::optional<std::int64_t> KeyFileDefaults::integer(const char* key) const {
    return valueOf<std::int64_t>(
        [&](GError** error) { return g_key_file_get_int64(m_file->content(), kGroup, key, error); });
}

std::optional<std::string> KeyFileDefaults::text(const char* key) const {
    const OwnedText text(g_key_file_get_string(m_file->content(), kGroup, key, nullptr));
    return text ? std::optional<std::string>(text.get()) : std::nullopt;
}

std::optional<Defaults::Texts> KeyFileDefaults::texts(const char* key) const {
    GKeyFile* file = m_file->content();
    if (!g_key_file_has_key(file, kGroup, key, nullptr)) return std::nullopt;
    return readTexts(file, key);
}

Result<void, std::string> KeyFileDefaults::setFlag(const char* key, bool value) {
    return m_file->edit([&](GKeyFile* file) { g_key_file_set_boolean(file, kGroup, key, value); });
}

Result<void, std::string> KeyFileDefaults::setInteger(const char* key, std::int64_t value) {
    return m_file->edit([&](GKeyFile* file) { g_key_file_set_int64(file, kGroup, key, value); });
}

Result<void, std::string> KeyFileDefaults::setText(const char* key, const std::string& value) {
    return m_file->edit([&](GKeyFile* file) { g_key_file_set_string(file, kGroup, key, storable(value).c_str()); });
}

Result<void, std::string> KeyFileDefaults::change(const DefaultsKey<Texts>& key, std::function<Texts(Texts)> edit) {
    return m_file->edit([&](GKeyFile* file) {
        const bool isSet = g_key_file_has_key(file, kGroup, key.name, nullptr);
        writeTexts(file, key.name, edit(isSet ? readTexts(file, key.name) : key.unset));
    });
}

} // namespace morvelin
