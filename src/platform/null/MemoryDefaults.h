// Settings that live as long as the object: for tests, and for runs that must leave nothing behind.
#pragma once

#include <map>
#include <string>
#include <variant>

#include "platform/Defaults.h"

namespace morvelin {

/// Nothing here fails. The listener is called before a writing operation returns.
class MemoryDefaults final : public Defaults {
public:
    Result<void, std::string> change(const DefaultsKey<Texts>& key, std::function<Texts(Texts)> edit) override;
    void onChange(std::function<void()> listener) override { m_listener = std::move(listener); }

    /// Forgets everything, as if no key had ever been written.
    void clear();

private:
    using Value = std::variant<bool, std::int64_t, std::string, Texts>;

    [[nodiscard]] std::optional<bool> flag(const char* key) const override { return find<bool>(key); }
    [[nodiscard]] std::optional<std::int64_t> integer(const char* key) const override {
        return find<std::int64_t>(key);
    }
    [[nodiscard]] std::optional<std::string> text(const char* key) const override { return find<std::string>(key); }
    [[nodiscard]] std::optional<Texts> texts(const char* key) const override { return find<Texts>(key); }
    Result<void, std::string> setFlag(const char* key, bool value) override { return put(key, value); }
    Result<void, std::string> setInteger(const char* key, std::int64_t value) override { return put(key, value); }
    Result<void, std::string> setText(const char* key, const std::string& value) override { return put(key, value); }

    template <class T>
    [[nodiscard]] std::optional<T> find(const char* key) const {
        const auto found = m_values.find(key);
        if (found == m_values.end()) return std::nullopt;
        const T* value = std::get_if<T>(&found->second);
        return value ? std::optional<T>(*value) : std::nullopt;
    }
    Result<void, std::string> put(const char* key, Value value);

    std::map<std::string, Value> m_values;
    std::function<void()> m_listener;
};

} // namespace morvelin
