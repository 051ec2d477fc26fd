// Microphones and system audio of a real sound server: who is there, what is heard and when, what happens when devices
// and the server come and go.

#include <algorithm>
#include <atomic>
#include <cmath>
#include <mutex>

#include <gtest/gtest.h>

#include "capture/LoopRunner.h"
#include "platform/linux/PulseAudioInputSource.h"
#include "sound/SoundServer.h"
#include "sound/Tones.h"

namespace morvelin {

namespace {

/// Writes down when a stream's sound begins to be loud, and what the stream tells.
class Ear final : public AudioInputListener {
public:
    void soundCame(const SoundChunk& chunk) override {
        const std::lock_guard lock(m_mutex);
        ++m_chunks;
        for (std::size_t sample = 0; sample < chunk.samples.size(); ++sample) {
            const HostTime time = chunk.time + Seconds(static_cast<double>(sample / kSoundChannels) / kSoundRate);
            if (std::abs(chunk.samples[sample]) < 0.1F) continue;
            if (m_onsets.empty() || time - m_lastLoud > 0.05_s) m_onsets.push_back(time);
            m_lastLoud = time;
        }
    }
    void soundLost(const AudioInputError& reason) override {
        const std::lock_guard lock(m_mutex);
        m_told.push_back(reason.description());
    }
    void soundReturned() override {
        const std::lock_guard lock(m_mutex);
        m_told.emplace_back("returned");
    }

    std::vector<HostTime> onsets() const {
        const std::lock_guard lock(m_mutex);
        return m_onsets;
    }
    std::vector<std::string> told() const {
        const std::lock_guard lock(m_mutex);
        return m_told;
    }
    int chunks() const {
        const std::lock_guard lock(m_mutex);
        return m_chunks;
    }

private:
    mutable std::mutex m_mutex; ///< guards the rest
    int m_chunks = 0;
    std::vector<HostTime> m_onsets;
    HostTime m_lastLoud;
    std::vector<std::string> m_told;
};

class AudioInputTest : public testing::Test {
protected:
    void SetUp() override { ASSERT_FALSE(server.name().empty()) << "pulseaudio is missing"; }

    std::unique_ptr<AudioInputStream> open(const AudioInputTarget& target, Ear& ear) {
        auto opened = source.open(target, ear);
        if (opened) return std::move(*opened);
        ADD_FAILURE() << opened.error().description();
        return nullptr;
    }
    /// Makes a tone; gives by how much the ear heard it too late, in seconds, if it did within a second.
    template <class ToneMaker>
    std::optional<double> heard(ToneMaker& maker, const Ear& ear) {
        const HostTime moment = clock.uptime() + TonePlayer::kNotice;
        const std::size_t before = ear.onsets().size();
        if constexpr (std::is_same_v<ToneMaker, TonePlayer>)
            maker.playAt(moment);
        else
            maker.sayAt(moment);
        runUntil(
            loop, [&] { return ear.onsets().size() > before; }, TonePlayer::kNotice + 1_s);
        const auto onsets = ear.onsets();
        if (onsets.size() <= before) return std::nullopt;
        return (onsets[before] - moment).value;
    }
    bool hearsMore(const Ear& ear, Seconds limit = 3_s) {
        return runUntil(
            loop, [&, before = ear.chunks()] { return ear.chunks() > before; }, limit);
    }

