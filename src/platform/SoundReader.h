// The named operation "read sound": the samples of a file's track of sound at exact times. Owned by an export, a preview
// or whoever wants to see a file's sound.
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <span>
#include <string>

#include "core/base/Result.h"
#include "core/base/Time.h"
#include "platform/Sound.h"

namespace morvelin {

/// Why a file's sound could not be read; `detail` is a whole sentence of the cause.
struct SoundReaderError {
    enum class Kind {
        CannotOpen,
        NoSuchTrack ///< the file has fewer tracks of sound, or none
    };

    Kind kind = Kind::CannotOpen;
    std::string detail;

    [[nodiscard]] std::string description() const { return detail; }
};

/// The stretch of a file's own clock in which it has sound. A movie's clock is that of its pictures; a file of sound
/// alone begins at 0.
struct SoundSpan {
    SourceTime start;
    SourceTime end;

    bool operator==(const SoundSpan&) const = default;
};

/// Decodes one track of sound, exact to the sample. Cheap when the moments asked for follow one another. One thread at
/// a time.
class SoundReader {
public:
    virtual ~SoundReader() = default;

    [[nodiscard]] virtual SoundSpan span() const = 0;
    /// Fills `samples`, interleaved, in `kSoundRate` and `kSoundChannels`, with the sound from the sample `first` on,
    /// counted from the file's time 0. Where the file has none, or is damaged, there is silence.
    virtual void read(std::int64_t first, std::span<float> samples) = 0;
};

/// Opens files for their sound; the program's composition chooses the back-end.
class SoundReaderFactory {
public:
    virtual ~SoundReaderFactory() = default;
    /// `track` counts the file's tracks of sound from 0: a recording has one for the machine's sound and one for the
    /// microphone's.
    virtual Result<std::unique_ptr<SoundReader>, SoundReaderError> open(const std::filesystem::path& path,
                                                                        std::size_t track) = 0;
};

} // namespace morvelin
