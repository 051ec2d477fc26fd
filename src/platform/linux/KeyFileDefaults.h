// The user's settings as a key file in the config folder, which all running copies of the program share.
#pragma once

#include <filesystem>
#include <memory>

#include "core/base/Log.h"
#include "platform/Defaults.h"

namespace morvelin {

class KeyFile;

/// Keeps the settings in `<config folder>/morvelin/defaults.conf`, which a person may edit. Values have no types there:
/// a value reads as unset where it can't be understood as the type that is asked for. A damaged file is set aside as
/// `defaults.conf.damaged`. The listener is called from GLib's default main context, a moment after a change.
class KeyFileDefaults final : public Defaults {
public:
    KeyFileDefaults(const std::filesystem::path& configFolder, Log log);
    ~KeyFileDefaults() override;

    Result<void, std::string> change(const DefaultsKey<Texts>& key, std::function<Texts(Texts)> edit) override;
    void onChange(std::function<void()> listener) override;

private:
    class Monitor;

    [[nodiscard]] std::optional<bool> flag(const char* key) const override;
    [[nodiscard]] std::optional<std::int64_t> integer(const char* key) const override;
    [[nodiscard]] std::optional<std::string> text(const char* key) const override;
    [[nodiscard]] std::optional<Texts> texts(const char* key) const override;
    Result<void, std::string> setFlag(const char* key, bool value) override;
    Result<void, std::string> setInteger(const char* key, std::int64_t value) override;
    Result<void, std::string> setText(const char* key, const std::string& value) override;

    std::unique_ptr<KeyFile> m_file;
    std::unique_ptr<Monitor> m_monitor; ///< only while somebody listens
};

} // namespace morvelin
