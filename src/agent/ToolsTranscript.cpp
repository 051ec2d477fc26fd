// Tools for what is said in a recording.
#include <array>

#include <fmt/format.h>
#include <fmt/ranges.h>

#include "agent/ToolTable.h"

namespace morvelin::table {

namespace {

/// The languages that may be asked for by name: English, then the others by their English names.
constexpr auto kLanguageCodes = std::to_array<std::string_view>({"en", "bg", "hr", "cs", "da", "nl", "et", "fi", "fr",
                                                                 "de", "el", "hu", "it", "lv", "lt", "mt", "pl", "pt",
                                                                 "ro", "ru", "sk", "sl", "es", "sv", "uk"});

std::string languageDescription() {
    return fmt::format("\"auto\" to detect it, or a code: {}. Defaults to the app's setting.",
                       fmt::join(kLanguageCodes, ", "));
}

} // namespace

std::vector<MCPTool> transcriptTools() {
    return {
        tool("transcribe", R"(
            Transcribe what is said in a recording (microphone and system audio) with the on-device speech model,
            into the project's transcript: the words the burned-in captions and the `*.transcript.json` sidecar
            carry. Nothing leaves the Mac.

            Starts the work and returns at once — it takes a while on a long take. Poll `transcription_status` until
            it reports `completed`, then turn captions on with `set_style` if they should be burned in.

            The first run downloads the speech model, about 600 MB, once: that needs `download_model: true`, which
            you should only pass after asking the user. An existing transcript (or narration) is only replaced with
            `replace: true`.)",
             {project(), text("language", languageDescription()),
              flag("download_model", "Allow the one-time ~600 MB model download."),
              flag("replace", "Overwrite an existing transcript or narration.")}),

        tool("transcription_status", R"(
            Where a transcription started by `transcribe` has got to: `idle`, `downloading_model` or `transcribing`
            with a `progress` from 0 to 1, `completed`, or `failed` with the reason. Also reports whether the
            project has a transcript and whether the speech model is on disk.)",
             {project()}),

        tool("edit_transcript", R"(
            Replace the transcript's text with a corrected version — the editor's Edit Text. Word timings are kept
            where the word count matches (fixing a misheard word), and spread proportionally otherwise, so rewrite
            rather than restructure.)",
             {project(), text("text", "The whole corrected transcript.")}, {"text"}),

        tool("export_captions", R"(
            Write the transcript as a subtitle file, timed against the edited video so it lines up with an export.
            Returns the file's `path`.)",
             {project(), choice("format", {"srt", "vtt"}, "Subtitle format. Defaults to srt."),
              text("path", "Where to write it. Defaults to the exports folder, named after the project.")}),

        tool("delete_transcription_model", R"(
            Remove the downloaded speech model from disk to free its space. Transcripts already made are kept; the
            next `transcribe` downloads the model again.)"),
    };
}

} // namespace morvelin::table
