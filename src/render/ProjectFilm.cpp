#include "render/ProjectFilm.h"

#include <algorithm>

#include "capture/CursorShapeLibrary.h"
#include "narration/VersionSound.h"
#include "render/BackgroundPicture.h"
#include "speech/CaptionComposer.h"
#include "speech/TimelineCues.h"
#include "storage/BundleFiles.h"
#include "storage/TranscriptFile.h"

namespace morvelin {

namespace fs = std::filesystem;

namespace {

using Kind = ExportError::Kind;

/// A recording may lack this much of what the edit wants of it: the last picture's length isn't known exactly.
constexpr Seconds kMissingEnd = 1_s;

fs::path bundleOf(const ProjectBundle::Contents& project) { return project.recordingURL.parent_path(); }

/// The last moment of the recording that the edit shows.
SourceTime lastShownMoment(const EditPayload& edit) {
    SourceTime last;
    for (const VideoFragment& fragment : edit.fragments)
        if (fragment.length() > 0_s) last = std::max(last, fragment.sourceEnd);
    return last;
}

/// Captions that a transcript alone gives are made anew each time; their ids, which nothing drawn depends on, are then
/// the same each time.
std::optional<CaptionTrack> captionsOf(const EditPayload& edit, const fs::path& bundle) {
    if (edit.captions) return edit.captions;
    const auto transcript = ProjectBundle::readTranscript(bundle);
    if (!transcript) return std::nullopt;
    SeededIdSource ids(0);
    CaptionTrack track;
    track.engine = transcript->engine;
    track.language = transcript->language;
    track.cues = cuesFrom(transcript->segments, ids);
    normalize(track);
    return track;
}

std::vector<TimelineCue> captionCues(const EditPayload& edit, const fs::path& bundle, const MovieProperties& recording,
                                     const Log& log) {
    if (!edit.captionsEnabled) return {};
    const auto captions = captionsOf(edit, bundle);
    if (!captions) return {};
    using enum AudioStack::RecordingSound;
    const auto sound = VersionSound::read(bundle, edit, recording.hasAudio ? Audible : Silent, log);
    return timelineCues(*captions, edit.fragments, sound.layers());
}

FilmIngredients ingredientsOf(const ProjectBundle::Contents& project, const FilmMovies& movies, const FilmForm& form,
                              const Log& log) {
    const EditPayload& edit = project.currentVersion().edit;
    const fs::path bundle = bundleOf(project);
    const MovieProperties& recording = movies.recording->properties();
    FilmIngredients ingredients{
        edit,    project.cursorEvents,    CursorShapeLibrary::load(bundle), recording.size, form.size, form.style, {},
        nullptr, movies.camera != nullptr};
    switch (form.style) {
    case FilmStyle::OfProject:
        ingredients.captionCues = captionCues(edit, bundle, recording, log);
        ingredients.backgroundImage = loadBackgroundImage(edit.background, bundle, form.size);
        break;
    case FilmStyle::Plain: break;
    }
    return ingredients;
}

} // namespace

Result<FilmMovies, ExportError> FilmMovies::open(const ProjectBundle::Contents& project, MovieReaderFactory& readers,
                                                 const Log& log) {
    if (!ProjectBundle::isPresent(project.recordingURL)) return failure(ExportError{Kind::NoRecording, {}, {}});
    auto recording = readers.open(project.recordingURL);
    if (!recording) return failure(ExportError::from(recording.error()));
    FilmMovies movies{std::move(*recording), nullptr};
    if (project.cameraURL) {
        auto camera = readers.open(*project.cameraURL);
        if (camera)
            movies.camera = std::move(*camera);
        else
            log("[FragmentCompositionBuilder] Could not lay out camera fragment: " + camera.error().description());
    }
    return movies;
}

Result<Film, ExportError> makeFilm(const ProjectBundle::Contents& project, const FilmMovies& movies,
                                   const FilmForm& form, const Log& log) {
    const EditPayload& edit = project.currentVersion().edit;
    MovieProperties recording = movies.recording->properties();
    if (const SourceTime last = lastShownMoment(edit); isLost(last, recording)) {
        if (form.lostEnd == LostEnd::Refused) return failure(ExportError{Kind::IncompleteRead, {}, {}});
        recording.end = last;
    }
    auto composition = FragmentCompositionBuilder::build(recording, edit.fragments);
    if (!composition) return failure(ExportError::from(composition.error()));
    return Film{std::move(*composition), makeInstruction(ingredientsOf(project, movies, form, log)), form.frameRate};
}

bool isLost(SourceTime moment, const MovieProperties& recording) { return moment > recording.end + kMissingEnd; }

Result<ShownFrames, MovieReaderError> framesAt(const Film& film, const FilmMovies& movies, EditTime t) {
    auto recording = movies.recording->frameAt(film.composition.pictureTime(t));
    if (!recording) return passOn(std::move(recording));
    ShownFrames frames{std::move(*recording), std::nullopt};
    if (movies.camera && film.showsCamera())
        if (auto shown = movies.camera->frameAt(film.cameraTime(t))) frames.camera = std::move(*shown);
    return frames;
}

} // namespace morvelin