    SoundServer server;
    GLibEventLoop loop;
    SystemClock clock;
    PulseAudioInputSource source{clock, server.name()};
};

constexpr double kAccuracy = 0.015;
constexpr double kLampAccuracy = 0.06;

} // namespace

TEST_F(AudioInputTest, ListsMicrophonesAsTheyComeAndGo) {
    using Devices = std::vector<AudioInputDevice>;
    const auto devices = [&] { return source.microphones().value().devices; };
    const AudioInputDevice desk{"desk", "Desk microphone"};
    const AudioInputDevice lamp{"lamp", "A lamp's microphone"};
    EXPECT_EQ(devices(), (Devices{desk, lamp})) << "the default one first, and no output's monitor";
    EXPECT_FALSE(source.microphones().value().builtInID);

    int changes = 0;
    auto watching = source.onMicrophonesChanged(loop, [&] { ++changes; });
    server.control("set-default-source lamp");
    EXPECT_TRUE(runUntil(loop, [&] { return devices() == Devices{lamp, desk}; }));
    EXPECT_TRUE(runUntil(loop, [&] { return changes > 0; }));
    server.removeLamp();
    EXPECT_TRUE(runUntil(loop, [&] { return devices() == Devices{desk}; }));
    watching = {};
    const int before = changes;
    server.addMicrophone("new", "at_lamp");
    EXPECT_TRUE(runUntil(loop, [&] { return devices().size() == 2; }));
    EXPECT_EQ(changes, before) << "nobody watches any more";
}

TEST_F(AudioInputTest, HearsTonesAtTheirMoments) {
    Ear desk;
    Ear lamp;
    Ear played;
    const auto deskStream = open(Microphone{}, desk);
    const auto lampStream = open(Microphone{"lamp"}, lamp);
    const auto playedStream = open(SystemAudio{}, played);
    ToneSpeaker atDesk(server.deskPipe(), 1000);
    TonePlayer atLamp(server.name(), "at_lamp", 1000);
    TonePlayer speakers(server.name(), "speakers", 1000);
    ASSERT_TRUE(hearsMore(desk) && hearsMore(lamp) && hearsMore(played));
    for (int tone = 0; tone < 3; ++tone) {
        EXPECT_NEAR(heard(atDesk, desk).value_or(99), 0, kAccuracy);
        EXPECT_NEAR(heard(atLamp, lamp).value_or(99), 0, kLampAccuracy);
        EXPECT_NEAR(heard(speakers, played).value_or(99), 0, kAccuracy);
    }
    EXPECT_EQ(desk.onsets().size(), 3U) << "nobody hears another's";
    EXPECT_EQ(lamp.onsets().size(), 3U);
    EXPECT_EQ(played.onsets().size(), 3U);
}

TEST_F(AudioInputTest, FollowsTheDefaultDevices) {
    Ear played;
    Ear spoken;
    const auto playedStream = open(SystemAudio{}, played);
    const auto spokenStream = open(Microphone{}, spoken);
    TonePlayer headphones(server.name(), "headphones", 1000);
    TonePlayer atLamp(server.name(), "at_lamp", 1000);
    EXPECT_FALSE(heard(headphones, played));
    server.control("set-default-sink headphones");
    server.control("set-default-source lamp");
    ASSERT_TRUE(hearsMore(played) && hearsMore(spoken));
    EXPECT_NEAR(heard(headphones, played).value_or(99), 0, kAccuracy);
    EXPECT_NEAR(heard(atLamp, spoken).value_or(99), 0, kLampAccuracy);
    EXPECT_TRUE(played.told().empty()) << "nothing is lost by a change of devices";
    EXPECT_TRUE(spoken.told().empty());
}

TEST_F(AudioInputTest, WaitsForAMicrophoneThatIsPulledOut) {
    Ear ear;
    const auto stream = open(Microphone{"lamp"}, ear);
    server.removeLamp();
    ASSERT_TRUE(runUntil(loop, [&] { return !ear.told().empty(); }));
    EXPECT_EQ(ear.told().front(), "The microphone “lamp” is not connected.");
    server.addMicrophone("other", "at_lamp");
    EXPECT_FALSE(hearsMore(ear, 0.5_s)) << "another one doesn't stand in for the one that was chosen";
    server.addMicrophone("lamp", "at_lamp");
    ASSERT_TRUE(runUntil(loop, [&] { return ear.told().size() == 2; }));
    EXPECT_EQ(ear.told()[1], "returned");
    TonePlayer atLamp(server.name(), "at_lamp", 1000);
    ASSERT_TRUE(hearsMore(ear));
    EXPECT_NEAR(heard(atLamp, ear).value_or(99), 0, kLampAccuracy);
}

TEST_F(AudioInputTest, SurvivesTheServer) {
    Ear ear;
    const auto stream = open(SystemAudio{}, ear);
    ASSERT_TRUE(hearsMore(ear));
    server.kill();
    ASSERT_TRUE(runUntil(loop, [&] { return !ear.told().empty(); }));
    EXPECT_EQ(ear.told().front(), "The sound server has gone away.");
    Ear unheard;
    EXPECT_EQ(source.open(SystemAudio{}, unheard).error().kind, AudioInputError::Kind::NoSoundServer);
    ASSERT_TRUE(server.start());
    ASSERT_TRUE(runUntil(loop, [&] { return ear.told().size() == 2; }));
    TonePlayer speakers(server.name(), "speakers", 1000);
    ASSERT_TRUE(hearsMore(ear));
    EXPECT_NEAR(heard(speakers, ear).value_or(99), 0, kAccuracy);
    stream->reopen();
    ASSERT_TRUE(hearsMore(ear));
    EXPECT_NEAR(heard(speakers, ear).value_or(99), 0, kAccuracy);
    EXPECT_EQ(ear.told().size(), 2U);
}

TEST_F(AudioInputTest, SaysWhatIsMissing) {
    Ear ear;
    const auto why = [&](AudioInputSource& asked, const AudioInputTarget& target) {
        const auto opened = asked.open(target, ear);
        return opened ? std::string("opened") : opened.error().description();
    };
    EXPECT_EQ(why(source, Microphone{"piano"}), "The microphone “piano” is not connected.");
    EXPECT_EQ(why(source, Microphone{"speakers.monitor"}), "The microphone “speakers.monitor” is not connected.");
    server.control("unload-module module-pipe-source");
    server.removeLamp();
    EXPECT_EQ(why(source, Microphone{}), "No microphone is connected.");
    PulseAudioInputSource nowhere(clock, "unix:/nowhere/native");
    EXPECT_EQ(why(nowhere, SystemAudio{}),
              "The sound server does not answer. Start PulseAudio or PipeWire, or record without sound.");
    EXPECT_FALSE(nowhere.microphones());
}

} // namespace morvelin
