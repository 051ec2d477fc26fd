#include "agent/ShellCompletion.h"

#include <algorithm>
#include <array>

#include <fmt/format.h>

#include "agent/ShellCompletionEngine.h"

namespace morvelin {

namespace {

struct Candidate {
    std::string word;
    std::string description;
};

/// A place of the table and what may stand there.
struct Place {
    std::string name;
    std::vector<Candidate> candidates;
};

const Candidate kFiles{"@files", ""};

/// The first sentence without its full stop. A stop before a small letter, as in "e.g. x", ends none.
std::string summary(std::string_view text) {
    const auto endsSentence = [&](std::size_t i) {
        if (text[i] == '\n') return true;
        return text[i] == '.' &&
               (i + 1 == text.size() || text[i + 1] == '\n' ||
                (i + 2 < text.size() && text[i + 1] == ' ' && text[i + 2] >= 'A' && text[i + 2] <= 'Z'));
    };
    std::size_t end = 0;
    while (end < text.size() && !endsSentence(end)) ++end;
    return std::string(text.substr(0, end));
}

// ------------------------------------------------------------------------------------------------ the table

std::vector<Candidate> valuesOf(const std::string& argument, const JSONValue& schema) {
    if (namesFile(argument)) return {kFiles};
    if (schema.at("type") == "boolean") return {{"true", ""}, {"false", ""}};
    std::vector<Candidate> values;
    if (schema.contains("enum"))
        for (const auto& value : schema.at("enum")) values.push_back({value.get<std::string>(), ""});
    return values;
}

void addTool(std::vector<Place>& table, const MCPTool& tool) {
    Place arguments{"arguments:" + tool.name, {}};
    for (const auto& [name, schema] : tool.inputSchema.at("properties").items()) {
        arguments.candidates.push_back({name + "=", summary(schema.at("description").get<std::string>())});
        table.push_back({fmt::format("argument:{} {}", tool.name, name), valuesOf(name, schema)});
    }
    table.push_back(std::move(arguments));
}

std::vector<Candidate> candidatesFor(const CompletedWord& word, const std::vector<MCPTool>& tools) {
    std::vector<Candidate> candidates;
    switch (word.kind) {
    case CompletedWord::Kind::None:
    case CompletedWord::Kind::Text: break;
    case CompletedWord::Kind::File: candidates.push_back(kFiles); break;
    case CompletedWord::Kind::Choice:
        for (const std::string& choice : word.choices) candidates.push_back({choice, ""});
        break;
    case CompletedWord::Kind::ToolArguments:
        for (const MCPTool& tool : tools) candidates.push_back({tool.name, summary(tool.description)});
        break;
    }
    return candidates;
}

void addOptions(std::vector<Place>& table, const CompletedCommand& command, const std::string& path) {
    Place options{"options:" + path, {}};
    for (const CompletedOption& option : command.options) {
        options.candidates.push_back({option.name, option.description});
        if (option.value.kind != CompletedWord::Kind::None)
            table.push_back({fmt::format("value:{} {}", path, option.name), candidatesFor(option.value, {})});
    }
    table.push_back(std::move(options));
}

void addOperands(std::vector<Place>& table, const CompletedCommand& command, const std::string& path,
                 const std::vector<MCPTool>& tools) {
    for (std::size_t i = 0; i < command.operands.size(); ++i) {
        const CompletedWord& operand = command.operands[i];
        table.push_back({fmt::format("operand:{} {}", path, i + 1), candidatesFor(operand, tools)});
        if (operand.kind == CompletedWord::Kind::ToolArguments) table.push_back({"tool:" + path, {}});
    }
}

void addCommand(std::vector<Place>& table, const CompletedCommand& command, const std::string& path,
                const std::vector<MCPTool>& tools) {
    addOptions(table, command, path);
    addOperands(table, command, path, tools);
    if (command.commands.empty()) return;

    Place commands{"commands:" + path, {}};
    for (const CompletedCommand& inner : command.commands) {
        const std::string innerPath = path.empty() ? inner.name : path + " " + inner.name;
        commands.candidates.push_back({inner.name, inner.description});
        table.push_back({"command:" + innerPath, {}});
        addCommand(table, inner, innerPath, tools);
    }
    table.push_back(std::move(commands));
}

// ------------------------------------------------------------------------------------------------ its printed form

std::string quoted(Shell shell, std::string_view text) {
    std::string quoted = "'";
    for (const char c : text) {
        switch (shell) {
        case Shell::Bash:
        case Shell::Zsh:
            if (c == '\'') quoted += "'\\'";
            break;
        case Shell::Fish:
            if (c == '\'' || c == '\\') quoted += '\\';
            break;
        }
        quoted += c;
    }
    return quoted + "'";
}

std::string printedPlace(Shell shell, const Place& place) {
    const bool isFish = shell == Shell::Fish;
    const char* indent = isFish ? "            " : "        ";
    std::string candidates;
    for (const auto& [word, description] : place.candidates)
        candidates += fmt::format(" \\\n{}    {} {}", indent, quoted(shell, word), quoted(shell, description));
    const std::string body = candidates.empty() ? "true" : "printf '%s\\t%s\\n'" + candidates;
    return fmt::format("{}{}{}\n{}{}\n{}", isFish ? "        case " : "    ", quoted(shell, place.name),
                       isFish ? "" : ")", indent, body, isFish ? "" : "        ;;\n");
}

std::string printedTable(Shell shell, const std::vector<Place>& table) {
    std::string places;
    for (const Place& place : table) places += printedPlace(shell, place);
    switch (shell) {
    case Shell::Bash:
    case Shell::Zsh:
        return fmt::format("_morvelin_table() {{\n    case $1 in\n{}    *) return 1 ;;\n    esac\n}}\n", places);
    case Shell::Fish:
        return fmt::format("function __morvelin_table\n    switch $argv[1]\n{}        case '*'\n            return 1\n"
                           "    end\nend\n",
                           places);
    }
    return {};
}

} // namespace

std::string completionScript(Shell shell, const CompletedCommand& program, const std::vector<MCPTool>& tools) {
    std::vector<Place> table;
    addCommand(table, program, "", tools);
    for (const MCPTool& tool : tools) addTool(table, tool);

    const char* heading = shell == Shell::Zsh ? "#compdef morvelin\n" : "";
    return fmt::format("{}# Made by the program itself; made anew with each release.\n\n{}{}", heading,
                       printedTable(shell, table), completionEngine(shell));
}

} // namespace morvelin
