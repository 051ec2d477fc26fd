#include "app/CommandLine.h"

#include <CLI/CLI.hpp>

#include "app/Version.h"
#include "core/base/JSON.h"

namespace morvelin {

namespace {

void describeRecord(CLI::App& app, RecordOptions& options, double& seconds) {
    app.add_option("--display", options.display, "the display to record, by its id (default: the primary one)")
        ->type_name("ID");
    app.add_option("--seconds", seconds, "stop by itself after that many seconds (default: Ctrl-C stops)")
        ->type_name("N")
        ->check(CLI::Range(0.1, 86400.0).description(""));
}

/// What the export's options are before they are values.
struct ExportWords {
    std::string quality = "high";
};

void describeExport(CLI::App& app, ExportOptions& options, ExportWords& words) {
    app.add_option("project", options.project, "a project's folder or name (default: the one that changed last)")
        ->type_name("PROJECT");
    app.add_option("--quality", words.quality, "very_low, low, medium, high or ultra (default: high)")
        ->type_name("Q")
        ->check([](const std::string& word) {
            if (json::fromRawValue<VideoQuality>(word)) return std::string();
            return "“" + word + "” is none of very_low, low, medium, high and ultra.";
        });
    app.add_flag("--for-ai", options.forAI, "small and plain, five frames a second, text kept legible: for a model");
    app.add_option("--output", options.output, "the file to write (default: in ~/Movies/Morvelin/Exports)")
        ->type_name("FILE");
}

} // namespace

Command parseCommandLine(int argc, const char* const* argv) {
    CLI::App app("Records a screen with its pointer, makes a project with zooms that follow the clicks, renders it.",
                 "morvelin");
    app.set_version_flag("--version", std::string("morvelin ") + kVersion);
    app.require_subcommand(1);

    RecordOptions record;
    double seconds = 0;
    CLI::App* recordCommand = app.add_subcommand("record", "Record a display; prints the project's path.");
    describeRecord(*recordCommand, record, seconds);

    ExportOptions exportOptions;
    ExportWords words;
    CLI::App* exportCommand = app.add_subcommand("export", "Render a project to MP4; prints the paths.");
    describeExport(*exportCommand, exportOptions, words);

    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        std::ostringstream out;
        std::ostringstream errors;
        const int status = app.exit(error, out, errors);
        return ParsedText{out.str() + errors.str(), status == 0 ? 0 : 2};
    }
    if (seconds > 0) record.seconds = Seconds(seconds);
    if (recordCommand->parsed()) return record;
    exportOptions.quality = json::fromRawValue<VideoQuality>(words.quality).value_or(VideoQuality::High);
    return exportOptions;
}

} // namespace morvelin
