#include "render/ProjectSound.h"

#include <map>
#include <optional>
#include <utility>

#include "narration/VersionSound.h"
#include "render/AudioComposition.h"

namespace morvelin {

std::unique_ptr<SoundMix> openSound(const ProjectBundle::Contents& project, const Film& film,
                                    SoundReaderFactory& readers, const Log& log) {
    using enum AudioStack::RecordingSound;
    const std::filesystem::path& recording = project.recordingURL;
    const EditPayload& edit = project.currentVersion().edit;
    std::map<std::filesystem::path, std::optional<SourceSound>> sources;
    const auto sourceOf = [&](const std::filesystem::path& file) -> std::optional<SourceSound>& {
        const auto found = sources.find(file);
        return found != sources.end() ? found->second
                                      : sources.emplace(file, SourceSound::open(file, readers)).first->second;
    };
    const auto spanOf = [&](const std::filesystem::path& file) -> std::optional<SoundSpan> {
        const auto& source = sourceOf(file);
        return source ? std::optional(source->span()) : std::nullopt;
    };
    const auto sound = VersionSound::read(recording.parent_path(), edit, sourceOf(recording) ? Audible : Silent, log);
    const auto mix = FragmentCompositionBuilder::audioMix(sound.layers(), edit.fragments);
    std::vector<SoundMix::Track> tracks;
    for (AudioTrack& track : FragmentCompositionBuilder::buildAudio(mix, film.composition, recording, spanOf)) {
        // Two tracks may play one take: each needs readers of its own, which have a place in the file.
        auto source = std::exchange(sourceOf(track.url), std::nullopt);
        if (!source) source = SourceSound::open(track.url, readers);
        if (source) tracks.push_back({std::move(*source), std::move(track.segments)});
    }
    return tracks.empty() ? nullptr : std::make_unique<SoundMix>(std::move(tracks), film.length());
}

} // namespace morvelin
