#include "agent/ToolTable.h"

namespace morvelin::table {

namespace {

Property property(std::string_view name, const char* type, std::string_view description) {
    return {std::string(name), {{"type", type}, {"description", description}}};
}

JSONValue list(Names names) {
    JSONValue list = JSONValue::array();
    for (const std::string_view name : names) list.push_back(name);
    return list;
}

JSONValue object(Properties properties) {
    JSONValue object = JSONValue::object();
    for (const auto& [name, schema] : properties) object[name] = schema;
    return object;
}

std::string_view withoutIndent(std::string_view line) {
    const std::size_t begin = line.find_first_not_of(' ');
    return begin == std::string_view::npos ? std::string_view() : line.substr(begin);
}

/// What stands between the text so far and a line that follows `emptyLines` empty ones.
std::string_view joint(std::string_view line, int emptyLines) {
    if (emptyLines > 0) return "\n\n";
    return line.starts_with("- ") ? "\n" : " ";
}

} // namespace

std::string prose(std::string_view typed) {
    std::string meant;
    int emptyLines = 0;
    while (!typed.empty()) {
        const std::size_t end = std::min(typed.find('\n'), typed.size());
        const std::string_view line = withoutIndent(typed.substr(0, end));
        typed.remove_prefix(std::min(end + 1, typed.size()));
        if (line.empty()) {
            ++emptyLines;
            continue;
        }
        if (!meant.empty()) meant += joint(line, emptyLines);
        meant += line;
        emptyLines = 0;
    }
    return meant;
}

MCPTool tool(std::string_view name, std::string_view manual, Properties properties, Names needed) {
    return {std::string(name),
            prose(manual),
            {{"type", "object"}, {"properties", object(properties)}, {"required", list(needed)}}};
}

Property text(std::string_view name, std::string_view description) { return property(name, "string", description); }

Property number(std::string_view name, std::string_view description) { return property(name, "number", description); }

Property integer(std::string_view name, std::string_view description) { return property(name, "integer", description); }

Property flag(std::string_view name, std::string_view description) { return property(name, "boolean", description); }

Property choice(std::string_view name, Names values, std::string_view description) {
    Property made = property(name, "string", description);
    made.second["enum"] = list(values);
    return made;
}

Property texts(std::string_view name, std::string_view description) {
    Property made = property(name, "array", description);
    made.second["items"] = {{"type", "string"}};
    return made;
}

Property record(std::string_view name, std::string_view description, Properties members) {
    Property made = property(name, "object", description);
    made.second["properties"] = object(members);
    JSONValue& needed = made.second["required"] = JSONValue::array();
    for (const auto& [member, schema] : members) needed.push_back(member);
    return made;
}

Property project() {
    return text("project", "Path to a .morvelin bundle. Defaults to the most recently modified project.");
}

Property version() { return text("version", "A version id or name, from list_versions."); }

Property displayOfPosition() {
    return integer("display_id", "Which display the position is on. Ignored while recording, when positions are "
                                 "measured against the recorded area.");
}

Property normalizedRect() {
    return record("rect", "Region in normalized 0–1 coordinates, top-left origin, for focus and mask.",
                  {number("x", "Left edge, 0–1."), number("y", "Top edge, 0–1."), number("width", "Width, 0–1."),
                   number("height", "Height, 0–1.")});
}

} // namespace morvelin::table
