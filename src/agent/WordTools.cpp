#include "agent/WordTools.h"

#include <algorithm>

#include <fmt/ranges.h>

#include "agent/HeadlessEditError.h"
#include "core/base/Rounding.h"
#include "core/base/Text.h"
#include "speech/SubtitleFile.h"
#include "speech/TranscriptCorrection.h"
#include "speech/TranscriptionStatus.h"
#include "speech/WrittenNarration.h"
#include "storage/BundleFiles.h"
#include "storage/ProjectsFolder.h"
#include "storage/TranscriptFile.h"

namespace morvelin {

namespace {

namespace fs = std::filesystem;

CaptionMaker makerOf(const EditedProject& project) { return {project.services.ids, project.services.clock}; }

/// Takes back what is about to be written to a file of the project, if the edit can't be saved.
void rememberFile(EditedProject& project, const fs::path& file) {
    const auto before = readFile(file);
    project.undoes.emplace_back([file, content = before ? std::optional(*before) : std::nullopt] {
        if (content)
            (void)writeFileAtomically(file, *content);
        else
            (void)removeFile(file);
    });
    project.isTranscriptChanged = true;
}

Result<void, std::string> writeTranscript(EditedProject& project, const FounderSourceTranscript& transcript) {
    rememberFile(project, project.bundleURL / ProjectBundle::kTranscriptFile);
    if (const auto written = ProjectBundle::writeTranscript(transcript, project.bundleURL); !written) {
        project.undoes.pop_back();
        return refusal(written.error());
    }
    return {};
}

auto noTranscript() { return invalidArgument("project", "this project has no transcript yet: call transcribe first"); }

} // namespace

VersionSound WordTools::soundOf(const EditedProject& project) const {
    const auto movie = m_movies.open(project.bundleURL / ProjectBundle::kRecordingFile);
    const bool isAudible = movie && (*movie)->properties().hasAudio;
    return VersionSound::read(project.bundleURL, project.edit,
                              isAudible ? AudioStack::RecordingSound::Audible : AudioStack::RecordingSound::Silent,
                              project.services.log);
}

ToolOutcome WordTools::narrate(EditedProject& project, const ArgumentReader& arguments) const {
    const auto text = arguments.text("text");
    if (!text) return invalidArgument("text", "expected something to say");
    if (trimmed(*text).empty()) return refusal(HeadlessEditError(HeadlessEditError::EmptyNarration{}));
    const auto at = arguments.number("at");
    if (!at)
        return invalidArgument("at",
                               "expected a time in seconds, or call this during a recording, where it stamps itself");
    WrittenNarration::Line line{*text, EditTime(*at), {}};
    if (const auto duration = arguments.number("duration"); duration && *duration > 0)
        line.duration = Seconds(*duration);

    const auto transcript = ProjectBundle::readTranscript(project.bundleURL);
    const auto narrated = WrittenNarration::narrate(line, {transcript, project.edit.captions}, project.edit.fragments,
                                                    makerOf(project));
    if (!narrated) return refusal(narrated.error());
    if (const auto written = writeTranscript(project, narrated->transcript); !written) return failure(written.error());
    project.edit.captions = narrated->captions;
    project.edit.captionsEnabled = true;
    return JSONValue{{"text", narrated->text},
                     {"at", roundedTo3Decimals(narrated->at)},
                     {"until", roundedTo3Decimals(narrated->until)},
                     {"segments", narrated->transcript.segments.size()}};
}

ToolOutcome WordTools::clearNarration(EditedProject& project, const ArgumentReader&) const {
    const fs::path file = project.bundleURL / ProjectBundle::kTranscriptFile;
    const auto transcript = ProjectBundle::readTranscript(project.bundleURL);
    if (!transcript) return JSONValue{{"cleared", false}, {"note", WrittenNarration::kNothingToClearNote}};
    const VersionSound sound = soundOf(project);
    project.edit.captions = WrittenNarration::captionsWithout(*transcript, project.edit.captions, sound.layers(),
                                                              project.edit.fragments, makerOf(project));
    rememberFile(project, file);
    if (const auto removed = removeFile(file); !removed) return refusal(removed.error());
    return JSONValue{{"cleared", true}, {"note", WrittenNarration::kClearedNote}};
}

ToolOutcome WordTools::editTranscript(EditedProject& project, const ArgumentReader& arguments) const {
    const auto text = arguments.text("text");
    if (!text) return invalidArgument("text", "expected the corrected transcript");
    const auto before = ProjectBundle::readTranscript(project.bundleURL);
    if (!before) return noTranscript();
    const auto after = corrected(*before, *text);
    if (!after) return invalidArgument("text", "that leaves no words; use clear_narration to remove the transcript");
    const VersionSound sound = soundOf(project);
    const auto synced = captionsAfterTranscriptChange(project.edit.captions, before, after, sound.layers(),
                                                      project.edit.fragments, makerOf(project));
    if (const auto written = writeTranscript(project, *after); !written) return failure(written.error());
    project.edit.captions = synced.captions;
    return JSONValue{{"segments", after->segments.size()}, {"captions", std::string(json::rawValue(synced.outcome))}};
}

ToolOutcome WordTools::exportCaptions(EditedProject& project, const ArgumentReader& arguments) const {
    const std::string word = arguments.text("format").value_or("srt");
    const auto format = json::fromRawValue<SubtitleFormat>(word);
    if (!format) return invalidArgument("format", "expected srt or vtt");
    const auto transcript = ProjectBundle::readTranscript(project.bundleURL);
    const auto captions = captionsOnOpening(project.edit.captions, transcript, makerOf(project));
    if (!captions) return noTranscript();
    const fs::path path = arguments.text("path") ? expandingTilde(*arguments.text("path"), m_home)
                                                 : m_exports / (project.bundleURL.stem().string() + "." + word);
    const VersionSound sound = soundOf(project);
    const auto cues = timelineCues(*captions, project.edit.fragments, sound.layers());
    if (cues.empty()) return invalidArgument("project", SubtitleError(SubtitleError::NothingLeft{}).description());
    if (const auto made = createFolder(path.parent_path()); !made) return refusal(made.error());
    if (const auto written = writeSubtitles(cues, *format, path); !written) return refusal(written.error());
    return JSONValue{{"path", path.string()}, {"format", word}, {"cues", cues.size()}};
}

ToolOutcome WordTools::transcriptionStatus(EditedProject& project, const ArgumentReader&) const {
    // Nothing here fetches the model yet, so it isn't there.
    return toJSON(statusOnDisk(project.bundleURL, SpeechModel::Missing));
}

namespace {

/// The take of that number or id; the error lists those that there are.
Result<NarrationTake, std::string> namedTake(const NarrationLibrary& library, const std::string& name) {
    if (library.isUnreadable) return refusal(NarrationError(NarrationError::LibraryUnreadable{}));
    const auto takes = library.liveTakes();
    if (takes.empty()) return invalidArgument("take", "this project has no narration takes yet");
    std::vector<std::string> numbers;
    for (const NarrationTake& take : takes) {
        const std::string number = std::to_string(take.number.value_or(1));
        if (number == name || UUID::parse(name) == take.id()) return take;
        numbers.push_back(number);
    }
    return invalidArgument("take", fmt::format("no such take; this project has takes {}", fmt::join(numbers, ", ")));
}

/// The track that is to be heard alone, made where the take has none.
AudioTrackList hearing(const NarrationTake& take, AudioTrackList tracks, IdSource& ids) {
    const auto own = tracksFor(take.id(), tracks);
    if (own.empty()) return adding(take.id(), TakeHearing::Alone, std::move(tracks), ids);
    return solo(own.front().id, std::move(tracks));
}

std::string noteOnOriginal(NarrationCaptionOutcome outcome) {
    if (outcome == NarrationCaptionOutcome::KeptEdited)
        return "The recording’s own sound is the only track heard again. The user had edited the captions, so they "
               "were kept; replace_captions: true writes them from its transcript.";
    return "The recording’s own sound is the only track heard again, with the captions from its transcript.";
}

} // namespace

ToolOutcome WordTools::useNarrationTake(EditedProject& project, const ArgumentReader& arguments) const {
    const auto number = arguments.integer("take");
    const std::string name = trimmed(arguments.text("take").value_or(number ? std::to_string(*number) : ""));
    if (name.empty()) return invalidArgument("take", "expected a take's number, its id, or “original”");
    VersionSound sound = soundOf(project);
    const bool isOriginal = name == "original";
    if (isOriginal && sound.recording == AudioStack::RecordingSound::Silent)
        return invalidArgument("take", "this recording has no sound of its own to go back to");

    JSONValue result = JSONValue::object();
    const AudioTrackList before = sound.tracks;
    if (isOriginal) {
        sound.tracks = solo(AudioTrackRef::kRecordingID, before);
        result["take"] = name;
    } else {
        const auto take = namedTake(sound.library, name);
        if (!take) return failure(take.error());
        sound.tracks = hearing(*take, before, project.services.ids);
        result["take"] = take->number.value_or(1);
        result["id"] = take->id().text();
    }
    const auto edited = arguments.flag("replace_captions", false) ? NarrationCaptions::EditedCaptions::Replace
                                                                  : NarrationCaptions::EditedCaptions::Keep;
    const auto transcript = ProjectBundle::readTranscript(project.bundleURL);
    const auto synced = NarrationCaptions::sync({before, sound.tracks, sound.edit(), project.edit.captions, transcript},
                                                edited, makerOf(project));
    project.edit.audioTracks = sound.tracks;
    project.edit.captions = synced.captions;
    result["captions"] = std::string(json::rawValue(synced.outcome));
    result["note"] = isOriginal
                         ? noteOnOriginal(synced.outcome)
                         : fmt::format("Take {} is now the only track heard, on top of the version’s audio tracks.",
                                       result["take"].get<std::int64_t>());
    return result;
}

} // namespace morvelin
