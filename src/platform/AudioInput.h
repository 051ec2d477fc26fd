// The named operation "audio input": which microphones there are, and the sound of one of them or of the whole machine.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <variant>
#include <vector>

#include "core/base/EventLoop.h"
#include "core/base/Result.h"
#include "core/base/Time.h"
#include "platform/Sound.h"

namespace morvelin {

/// Why sound can't be captured, or has stopped; `detail` is a whole sentence that tells a user what to do.
struct AudioInputError {
    enum class Kind { NoSoundServer, DeviceNotFound, DeviceFailed };

    Kind kind = Kind::NoSoundServer;
    std::string detail;

    [[nodiscard]] std::string description() const { return detail; }
};

/// A microphone, or another input that can stand for one.
struct AudioInputDevice {
    std::string id;   ///< stable while the device is there, and when it comes back
    std::string name; ///< for people

    bool operator==(const AudioInputDevice&) const = default;
};

/// The microphones of the machine. What it plays is no microphone, though it can be captured.
struct MicrophoneScan {
    std::vector<AudioInputDevice> devices; ///< the default one first, the others by name
    std::optional<std::string> builtInID;  ///< of the machine's own microphone, where it is known to have one
};

/// Everything that the machine plays, wherever it now plays it.
struct SystemAudio {};
/// One microphone.
struct Microphone {
    std::string id; ///< as `AudioInputDevice::id`; empty: whichever is the default now
};
using AudioInputTarget = std::variant<SystemAudio, Microphone>;

/// A piece of sound, in `kSoundRate` and `kSoundChannels` by the device's clock, which is nearly the machine's.
struct SoundChunk {
    HostTime time;                  ///< when its first sample was heard or played; off by some milliseconds
    std::span<const float> samples; ///< interleaved; valid during the call
    bool followsGap = false;        ///< the device lost sound between the chunk before and this one
};

/// Who takes a stream's sound. Called on a thread of the back-end's, one call at a time; must come back soon.
class AudioInputListener {
public:
    virtual ~AudioInputListener() = default;
    /// Chunks come in order.
    virtual void soundCame(const SoundChunk& chunk) = 0;
    /// No sound comes until `soundReturned`: the device or its server has gone. The stream looks for it by itself.
    virtual void soundLost(const AudioInputError& reason) = 0;
    virtual void soundReturned() = 0;
};

/// Sound that comes until this goes. It follows a default device that changes, and a server that starts again.
class AudioInputStream {
public:
    /// The listener isn't called any more once this is back.
    virtual ~AudioInputStream() = default;
    /// Starts the device anew, for one that has fallen silent. From any thread; doesn't wait for it.
    virtual void reopen() = 0;
};

/// The machine's sound. From any thread, except where said otherwise.
class AudioInputSource {
public:
    virtual ~AudioInputSource() = default;

    virtual Result<MicrophoneScan, AudioInputError> microphones() = 0;
    /// Calls `action` on the loop's thread when microphones came or went, or another is the default. On that thread.
    [[nodiscard]] virtual EventLoop::Timer onMicrophonesChanged(EventLoop& loop, std::function<void()> action) = 0;
    /// Comes back when the device runs; its first sound may come a moment later. The listener must outlive the stream.
    virtual Result<std::unique_ptr<AudioInputStream>, AudioInputError> open(const AudioInputTarget& target,
                                                                            AudioInputListener& listener) = 0;
};

} // namespace morvelin
