#include "agent/KeyChord.h"

#include <algorithm>
#include <array>
#include <optional>
#include <string_view>

#include "core/base/Text.h"

namespace morvelin {

namespace {

struct NamedKey {
    std::string_view name;
    Key key;
};

/// The first name of a key is the one that results tell.
constexpr auto kKeys = std::to_array<NamedKey>({
    {"return", Key::Return},
    {"enter", Key::Return},
    {"tab", Key::Tab},
    {"space", Key::Space},
    {"spacebar", Key::Space},
    {"delete", Key::Backspace},
    {"backspace", Key::Backspace},
    {"forwarddelete", Key::ForwardDelete},
    {"escape", Key::Escape},
    {"esc", Key::Escape},
    {"left", Key::Left},
    {"leftarrow", Key::Left},
    {"right", Key::Right},
    {"rightarrow", Key::Right},
    {"up", Key::Up},
    {"uparrow", Key::Up},
    {"down", Key::Down},
    {"downarrow", Key::Down},
    {"home", Key::Home},
    {"end", Key::End},
    {"pageup", Key::PageUp},
    {"pagedown", Key::PageDown},
    {"f1", Key::F1},
    {"f2", Key::F2},
    {"f3", Key::F3},
    {"f4", Key::F4},
    {"f5", Key::F5},
    {"f6", Key::F6},
    {"f7", Key::F7},
    {"f8", Key::F8},
    {"f9", Key::F9},
    {"f10", Key::F10},
    {"f11", Key::F11},
    {"f12", Key::F12},
    {"equal", Key::Equal},
    {"minus", Key::Minus},
    {"rightbracket", Key::RightBracket},
    {"leftbracket", Key::LeftBracket},
    {"quote", Key::Quote},
    {"semicolon", Key::Semicolon},
    {"backslash", Key::Backslash},
    {"comma", Key::Comma},
    {"slash", Key::Slash},
    {"period", Key::Period},
    {"grave", Key::Grave},
});

/// What no key here stands for, such as `fn`, changes nothing.
struct NamedModifier {
    std::string_view name;
    std::optional<Key> key;
};

constexpr auto kModifiers = std::to_array<NamedModifier>({
    {"ctrl", Key::Control},
    {"control", Key::Control},
    {"cmd", Key::Control},
    {"command", Key::Control},
    {"meta", Key::Super},
    {"alt", Key::Alt},
    {"option", Key::Alt},
    {"opt", Key::Alt},
    {"shift", Key::Shift},
    {"fn", std::nullopt},
    {"function", std::nullopt},
});

constexpr Key shifted(Key first, int by) { return static_cast<Key>(static_cast<int>(first) + by); }

std::optional<Key> keyNamed(std::string_view name) {
    if (name.size() == 1 && name[0] >= 'a' && name[0] <= 'z') return shifted(Key::A, name[0] - 'a');
    if (name.size() == 1 && name[0] >= '0' && name[0] <= '9') return shifted(Key::Digit0, name[0] - '0');
    const auto found = std::ranges::find(kKeys, name, &NamedKey::name);
    return found != kKeys.end() ? std::optional(found->key) : std::nullopt;
}

std::string nameOf(Key key) {
    if (key <= Key::Z) return {static_cast<char>('a' + static_cast<int>(key))};
    if (key <= Key::Digit9) return {static_cast<char>('0' + static_cast<int>(key) - static_cast<int>(Key::Digit0))};
    if (const auto found = std::ranges::find(kKeys, key, &NamedKey::key); found != kKeys.end())
        return std::string(found->name);
    const auto found = std::ranges::find(kModifiers, std::optional(key), &NamedModifier::key);
    return std::string(found->name);
}

const NamedModifier* modifierNamed(std::string_view name) {
    const auto found = std::ranges::find(kModifiers, name, &NamedModifier::name);
    return found != kModifiers.end() ? &*found : nullptr;
}

std::string lowerCased(std::string text) {
    for (char& c : text)
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    return text;
}

std::vector<std::string> split(const std::string& text, char separator) {
    std::vector<std::string> parts(1);
    for (const char c : text) {
        if (c == separator)
            parts.emplace_back();
        else
            parts.back() += c;
    }
    return parts;
}

/// "cmd-s" as well as "cmd+s"; a lone "-" stays a key.
std::vector<std::string> partsOf(const std::string& text) {
    std::vector<std::string> parts = split(text, '+');
    return parts.size() == 1 && text.size() > 1 ? split(text, '-') : parts;
}

/// Which modifiers are down, whatever their order in the text was.
class ModifierSet {
public:
    void add(const NamedModifier& modifier) {
        if (modifier.key) m_keys.push_back(*modifier.key);
    }
    [[nodiscard]] std::vector<Key> inOrder() const {
        std::vector<Key> ordered;
        for (const Key key : {Key::Control, Key::Super, Key::Alt, Key::Shift})
            if (std::ranges::find(m_keys, key) != m_keys.end()) ordered.push_back(key);
        return ordered;
    }

private:
    std::vector<Key> m_keys;
};

} // namespace

Result<KeyChord, InputError> parseKeyChord(const std::string& text, std::span<const std::string> modifiers) {
    const auto unknownKey = [&text] { return failure(InputError(InputError::UnknownKey{text})); };
    ModifierSet held;
    std::optional<std::string> name;
    for (const std::string& part : partsOf(lowerCased(trimmed(text)))) {
        if (const NamedModifier* modifier = modifierNamed(part)) {
            held.add(*modifier);
            continue;
        }
        if (name) return unknownKey();
        name = part;
    }
    for (const std::string& each : modifiers) {
        const NamedModifier* modifier = modifierNamed(lowerCased(each));
        if (modifier == nullptr) return failure(InputError(InputError::UnknownModifier{each}));
        held.add(*modifier);
    }
    const auto key = name ? keyNamed(*name) : std::nullopt;
    if (!key) return unknownKey();
    return KeyChord{held.inOrder(), *key};
}

std::string KeyChord::name() const {
    std::string name;
    for (const Key modifier : modifiers) name += nameOf(modifier) + "+";
    return name + nameOf(key);
}

} // namespace morvelin
