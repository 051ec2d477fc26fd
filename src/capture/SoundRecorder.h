// The sound of a take: its streams, and their tracks in the movie. Owned by a capture session.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "capture/SoundInbox.h"
#include "capture/SoundTrack.h"
#include "core/base/Log.h"
#include "platform/MovieWriter.h"

namespace morvelin {

/// Which sound a take has. System audio is the first track, the microphone the next.
struct SoundChoice {
    bool systemAudio = false;
    std::optional<std::string> microphone; ///< its id; empty: the default one
};

/// On the capture thread, but for `open`. A stream that is lost or falls silent costs the take only its own sound:
/// silence is written meanwhile, and the stream is looked for and started again.
class SoundRecorder {
public:
    /// A running device that gives no sound for so long has stalled.
    static constexpr Seconds kStall{2};
    /// Takes whole sentences for the user.
    using Tell = std::function<void(const std::string& sentence)>;

    /// Starts the streams that were chosen; nothing is opened for none. Takes some tens of milliseconds; any thread.
    static Result<std::unique_ptr<SoundRecorder>, AudioInputError> open(AudioInputSource& source,
                                                                        const SoundChoice& choice, Tell tell, Log log);

    [[nodiscard]] std::vector<SoundTrackSettings> trackSettings() const;
    [[nodiscard]] bool hasTracks() const { return !m_inputs.empty(); }

    /// The movie's time 0: earlier sound is left out.
    void begin(HostTime firstFrameTime);
    void pause(HostTime time);
    void resume(HostTime time);

    /// Writes what has come, up to a moment ago. True when there was something.
    Result<bool, MovieWriterError> write(HostTime now, MovieWriter& writer);
    /// Ends the tracks at `end` and waits for the last of their sound, which is always a little late. They last as long
    /// as the movie.
    Result<void, MovieWriterError> finish(HostTime end, Seconds movieDuration, MovieWriter& writer);

private:
    struct Input {
        std::string name;    ///< as sentences call it
        std::string logName; ///< as the log calls it
        SoundInbox inbox;    ///< outlives the stream
        std::unique_ptr<AudioInputStream> stream;
        std::optional<SoundTrack> track;
        HostTime lastNews;
        bool isLost = false;
        bool hasStalled = false;
    };

    SoundRecorder(Tell tell, Log log) : m_tell(std::move(tell)), m_log(std::move(log)) {}

    Result<void, AudioInputError> add(AudioInputSource& source, const AudioInputTarget& target, std::string name,
                                      std::string logName);
    void read(Input& input, HostTime now);
    void mindStall(Input& input, HostTime now);
    Result<bool, MovieWriterError> writeTo(HostTime time, std::size_t track, MovieWriter& writer);

    Tell m_tell;
    Log m_log;
    std::vector<std::unique_ptr<Input>> m_inputs; ///< in the order of the movie's tracks
    std::vector<float> m_samples;                 ///< kept for its memory
};

} // namespace morvelin
