// Finds out whether a line is a request that waits for an answer, and which id that answer must carry.
#pragma once

#include <optional>
#include <string_view>

namespace relay {

/// The id with which the line must be answered when nobody else can: the text of a JSON value, as it came. "null" when
/// the line cannot be read or its id is no plain value; nothing for notifications and replies, which are not answered.
/// Looks at the top level only; what lies deeper is skipped unread.
[[nodiscard]] std::optional<std::string_view> idToAnswer(std::string_view line);

} // namespace relay
