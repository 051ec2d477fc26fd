#include "agent/ClientConfig.h"

#include <algorithm>
#include <vector>

#include <fmt/format.h>

#include "core/base/JSON.h"
#include "core/base/Text.h"

namespace morvelin {

namespace {

using Lines = std::vector<std::string_view>; // each with its line feed

Lines linesOf(std::string_view text) {
    Lines lines;
    while (!text.empty()) {
        const std::size_t length = std::min(text.find('\n'), text.size() - 1) + 1;
        lines.push_back(text.substr(0, length));
        text.remove_prefix(length);
    }
    return lines;
}

std::string_view withoutBlanks(std::string_view line) {
    constexpr const char* kBlanks = " \t\r\n";
    const std::size_t begin = line.find_first_not_of(kBlanks);
    if (begin == std::string_view::npos) return {};
    return line.substr(begin, line.find_last_not_of(kBlanks) + 1 - begin);
}

/// Takes a text in quotes of either kind from the front of `rest`.
std::optional<std::string> takeQuoted(std::string_view& rest) {
    const char quote = rest.front();
    std::size_t end = 1;
    while (end < rest.size() && rest[end] != quote) end += quote == '"' && rest[end] == '\\' ? 2 : 1;
    if (end >= rest.size()) return std::nullopt;

    const std::string_view quoted = rest.substr(0, end + 1);
    rest.remove_prefix(end + 1);
    if (quote == '\'') return std::string(quoted.substr(1, end - 1));
    // The escapes of a text in double quotes are those of JSON.
    const auto text = decode<std::string>(quoted);
    return text ? std::optional(*text) : std::nullopt;
}

/// Takes one part of a dotted key from the front of `rest`.
std::optional<std::string> takeKey(std::string_view& rest) {
    if (rest.starts_with('"') || rest.starts_with('\'')) return takeQuoted(rest);
    const std::size_t end = std::min(rest.find_first_of(" \t.]="), rest.size());
    const std::string_view key = rest.substr(0, end);
    rest.remove_prefix(end);
    return key.empty() ? std::nullopt : std::optional(std::string(key));
}

/// The parts of a table's header, `[a."b"]`, or none where the line is something else.
std::vector<std::string> tableKey(std::string_view line) {
    std::string_view rest = withoutBlanks(line);
    if (!rest.starts_with('[') || rest.starts_with("[[")) return {};
    std::vector<std::string> parts;
    do {
        rest = withoutBlanks(rest.substr(1));
        auto part = takeKey(rest);
        if (!part) return {};
        parts.push_back(std::move(*part));
        rest = withoutBlanks(rest);
    } while (rest.starts_with('.'));
    return rest.starts_with(']') ? parts : std::vector<std::string>{};
}

enum class Heading {
    None,
    Server,     ///< the table of this server
    ServerPart, ///< a table inside it, such as its `env`
    Other,      ///< another table, or one of an array of tables
};

Heading headingOf(std::string_view line) {
    if (!withoutBlanks(line).starts_with('[')) return Heading::None;
    const auto key = tableKey(line);
    if (key.size() < 2 || key[0] != "mcp_servers" || key[1] != kMCPServerKey) return Heading::Other;
    return key.size() == 2 ? Heading::Server : Heading::ServerPart;
}

/// Where the section that begins at `heading` ends: at the next heading, or at the comment right above that one.
std::size_t sectionEnd(const Lines& lines, std::size_t heading) {
    std::size_t next = heading + 1;
    while (next < lines.size() && headingOf(lines[next]) == Heading::None) ++next;
    if (next == lines.size()) return next;
    while (next > heading + 1 && withoutBlanks(lines[next - 1]).starts_with('#')) --next;
    return next;
}

/// The text without the sections whose heading is one of `unwanted`.
std::string withoutSections(const Lines& lines, std::initializer_list<Heading> unwanted) {
    std::string kept;
    for (std::size_t i = 0; i < lines.size();) {
        if (std::ranges::find(unwanted, headingOf(lines[i])) != unwanted.end())
            i = sectionEnd(lines, i);
        else
            kept += lines[i++];
    }
    return kept;
}

/// The value of a line `command = "…"`.
std::optional<std::string> commandOf(std::string_view line) {
    std::string_view rest = withoutBlanks(line);
    if (takeKey(rest) != "command") return std::nullopt;
    rest = withoutBlanks(rest);
    if (!rest.starts_with('=')) return std::nullopt;
    rest = withoutBlanks(rest.substr(1));
    return rest.starts_with('"') || rest.starts_with('\'') ? takeQuoted(rest) : std::nullopt;
}

/// One blank line parts the new section from what stands before it.
std::string_view gapAfter(std::string_view text) {
    if (text.empty() || text.ends_with("\n\n") || text.ends_with("\n\r\n")) return "";
    return text.ends_with('\n') ? "\n" : "\n\n";
}

} // namespace

std::optional<std::string> TOMLClientConfig::command(std::string_view text) const {
    const Lines lines = linesOf(text);
    bool isInside = false;
    for (const std::string_view line : lines) {
        const Heading heading = headingOf(line);
        if (heading != Heading::None) isInside = heading == Heading::Server;
        if (!isInside || heading != Heading::None) continue;
        if (auto command = commandOf(line)) return command;
    }
    return std::nullopt;
}

ClientConfig::Edited TOMLClientConfig::withServer(const std::optional<std::string>& text,
                                                  const std::string& command) const {
    const std::string before = text.value_or("");
    if (!isUTF8(before)) return failure(MalformedConfig{});
    const std::string kept = withoutSections(linesOf(before), {Heading::Server});
    return fmt::format("{}{}[mcp_servers.{}]\ncommand = {}\n", kept, gapAfter(kept), kMCPServerKey,
                       writeJSON(JSONValue(command), JSONStyle::Compact));
}

ClientConfig::Edited TOMLClientConfig::withoutServer(const std::string& text) const {
    if (!isUTF8(text)) return failure(MalformedConfig{});
    // A part that stayed would be a server without a command, over which the client stumbles.
    std::string kept = withoutSections(linesOf(text), {Heading::Server, Heading::ServerPart});
    if (kept.size() == text.size()) return std::nullopt;
    return kept;
}

} // namespace morvelin
