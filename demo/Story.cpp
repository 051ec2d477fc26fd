#include "Story.h"

#include <charconv>
#include <cstdint>
#include <fmt/core.h>

namespace morvelin {
namespace {

/// Takes one line apart. The first thing that is wrong sticks in `problem`, so that the grammar below reads straight on.
class LineReader {
public:
    explicit LineReader(std::string_view line) : m_rest(line) { skipBlanks(); }

    bool atEnd() const { return m_rest.empty() || m_rest.front() == '#'; }
    const std::string& problem() const { return m_problem; }

    std::string_view word() {
        const size_t end = std::min(m_rest.find_first_of(" \t"), m_rest.size());
        const std::string_view found = m_rest.substr(0, end);
        advance(end);
        return found;
    }

    double number(std::string_view meaning) {
        const std::string_view text = word();
        double value = 0;
        const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
        if (error != std::errc{} || end != text.data() + text.size() || text.empty())
            fail(fmt::format("expected {}, found \"{}\"", meaning, text));
        return value;
    }

    Spot spot() {
        const double x = number("a horizontal position");
        return {x, number("a vertical position")};
    }

    /// The number after `keyword`, or `otherwise` where the line ends before it.
    double option(std::string_view keyword, double otherwise) {
        if (atEnd()) return otherwise;
        if (const std::string_view found = word(); found != keyword) {
            fail(fmt::format("expected \"{}\", found \"{}\"", keyword, found));
            return otherwise;
        }
        const double value = number("a number");
        if (value < 0) fail(fmt::format("\"{}\" cannot be negative", keyword));
        return value;
    }

    std::string quoted() {
        std::string text;
        if (m_rest.empty() || m_rest.front() != '"') return fail("expected a text in quotes"), text;
        for (size_t i = 1; i < m_rest.size(); ++i) {
            if (m_rest[i] == '"') {
                advance(i + 1);
                return text;
            }
            if (m_rest[i] != '\\' || i + 1 == m_rest.size()) {
                text += m_rest[i];
                continue;
            }
            ++i;
            text += m_rest[i] == 'n' ? '\n' : m_rest[i];
        }
        return fail("the text has no closing quote"), text;
    }

    Button button() {
        if (atEnd()) return Button::left;
        const std::string_view name = word();
        if (name == "left") return Button::left;
        if (name == "middle") return Button::middle;
        if (name == "right") return Button::right;
        fail(fmt::format("\"{}\" is no button", name));
        return Button::left;
    }

    void fail(std::string why) {
        if (m_problem.empty()) m_problem = std::move(why);
    }

private:
    void skipBlanks() { m_rest.remove_prefix(std::min(m_rest.find_first_not_of(" \t\r"), m_rest.size())); }
    void advance(size_t count) {
        m_rest.remove_prefix(count);
        skipBlanks();
    }

    std::string_view m_rest;
    std::string m_problem;
};

/// The characters of UTF-8 text; a byte that belongs to no character is left out.
std::u32string decodeUtf8(std::string_view text) {
    std::u32string characters;
    for (size_t i = 0; i < text.size();) {
        const auto lead = static_cast<uint8_t>(text[i]);
        const size_t length = lead < 0x80 ? 1 : lead >> 5 == 0x6 ? 2 : lead >> 4 == 0xe ? 3 : lead >> 3 == 0x1e ? 4 : 0;
        if (length == 0 || i + length > text.size()) {
            ++i;
            continue;
        }
        char32_t character = length == 1 ? lead : lead & (0x7fU >> length);
        for (size_t k = 1; k < length; ++k) character = character << 6 | (static_cast<uint8_t>(text[i + k]) & 0x3fU);
        characters += character;
        i += length;
    }
    return characters;
}

std::vector<std::string> splitChord(std::string_view chord) {
    std::vector<std::string> names;
    while (true) {
        // A plus sign at the very end is the key itself, as in "ctrl++".
        const size_t plus = chord.size() > 1 ? chord.find('+') : std::string_view::npos;
        if (plus == std::string_view::npos || plus + 1 == chord.size()) break;
        names.emplace_back(chord.substr(0, plus));
        chord.remove_prefix(plus + 1);
    }
    names.emplace_back(chord);
    return names;
}

StoryStep parseLine(LineReader& line) {
    const std::string_view command = line.word();
    if (command == "await") {
        std::string title = line.quoted();
        return Step::Await{std::move(title), line.option("within", 20)};
    }
    if (command == "move") {
        const Spot to = line.spot();
        return Step::Move{to, line.option("over", 0.5)};
    }
    if (command == "drag") {
        const Spot to = line.spot();
        return Step::Drag{to, line.option("over", 0.5)};
    }
    if (command == "circle") {
        const Spot centre = line.spot();
        const Spot radii = line.spot();
        const double turns = line.option("turns", 1);
        if (radii.x <= 0 || radii.y <= 0) line.fail("a circle's radii must be above 0");
        return Step::Circle{centre, radii, turns, line.option("over", 1)};
    }
    if (command == "scroll") {
        const int notches = static_cast<int>(line.number("a number of notches"));
        return Step::Scroll{notches, line.option("over", 0.5)};
    }
    if (command == "type") {
        const std::string text = line.quoted();
        return Step::Type{decodeUtf8(text), line.option("over", 0)};
    }
    if (command == "click") return Step::Click{line.button()};
    if (command == "doubleclick") return Step::DoubleClick{line.button()};
    if (command == "press") return Step::Press{line.button()};
    if (command == "release") return Step::Release{line.button()};
    if (command == "key") return Step::Key{splitChord(line.word())};
    if (command == "wait") return Step::Wait{line.number("a number of seconds")};
    line.fail(fmt::format("\"{}\" is no command", command));
    return Step::Wait{};
}

} // namespace

std::expected<std::vector<StoryStep>, std::string> parseStory(std::string_view script) {
    std::vector<StoryStep> steps;
    for (int number = 1; !script.empty(); ++number) {
        const size_t end = std::min(script.find('\n'), script.size());
        LineReader line(script.substr(0, end));
        script.remove_prefix(std::min(end + 1, script.size()));
        if (line.atEnd()) continue;

        steps.push_back(parseLine(line));
        if (!line.atEnd()) line.fail("there is more on the line than the command takes");
        if (!line.problem().empty()) return std::unexpected(fmt::format("line {}: {}", number, line.problem()));
    }
    return steps;
}

} // namespace morvelin
