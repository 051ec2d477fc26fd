// From a project to the sound of its current version's film: the one preparation for all that plays it.
#pragma once

#include <memory>

#include "core/base/Log.h"
#include "platform/SoundReader.h"
#include "render/Film.h"
#include "render/SoundMix.h"
#include "storage/ProjectBundle.h"

namespace morvelin {

/// The film's sound as the project's tracks are on disk at this moment, as long as the film. Null where nothing of it
/// can be heard: such a film has no track of sound.
[[nodiscard]] std::unique_ptr<SoundMix> openSound(const ProjectBundle::Contents& project, const Film& film,
                                                  SoundReaderFactory& readers, const Log& log);

} // namespace morvelin
