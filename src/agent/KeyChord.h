// A key with its modifiers, as agents write it: "cmd+s", "escape", "shift-f5". A value.
#pragma once

#include <span>
#include <string>
#include <vector>

#include "agent/InputError.h"
#include "core/base/Result.h"
#include "platform/InputPosting.h"

namespace morvelin {

struct KeyChord {
    std::vector<Key> modifiers; ///< in the order in which they go down
    Key key = Key::Return;

    /// As what was pressed is told: the platform's own modifiers, then the key.
    [[nodiscard]] std::string name() const;

    bool operator==(const KeyChord&) const = default;
};

/// Modifiers may be written into the text or passed separately. `cmd` is the platform's shortcut modifier: Control here.
Result<KeyChord, InputError> parseKeyChord(const std::string& text, std::span<const std::string> modifiers);

} // namespace morvelin
