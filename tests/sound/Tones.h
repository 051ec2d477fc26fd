// Sound that a test makes at known moments: played to an output, or said into a microphone.
#pragma once

#include <atomic>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "core/base/Date.h"
#include "core/base/Time.h"

namespace morvelin {

/// Silence with tones of a tenth of a second in it.
class Tones {
public:
    static constexpr Seconds kLength{0.1};

    explicit Tones(double frequency) : m_frequency(frequency) {}
    /// A tone that begins at that moment.
    void add(HostTime moment);
    [[nodiscard]] float at(HostTime time) const;

private:
    double m_frequency;
    mutable std::mutex m_mutex; ///< guards the rest
    std::vector<HostTime> m_moments;
};

/// Plays tones to an output of a sound server, and silence in between, so that the output's clock never rests.
class TonePlayer {
public:
    /// How long before its moment a tone must be asked for.
    static constexpr Seconds kNotice{0.5};

    TonePlayer(const std::string& server, const std::string& sink, double frequency);
    ~TonePlayer();
    TonePlayer(const TonePlayer&) = delete;
    TonePlayer& operator=(const TonePlayer&) = delete;

    /// A tone that is heard at that moment.
    void playAt(HostTime moment);

private:
    struct State;
    std::unique_ptr<State> m_state;
};

/// Says tones into a sound server's microphone through its pipe. The microphone's clock is `drift` fast.
class ToneSpeaker {
public:
    ToneSpeaker(const std::string& pipe, double frequency, double drift = 0);

    void sayAt(HostTime moment) { m_tones.add(moment); }

private:
    void speak(const std::stop_token& stop, const std::string& pipe, double drift);

    Tones m_tones;
    std::jthread m_thread;
};

} // namespace morvelin
