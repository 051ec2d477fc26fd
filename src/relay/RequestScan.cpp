#include "relay/RequestScan.h"

#include <algorithm>
#include <charconv>
#include <system_error>

namespace relay {

namespace {

constexpr std::string_view kNull = "null";
constexpr auto kNotFound = std::string_view::npos;

bool isDigit(char c) { return c >= '0' && c <= '9'; }

/// How many bytes of a well-formed UTF-8 character begin the text; 0 when none does.
std::size_t characterLength(std::string_view text) {
    const auto byte = [&](std::size_t at) -> unsigned { return static_cast<unsigned char>(text[at]); };
    const unsigned first = byte(0);
    if (first < 0x80) return 1;
    const std::size_t length = first >= 0xf0 ? 4 : first >= 0xe0 ? 3 : 2;
    if (first < 0xc2 || first > 0xf4 || text.size() < length) return 0;
    for (std::size_t i = 1; i < length; ++i)
        if (byte(i) < 0x80 || byte(i) > 0xbf) return 0;
    const bool isOverlong = (first == 0xe0 && byte(1) < 0xa0) || (first == 0xf0 && byte(1) < 0x90);
    const bool isBeyond = (first == 0xed && byte(1) > 0x9f) || (first == 0xf4 && byte(1) > 0x8f);
    return isOverlong || isBeyond ? 0 : length;
}

/// The unit that an escape of the form \uXXXX stands for; nothing when none begins the text.
std::optional<unsigned> escapedUnit(std::string_view text) {
    if (text.size() < 6 || !text.starts_with("\\u")) return std::nullopt;
    unsigned unit = 0;
    const auto [end, error] = std::from_chars(text.data() + 2, text.data() + 6, unit, 16);
    if (error != std::errc() || end != text.data() + 6) return std::nullopt;
    return unit;
}

/// The length of the escape that begins with a backslash, of both halves where a character takes two; 0 when it is none.
std::size_t escapeLength(std::string_view text) {
    if (text.size() < 2) return 0;
    if (text[1] != 'u') return std::string_view("\"\\/bfnrt").find(text[1]) == kNotFound ? 0 : 2;
    const auto unit = escapedUnit(text);
    if (!unit || (*unit >= 0xdc00 && *unit <= 0xdfff)) return 0;
    if (*unit < 0xd800 || *unit > 0xdfff) return 6;
    const auto second = escapedUnit(text.substr(6));
    return second && *second >= 0xdc00 && *second <= 0xdfff ? 12 : 0;
}

/// Reads a line from its beginning; each step takes what it reads away, and gives nothing when it isn't there.
class Scanner {
public:
    explicit Scanner(std::string_view line) : m_rest(line) {}

    void skipSpace() {
        const std::size_t next = m_rest.find_first_not_of(" \t\r");
        m_rest.remove_prefix(next == kNotFound ? m_rest.size() : next);
    }
    bool take(char c) {
        skipSpace();
        if (!m_rest.starts_with(c)) return false;
        m_rest.remove_prefix(1);
        return true;
    }
    bool isAtEnd() {
        skipSpace();
        return m_rest.empty();
    }

    /// A text with its quotes.
    std::optional<std::string_view> text() {
        skipSpace();
        if (!m_rest.starts_with('"')) return std::nullopt;
        for (std::size_t at = 1; at < m_rest.size();) {
            if (m_rest[at] == '"') return taken(at + 1);
            const std::string_view here = m_rest.substr(at);
            const bool isControl = static_cast<unsigned char>(here[0]) < 0x20;
            const std::size_t length = isControl ? 0 : here[0] == '\\' ? escapeLength(here) : characterLength(here);
            if (length == 0) return std::nullopt;
            at += length;
        }
        return std::nullopt;
    }

    /// A number or one of the three words.
    std::optional<std::string_view> word() {
        skipSpace();
        const std::size_t end = std::min(m_rest.find_first_of(" \t\r,]}"), m_rest.size());
        const std::string_view token = m_rest.substr(0, end);
        if (token != "true" && token != "false" && token != kNull && !isNumber(token)) return std::nullopt;
        return taken(end);
    }

    /// A list or an object with all it holds, of which only the texts and the brackets are looked at.
    bool skipNested() {
        std::size_t depth = 0;
        while (!isAtEnd()) {
            const char c = m_rest.front();
            if (c == '"') {
                if (!text()) return false;
                continue;
            }
            m_rest.remove_prefix(1);
            if (c == '{' || c == '[') ++depth;
            if ((c == '}' || c == ']') && --depth == 0) return true;
        }
        return false;
    }
    [[nodiscard]] bool isAtNested() {
        skipSpace();
        return m_rest.starts_with('{') || m_rest.starts_with('[');
    }

private:
    std::string_view taken(std::size_t length) {
        const std::string_view part = m_rest.substr(0, length);
        m_rest.remove_prefix(length);
        return part;
    }

    static std::size_t digits(std::string_view& text) {
        std::size_t count = 0;
        while (count < text.size() && isDigit(text[count])) ++count;
        text.remove_prefix(count);
        return count;
    }

    static bool isNumber(std::string_view text) {
        if (text.starts_with('-')) text.remove_prefix(1);
        const bool hasLeadingZero = text.starts_with('0');
        const std::size_t whole = digits(text);
        if (whole == 0 || (hasLeadingZero && whole > 1)) return false;
        if (text.starts_with('.')) {
            text.remove_prefix(1);
            if (digits(text) == 0) return false;
        }
        if (text.starts_with('e') || text.starts_with('E')) {
            text.remove_prefix(1);
            if (text.starts_with('+') || text.starts_with('-')) text.remove_prefix(1);
            if (digits(text) == 0) return false;
        }
        return text.empty();
    }

    std::string_view m_rest;
};

/// What a message says of itself at its top level.
struct Message {
    std::string_view id = kNull; ///< "null" as well when there is none
    bool hasUnreadableId = false;
    bool hasMethod = false;
};

bool readMember(Scanner& scanner, Message& message) {
    const auto key = scanner.text();
    if (!key || !scanner.take(':')) return false;
    const bool isId = *key == R"("id")";
    if (isId) message.hasUnreadableId = scanner.isAtNested();
    if (scanner.isAtNested()) return scanner.skipNested();
    auto value = scanner.text();
    const bool isText = value.has_value();
    if (!isText) value = scanner.word();
    if (!value) return false;
    if (isId) message.id = *value;
    if (*key == R"("method")") message.hasMethod = isText;
    return true;
}

std::optional<Message> readMessage(std::string_view line) {
    Scanner scanner(line);
    Message message;
    if (!scanner.take('{')) return std::nullopt;
    if (!scanner.take('}')) {
        do {
            if (!readMember(scanner, message)) return std::nullopt;
        } while (scanner.take(','));
        if (!scanner.take('}')) return std::nullopt;
    }
    if (!scanner.isAtEnd()) return std::nullopt;
    return message;
}

} // namespace

std::optional<std::string_view> idToAnswer(std::string_view line) {
    const auto message = readMessage(line);
    if (!message) return kNull;
    if (!message->hasMethod) return std::nullopt;
    if (message->hasUnreadableId) return kNull;
    if (message->id == kNull) return std::nullopt;
    return message->id;
}

} // namespace relay
