// Cuts what arrives from an agent into lines; owned by the connection, on its thread.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace morvelin {

/// Lines end with a line feed, which is not part of them; empty ones are skipped. Holds at most a line of the longest
/// length and what one `append` brings.
class LineCutter {
public:
    /// `limit` is the longest line in bytes.
    explicit LineCutter(std::size_t limit) : m_limit(limit) {}

    void append(std::string_view bytes);
    /// The next whole line. Nothing when more bytes are needed, and for good once `isOverLimit`.
    std::optional<std::string> next();
    /// Whether a line, or the beginning of one, was longer than the limit.
    [[nodiscard]] bool isOverLimit() const { return m_isOverLimit; }

private:
    std::size_t m_limit;
    std::string m_buffer;
    std::size_t m_begin = 0;   ///< of the line that is being looked for
    std::size_t m_scanned = 0; ///< no line feed lies between `m_begin` and here
    bool m_isOverLimit = false;
};

} // namespace morvelin
