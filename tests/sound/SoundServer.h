// A real sound server for one test: outputs that nobody hears, and microphones that hear what a test plays to them.
#pragma once

#include <string>
#include <vector>

#include <sys/types.h>

#include "base/TemporaryFolder.h"

namespace morvelin {

/// Has the outputs "speakers", which is the default, and "headphones", and the microphones "desk" ("Desk microphone"),
/// the default one, which hears what is written to its pipe as floats of one channel, and "lamp" ("A lamp's
/// microphone"), which hears what is played to "at_lamp" and is off by 20 ms about when.
class SoundServer {
public:
    /// Starts PulseAudio in a folder of its own and waits until it answers.
    SoundServer();
    ~SoundServer();
    SoundServer(const SoundServer&) = delete;
    SoundServer& operator=(const SoundServer&) = delete;

    /// As libpulse names it; empty when the server could not be started.
    [[nodiscard]] const std::string& name() const { return m_name; }

    [[nodiscard]] std::string deskPipe() const { return m_folder.path() / "desk"; }

    /// The server as a crash leaves it, and a new one in its place.
    void kill();
    bool start();
    /// Lets the server stand still, sockets open, until it may go on.
    void freeze() const;
    void thaw() const;

    /// `pactl` with these words; gives what it prints.
    std::string control(const std::string& words) const;
    void addMicrophone(const std::string& id, const std::string& heardAt) const;
    void removeLamp() const { control("unload-module module-remap-source"); }

private:
    TemporaryFolder m_folder;
    pid_t m_server = -1;
    std::string m_name;
};

} // namespace morvelin
