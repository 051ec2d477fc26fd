#include "agent/ToolArguments.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <numeric>
#include <optional>
#include <string_view>

#include <fmt/format.h>
#include <fmt/ranges.h>

namespace morvelin {

namespace {

using Value = Result<JSONValue, std::string>;

std::optional<double> parseNumber(std::string_view text) {
    double number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || end != text.data() + text.size() || !std::isfinite(number)) return std::nullopt;
    return number;
}

Value numberFrom(std::string_view text) {
    if (const auto number = parseNumber(text)) return JSONValue(*number);
    return failure(fmt::format("“{}” is not a number", text));
}

Value integerFrom(std::string_view text) {
    std::int64_t whole = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), whole);
    if (error == std::errc() && end == text.data() + text.size()) return JSONValue(whole);
    return failure(fmt::format("“{}” is not a whole number", text));
}

Value booleanFrom(std::string_view text) {
    if (text == "true") return JSONValue(true);
    if (text == "false") return JSONValue(false);
    return failure(fmt::format("“{}” is neither true nor false", text));
}

/// What a record has to look like, for example {"x":…,"y":…}.
std::string recordForm(const JSONValue& schema) {
    std::vector<std::string> members;
    for (const auto& name : schema.at("required")) members.push_back(fmt::format("\"{}\":…", name.get<std::string>()));
    return fmt::format("{{{}}}", fmt::join(members, ","));
}

Value recordFrom(std::string_view text, const JSONValue& schema) {
    auto parsed = parseJSON(text);
    if (parsed && parsed->is_object()) return std::move(*parsed);
    return failure(fmt::format("“{}” is not a JSON object like {}", text, recordForm(schema)));
}

Value listFrom(std::string_view text) {
    if (text.starts_with('[')) {
        auto parsed = parseJSON(text);
        if (parsed && parsed->is_array()) return std::move(*parsed);
        return failure(fmt::format("“{}” is not a JSON list, nor texts with commas between them", text));
    }
    JSONValue list = JSONValue::array();
    while (!text.empty()) {
        const std::size_t comma = std::min(text.find(','), text.size());
        list.push_back(text.substr(0, comma));
        text.remove_prefix(std::min(comma + 1, text.size()));
    }
    return list;
}

Value valueFrom(std::string_view text, const JSONValue& schema) {
    const auto& type = schema.at("type").get_ref<const std::string&>();
    if (type == "number") return numberFrom(text);
    if (type == "integer") return integerFrom(text);
    if (type == "boolean") return booleanFrom(text);
    if (type == "object") return recordFrom(text, schema);
    if (type == "array") return listFrom(text);
    return JSONValue(text);
}

/// How many letters must be typed, left out or changed to make one word the other.
std::size_t editDistance(std::string_view from, std::string_view to) {
    std::vector<std::size_t> row(to.size() + 1);
    std::iota(row.begin(), row.end(), std::size_t{0});
    for (std::size_t i = 0; i < from.size(); ++i) {
        std::size_t diagonal = row[0];
        row[0] = i + 1;
        for (std::size_t j = 0; j < to.size(); ++j) {
            const std::size_t changed = diagonal + (from[i] == to[j] ? 0 : 1);
            diagonal = row[j + 1];
            row[j + 1] = std::min({changed, diagonal + 1, row[j] + 1});
        }
    }
    return row.back();
}

std::vector<std::string> argumentNames(const MCPTool& tool) {
    std::vector<std::string> names;
    for (const auto& [name, schema] : tool.inputSchema.at("properties").items()) names.push_back(name);
    return names;
}

/// The name that was probably meant: at most a third of its letters are wrong.
std::optional<std::string> nearMiss(std::string_view word, const std::vector<std::string>& names) {
    std::optional<std::string> best;
    std::size_t bestDistance = word.size();
    for (const std::string& name : names) {
        const std::size_t distance = editDistance(word, name);
        if (distance * 3 > std::max(word.size(), name.size()) || distance >= bestDistance) continue;
        best = name;
        bestDistance = distance;
    }
    return best;
}

std::string knownNames(const MCPTool& tool) {
    const auto names = argumentNames(tool);
    if (names.empty()) return fmt::format("{} takes no arguments.", tool.name);
    return fmt::format("{} takes {}.", tool.name, fmt::join(names, ", "));
}

std::string unknownName(const MCPTool& tool, std::string_view name) {
    const auto meant = nearMiss(name, argumentNames(tool));
    return fmt::format("{} has no argument “{}”.{} {}", tool.name, name,
                       meant ? fmt::format(" Did you mean “{}”?", *meant) : "", knownNames(tool));
}

std::vector<std::string> missingNames(const MCPTool& tool, const JSONValue& arguments) {
    std::vector<std::string> missing;
    for (const auto& name : tool.inputSchema.at("required"))
        if (!arguments.contains(name.get_ref<const std::string&>())) missing.push_back(name.get<std::string>());
    return missing;
}

/// Puts one word into the arguments; gives the sentence that refuses it, or nothing.
std::optional<std::string> takeWord(const MCPTool& tool, std::string_view word, JSONValue& arguments) {
    const std::size_t equals = word.find('=');
    if (equals == std::string_view::npos)
        return fmt::format("“{}” has no “=”: arguments are given as name=value. {}", word, knownNames(tool));

    const std::string name(word.substr(0, equals));
    const JSONValue& properties = tool.inputSchema.at("properties");
    if (!properties.contains(name)) return unknownName(tool, name);
    if (arguments.contains(name)) return fmt::format("“{}” is given twice.", name);

    auto value = valueFrom(word.substr(equals + 1), properties.at(name));
    if (!value) return fmt::format("{}: {}.", name, value.error());
    arguments[name] = std::move(*value);
    return std::nullopt;
}

} // namespace

Result<JSONValue, std::string> toolArguments(const MCPTool& tool, const std::vector<std::string>& words) {
    JSONValue arguments = JSONValue::object();
    for (const std::string& word : words)
        if (auto refusal = takeWord(tool, word, arguments)) return failure(std::move(*refusal));

    if (const auto missing = missingNames(tool, arguments); !missing.empty())
        return failure(fmt::format("{} needs {}.", tool.name, fmt::join(missing, ", ")));
    return arguments;
}

JSONValue withPathsFrom(const std::filesystem::path& here, JSONValue arguments) {
    for (const auto& [name, value] : arguments.items()) {
        if (!namesFile(name) || !value.is_string()) continue;
        const std::string path = value.get<std::string>();
        if (path.empty() || path.starts_with('/') || path.starts_with('~')) continue;
        std::error_code error;
        const bool isName = name == "project" && !path.contains('/') && !std::filesystem::exists(here / path, error);
        if (!isName) value = (here / path).string();
    }
    return arguments;
}

} // namespace morvelin
