// Sound out of files of many forms: every sample where it belongs, whatever order it is asked for in.

#include "media/FFmpegSoundReader.h"

#include <algorithm>
#include <fstream>
#include <iterator>
#include <random>

#include <gtest/gtest.h>

#include "base/TemporaryFolder.h"
#include "media/TestSound.h"

namespace morvelin {
namespace {

/// A file of `risingTone(seconds)`, coded by the command-line tool.
void encode(const std::filesystem::path& path, double seconds, const std::string& arguments) {
    const auto wave = path.parent_path() / "source.wav";
    writeWave(wave, kSoundRate, 2, risingTone(seconds));
    const std::string command = "ffmpeg -v error -y -i '" + wave.string() + "' " + arguments + " '" + path.string() +
                                "' </dev/null";
    ASSERT_EQ(std::system(command.c_str()), 0) << command;
}

std::unique_ptr<SoundReader> openSound(
    const std::filesystem::path& path, Log log = [](std::string_view) {}) {
    auto reader = FFmpegSoundReaderFactory(std::move(log)).open(path, 0);
    EXPECT_TRUE(reader) << reader.error().description();
    return reader ? std::move(*reader) : nullptr;
}

std::vector<float> read(SoundReader& reader, std::int64_t first, std::int64_t count) {
    std::vector<float> samples(static_cast<std::size_t>(count) * kSoundChannels, 9.0F);
    reader.read(first, samples);
    return samples;
}

TEST(SoundReader, FindsEverySampleInFilesOfAllForms) {
    struct Case {
        const char* file;
        const char* arguments;
        double noise;         ///< of the coding
        std::int64_t lag = 0; ///< where the file tells nobody by how much its coding delays it
    };
    for (const Case& c : {Case{"a.wav", "", 1e-8},
                          {"a.flac", "", 1e-8},
                          {"a.m4a", "-c:a aac -aac_coder fast -b:a 160k", 2e-3},
                          {"plain.aac", "-c:a aac -aac_coder fast -b:a 160k", 2e-3, 1024},
                          {"a.mp3", "-b:a 192k", 2e-3},
                          {"plain.mp3", "-b:a 192k -write_xing 0", 2e-3, 1105},
                          {"a.ogg", "-c:a libvorbis -q:a 7", 5e-3},
                          {"a.opus", "-c:a libopus -b:a 160k", 2e-2},
                          {"48.wav", "-ar 48000", 1e-4},
                          {"96.flac", "-ar 96000 -ac 1 -af 'pan=mono|c0=c0'", 1e-4},
                          {"22.m4a", "-ar 22050 -c:a aac -aac_coder fast -b:a 160k", 1e-2}}) {
        const TemporaryFolder folder;
        encode(folder.path() / c.file, 20, c.arguments);
        const auto reader = openSound(folder.path() / c.file);
        ASSERT_TRUE(reader) << c.file;
        EXPECT_NEAR(reader->span().start.value, 0, 1e-6) << c.file;
        EXPECT_NEAR(reader->span().end.value, 20, 0.06) << c.file;

        const auto wanted = leftOf(risingTone(20));
        const auto all = leftOf(read(*reader, 0, 20 * kSoundRate));
        EXPECT_EQ(lagOf(wanted, all, 100'000, 104'000), c.lag) << c.file;
        EXPECT_LT(noiseAt(wanted, all, c.lag, 10'000, 800'000), c.noise) << c.file;

        std::mt19937 random(5);
        for (int count = 0; count < 12; ++count) {
            const auto first = static_cast<std::int64_t>(random() % (19 * kSoundRate));
            const auto length = static_cast<std::int64_t>(1 + random() % 9000);
            const auto some = leftOf(read(*reader, first, length));
            const std::span<const float> same = std::span(all).subspan(static_cast<std::size_t>(first), some.size());
            for (std::size_t i = 0; i < some.size(); ++i)
                ASSERT_NEAR(some[i], same[i], 3e-3) << c.file << ": sample " << i << " of those from " << first;
        }
        for (const float sample : read(*reader, 30 * kSoundRate, 1000)) EXPECT_EQ(sample, 0) << "after the end";
        const auto around = read(*reader, -100, 200);
        EXPECT_EQ(*std::max_element(around.begin(), around.begin() + 200), 0) << "before the beginning";
    }
}

TEST(SoundReader, PutsChannelsWhereTwoEarsHearThem) {
    const TemporaryFolder folder;
    struct Case {
        std::uint16_t channels;
        std::vector<float> frame;
        float left, right;
    };
    for (const Case& c : {Case{1, {0.5F}, 0.5F, 0.5F},
                          {2, {0.5F, -0.25F}, 0.5F, -0.25F},
                          {3, {0.6F, 0, 0}, 0.6F, 0},
                          {6, {0.5F, 0.25F, 0, 0, 0, 0}, 0.5F, 0.25F}}) {
        std::vector<float> samples;
        for (int i = 0; i < 1000; ++i) samples.insert(samples.end(), c.frame.begin(), c.frame.end());
        writeWave(folder.path() / "a.wav", kSoundRate, c.channels, samples);
        const auto heard = read(*openSound(folder.path() / "a.wav"), 500, 1);
        const float scale = c.channels > 2 ? heard[0] / c.left : 1; // many channels may be softened to fit
        EXPECT_GT(scale, 0.3F);
        EXPECT_NEAR(heard[0], c.left * scale, 1e-3) << c.channels;
        EXPECT_NEAR(heard[1], c.right * scale, 1e-3) << c.channels;
    }
}

TEST(SoundReader, IsSilentWhereTheFileIsDamagedAndSaysSoOnce) {
    for (const char* arguments : {"-c:a aac -aac_coder fast -b:a 160k", "-c:a flac"}) {
        const TemporaryFolder folder;
        const auto path = folder.path() / (std::string(arguments).contains("flac") ? "a.flac" : "a.m4a");
        encode(path, 10, arguments);
        std::string bytes;
        {
            std::ifstream file(path, std::ios::binary);
            bytes.assign(std::istreambuf_iterator<char>(file), {});
        }
        std::mt19937 random(3);
        for (std::size_t at = bytes.size() * 2 / 5; at < bytes.size() / 2; ++at)
            bytes[at] = static_cast<char>(random());
        std::ofstream(path, std::ios::binary) << bytes;

        std::vector<std::string> lines;
        const auto reader = openSound(path, [&](std::string_view line) { lines.emplace_back(line); });
        const auto wanted = leftOf(risingTone(10));
        const auto got = leftOf(read(*reader, 0, 10 * kSoundRate));
        EXPECT_LT(noiseAt(wanted, got, 0, 0, 3 * kSoundRate), 5e-3) << arguments;
        EXPECT_LT(noiseAt(wanted, got, 0, 6 * kSoundRate, 9 * kSoundRate), 5e-3) << arguments;
        ASSERT_EQ(lines.size(), 1u) << arguments;
        EXPECT_TRUE(lines[0].starts_with("[SoundReader] The sound of “a.")) << lines[0];
    }
}

TEST(SoundReader, SaysWhyThereIsNothingToRead) {
    const TemporaryFolder folder;
    writeWave(folder.path() / "a.wav", kSoundRate, 2, risingTone(0.1));
    std::ofstream(folder.path() / "text.m4a") << "no sound at all";
    std::ofstream(folder.path() / "empty.m4a").flush();
    struct Case {
        const char* file;
        std::size_t track;
        SoundReaderError::Kind kind;
    };
    using enum SoundReaderError::Kind;
    for (const Case& c : {Case{"a.wav", 1, NoSuchTrack},
                          {"text.m4a", 0, CannotOpen},
                          {"empty.m4a", 0, CannotOpen},
                          {"none.m4a", 0, CannotOpen}}) {
        const auto reader = FFmpegSoundReaderFactory([](std::string_view) {}).open(folder.path() / c.file, c.track);
        ASSERT_FALSE(reader) << c.file;
        EXPECT_EQ(reader.error().kind, c.kind) << c.file;
        EXPECT_TRUE(reader.error().description().starts_with("“" + std::string(c.file) + "”")) << c.file;
    }
}

} // namespace
} // namespace morvelin
