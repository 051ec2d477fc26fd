// The user's settings: plain keys with plain values, read where they are used.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "core/base/Result.h"

namespace morvelin {

/// A setting's name, its type, and what it reads as before it was ever written.
template <class Value>
struct DefaultsKey {
    const char* name;
    Value unset{};
};

/// A text's key can be a constant whatever the length of what it reads as.
template <>
struct DefaultsKey<std::string> {
    const char* name;
    const char* unset = "";
};

/// A per-user key-value store, shared by all running copies of the program. Confined to the main thread. Reading never
/// fails: a value of another type reads as unset. Every read sees what other processes have written.
class Defaults {
public:
    using Texts = std::vector<std::string>;

    virtual ~Defaults() = default;

    [[nodiscard]] bool get(const DefaultsKey<bool>& key) const { return flag(key.name).value_or(key.unset); }
    [[nodiscard]] std::int64_t get(const DefaultsKey<std::int64_t>& key) const {
        return integer(key.name).value_or(key.unset);
    }
    [[nodiscard]] std::string get(const DefaultsKey<std::string>& key) const {
        return text(key.name).value_or(key.unset);
    }
    [[nodiscard]] Texts get(const DefaultsKey<Texts>& key) const { return texts(key.name).value_or(key.unset); }

    // Writing keeps what other processes have written meanwhile; the error is one sentence.
    Result<void, std::string> set(const DefaultsKey<bool>& key, bool value) { return setFlag(key.name, value); }
    Result<void, std::string> set(const DefaultsKey<std::int64_t>& key, std::int64_t value) {
        return setInteger(key.name, value);
    }
    Result<void, std::string> set(const DefaultsKey<std::string>& key, const std::string& value) {
        return setText(key.name, value);
    }
    /// Changes a list as one step: no other process writes between the reading and the writing.
    virtual Result<void, std::string> change(const DefaultsKey<Texts>& key, std::function<Texts(Texts)> edit) = 0;

    /// Called on the main thread after the store has changed, also by another process. One listener at a time.
    virtual void onChange(std::function<void()> listener) = 0;

private:
    [[nodiscard]] virtual std::optional<bool> flag(const char* key) const = 0;
    [[nodiscard]] virtual std::optional<std::int64_t> integer(const char* key) const = 0;
    [[nodiscard]] virtual std::optional<std::string> text(const char* key) const = 0;
    [[nodiscard]] virtual std::optional<Texts> texts(const char* key) const = 0;
    virtual Result<void, std::string> setFlag(const char* key, bool value) = 0;
    virtual Result<void, std::string> setInteger(const char* key, std::int64_t value) = 0;
    virtual Result<void, std::string> setText(const char* key, const std::string& value) = 0;
};

} // namespace morvelin
