#include "app/CommandLine.h"

#include <charconv>

#include <CLI/CLI.hpp>
#include <fmt/ranges.h>

#include "agent/ToolCatalogue.h"
#include "app/Commands.h"
#include "app/Version.h"
#include "core/base/JSON.h"

namespace morvelin {

namespace {

using Action = ClientsOptions::Action;

/// What the user's words become as they are parsed; the command that was typed picks its own.
struct Words {
    RecordOptions record;
    double seconds = 0;
    std::string area;
    std::string encoder;
    ExportOptions exporting;
    std::string format;
    std::string quality;
    CallOptions call;
    ClientsOptions clients;
    std::string shell;
    ArtOptions art;
    std::optional<Command> chosen;
};

std::optional<PointRect> parseArea(const std::string& text) {
    PointRect rect;
    const char* at = text.data();
    const char* const end = at + text.size();
    for (double* number : {&rect.x, &rect.y, &rect.width, &rect.height}) {
        if (number != &rect.x && (at == end || *at++ != ',')) return std::nullopt;
        const auto [rest, error] = std::from_chars(at, end, *number);
        if (error != std::errc()) return std::nullopt;
        at = rest;
    }
    if (at != end || !(rect.width > 0) || !(rect.height > 0)) return std::nullopt;
    return rect;
}

/// What is recorded.
void addSource(CLI::App& record, Words& words) {
    CLI::Option* display =
        record.add_option("--display", words.record.display, "the display, by its id (default: the primary one)")
            ->type_name("ID");
    CLI::Option* window = record
                              .add_option(
                                  "--window", words.record.window,
                                  "one window, also while others cover it, by its title, a part of that, or its number")
                              ->type_name("TITLE");
    record
        .add_option("--area", words.area,
                    "a rectangle in points, from the corner of the desktop, or of the display that is named")
        ->type_name("X,Y,W,H")
        ->excludes(window)
        ->check([](const std::string& text) {
            if (parseArea(text)) return std::string();
            return "“" + text + "” is no area; write left, top, width and height: 100,50,640,480";
        });
    window->excludes(display);
}

/// What is recorded besides the picture. A device's name follows an equals sign.
void addDevices(CLI::App& record, Words& words) {
    record.add_flag("--system-audio", words.record.systemAudio, "record what the machine plays");
    record
        .add_option("--microphone", words.record.microphone,
                    "record a microphone: the default one, or --microphone=ID (“morvelin devices” lists them)")
        ->type_name("[=ID]")
        ->expected(0, 1);
    record
        .add_option("--camera", words.record.camera,
                    "record a camera, for a bubble in the video: the first, or --camera=ID")
        ->type_name("[=ID]")
        ->expected(0, 1);
}

void addRecord(CLI::App& app, Words& words) {
    CLI::App* record = app.add_subcommand("record",
                                          "Record a display, a window or an area; prints the project's path.");
    addSource(*record, words);
    addDevices(*record, words);
    record->add_option("--seconds", words.seconds, "stop by itself after that many seconds (default: Ctrl-C stops)")
        ->type_name("N")
        ->check(CLI::Range(0.1, 86400.0).description(""));
    record->callback([&words] {
        if (words.seconds > 0) words.record.seconds = Seconds(words.seconds);
        words.record.area = parseArea(words.area);
        words.chosen = words.record;
    });
}

void addDeviceList(CLI::App& app, Words& words) {
    app.add_subcommand("devices", "List displays, microphones and cameras by their ids.")->callback([&words] {
        words.chosen = DevicesOptions{};
    });
}

void addExport(CLI::App& app, Words& words) {
    CLI::App* exporting = app.add_subcommand("export", "Render a project to MP4 or GIF; prints the paths.");
    exporting
        ->add_option("project", words.exporting.project,
                     "a project's folder or name (default: the one that changed last)")
        ->type_name("PROJECT");
    exporting->add_option("--format", words.format, "mp4 or gif (default: what the output’s name ends in, else mp4)")
        ->type_name("FORMAT")
        ->check([](const std::string& word) {
            if (json::fromRawValue<ExportFormat>(word)) return std::string();
            return "“" + word + "” is neither mp4 nor gif.";
        });
    exporting->add_option("--quality", words.quality, "very_low, low, medium, high or ultra (default: high)")
        ->type_name("Q")
        ->check([](const std::string& word) {
            if (videoQualityNamed(word)) return std::string();
            return "“" + word + "” is none of very_low, low, medium, high and ultra.";
        });
    exporting->add_flag("--for-ai", words.exporting.forAI,
                        "small and plain, five frames a second, text kept legible: for a model");
    exporting
        ->add_option("--output", words.exporting.output, "the file to write (default: in ~/Movies/Morvelin/Exports)")
        ->type_name("FILE");
    exporting->callback([&words] {
        words.exporting.format = json::fromRawValue<ExportFormat>(words.format);
        words.exporting.quality = videoQualityNamed(words.quality);
        words.chosen = words.exporting;
    });
}

/// Help and shells don't show it: the program runs it, since a broken driver may end whoever tries it.
void addEncoderProbe(CLI::App& app, Words& words) {
    CLI::App* probe = app.add_subcommand("probe-encoder", "Try a hardware encoder.")->group("");
    probe->add_option("encoder", words.encoder, "its name")->type_name("NAME")->required();
    probe->callback([&words] { words.chosen = ProbeEncoderOptions{words.encoder}; });
}

void addRecover(CLI::App& app, Words& words) {
    app.add_subcommand("recover", "Make projects of takes that a crash has left; prints their paths.")
        ->callback([&words] { words.chosen = RecoverOptions{}; });
}

void addServe(CLI::App& app, Words& words) {
    app.add_subcommand("serve", "Serve agents, without windows, until Ctrl-C.")->callback([&words] {
        words.chosen = ServeOptions{};
    });
}

std::string toolNames() {
    std::string names = "Tools:";
    for (const MCPTool& tool : toolCatalogue()) names += "\n  " + tool.name;
    return names;
}

void addCall(CLI::App& app, Words& words) {
    CLI::App* call = app.add_subcommand("call", "Run one of the agents' tools; prints its result as JSON.");
    call->add_option("tool", words.call.tool, "the tool's name")->type_name("TOOL")->required();
    call->add_option("arguments", words.call.arguments,
                     "the tool's arguments; records as JSON: rect='{\"x\":0.1,\"y\":0.1,\"width\":0.5,\"height\":0.5}'")
        ->type_name("NAME=VALUE");
    call->add_option("--image", words.call.image, "the file to write the answer's picture to, as PNG")
        ->type_name("FILE");
    call->footer(toolNames);
    call->callback([&words] { words.chosen = words.call; });
}

/// A permission goes by the name that a client gives itself, a set-up by the program.
std::string whatItIs(std::string_view clientArgument) {
    if (clientArgument == "NAME") return "the name by which the client asks, in quotes when it has blanks";
    return fmt::format("{}", fmt::join(clientWords(), ", "));
}

void addClients(CLI::App& app, Words& words) {
    CLI::App* clients = app.add_subcommand("clients", "Agent clients, and what they may do.");
    clients->require_subcommand(1);
    const auto add = [&](Action action, const char* name, const std::string& description, const char* argument) {
        CLI::App* command = clients->add_subcommand(name, description);
        if (argument != nullptr)
            command->add_option("client", words.clients.name, whatItIs(argument))->type_name(argument)->required();
        command->callback([&words, action] {
            words.clients.action = action;
            words.chosen = words.clients;
        });
    };
    add(Action::List, "list", "Show the known clients, and which names may control Morvelin.", nullptr);
    add(Action::Allow, "allow", "Let a client of that name control Morvelin.", "NAME");
    add(Action::Revoke, "revoke", "Take that permission back.", "NAME");
    add(Action::Install, "install", "Set a client up: " + fmt::format("{}.", fmt::join(clientWords(), ", ")), "CLIENT");
    add(Action::Uninstall, "uninstall", "Take Morvelin out of a client's settings.", "CLIENT");
}

void addCompletion(CLI::App& app, Words& words) {
    CLI::App* completion = app.add_subcommand("completion", "Print a shell's completion script.");
    completion->add_option("shell", words.shell, "bash, zsh or fish")
        ->type_name("SHELL")
        ->required()
        ->check(CLI::IsMember({"bash", "zsh", "fish"}).description(""));
    completion->callback(
        [&words] { words.chosen = CompletionOptions{json::fromRawValue<Shell>(words.shell).value_or(Shell::Bash)}; });
}

/// Help and shells don't show it: it is for those who draw the program's art.
void addArt(CLI::App& app, Words& words) {
    CLI::App* art = app.add_subcommand("art", "Draw a sheet of all backgrounds, pointers and hands.")->group("");
    art->add_option("--background", words.art.background, "one background by itself")->type_name("NAME");
    art->add_option("--width", words.art.size.width, "of that background, in pixels (default: 1920)")
        ->type_name("N")
        ->check(CLI::Range(16, 8192).description(""));
    art->add_option("--height", words.art.size.height, "of that background, in pixels (default: 1080)")
        ->type_name("N")
        ->check(CLI::Range(16, 8192).description(""));
    art->add_option("--output", words.art.output, "the PNG file to write (default: art.png)")->type_name("FILE");
    art->callback([&words] { words.chosen = words.art; });
}

void addCommands(CLI::App& app, Words& words) {
    app.description(
        "Records a screen with its pointer, makes a project with zooms that follow the clicks, renders it.");
    app.name("morvelin");
    app.set_version_flag("--version", std::string("morvelin ") + kVersion);
    app.require_subcommand(0, 1); // a word that is no command is then named as such
    addRecord(app, words);
    addDeviceList(app, words);
    addRecover(app, words);
    addEncoderProbe(app, words);
    addExport(app, words);
    addServe(app, words);
    addCall(app, words);
    addClients(app, words);
    addCompletion(app, words);
    addArt(app, words);
}

template <class E>
std::vector<std::string> rawTexts() {
    std::vector<std::string> texts;
    for (const auto& [value, raw] : rawValues(std::type_identity<E>{})) texts.emplace_back(raw);
    return texts;
}

/// What an option's kind of value, as help shows it, means to a shell.
CompletedWord completedWord(const CLI::Option& option) {
    using Kind = CompletedWord::Kind;
    const std::string type = option.get_type_name();
    if (option.get_expected_max() == 0) return {Kind::None, {}};
    if (type == "FILE" || type == "PROJECT") return {Kind::File, {}};
    if (type == "TOOL") return {Kind::ToolArguments, {}};
    if (type == "FORMAT") return {Kind::Choice, rawTexts<ExportFormat>()};
    if (type == "Q") return {Kind::Choice, rawTexts<VideoQuality>()};
    if (type == "SHELL") return {Kind::Choice, rawTexts<Shell>()};
    if (type == "CLIENT") return {Kind::Choice, clientWords()};
    return {Kind::Text, {}};
}

CompletedCommand completedCommand(const CLI::App& app) {
    CompletedCommand command{app.get_name(), app.get_description(), {}, {}, {}};
    for (const CLI::Option* option : app.get_options()) {
        if (!option->get_lnames().empty())
            command.options.push_back(
                {"--" + option->get_lnames().front(), option->get_description(), completedWord(*option)});
        else if (option->get_type_name() != "NAME=VALUE") // the tool's own word brings them
            command.operands.push_back(completedWord(*option));
    }
    for (const CLI::App* each : app.get_subcommands({}))
        if (!each->get_group().empty()) command.commands.push_back(completedCommand(*each));
    return command;
}

} // namespace

Command parseCommandLine(int argc, const char* const* argv) {
    CLI::App app;
    Words words;
    addCommands(app, words);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        std::ostringstream out;
        std::ostringstream errors;
        const int status = app.exit(error, out, errors);
        return ParsedText{out.str() + errors.str(), status == 0 ? kSuccess : kWrongWords};
    }
    return words.chosen.value_or(ParsedText{app.help(), kWrongWords});
}

CompletedCommand commandTree() {
    CLI::App app;
    Words words;
    addCommands(app, words);
    return completedCommand(app);
}

} // namespace morvelin
