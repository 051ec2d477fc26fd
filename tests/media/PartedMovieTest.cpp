// Exports as files: parts that were encoded in any order play as one movie.

#include <algorithm>
#include <array>
#include <fstream>
#include <iterator>
#include <random>

#include <gtest/gtest.h>

#include "base/TemporaryFolder.h"
#include "media/ContainerProbe.h"
#include "media/FFmpegMovieReader.h"
#include "media/FFmpegMovieWriter.h"
#include "media/TestPictures.h"

namespace morvelin {
namespace {

constexpr int kPartLength = 90;

MovieSettings settingsOf(const std::filesystem::path& path, PixelSize size) {
    return {.path = path, .size = size, .frameRate = 30, .bitRate = 1'500'000};
}

std::unique_ptr<PartedMovieWriter> start(const MovieSettings& settings) {
    auto writer = FFmpegMovieWriterFactory().createParted(settings);
    EXPECT_TRUE(writer) << writer.error().description();
    return std::move(*writer);
}

/// A film of numbered pictures that often stand still: which number a frame shows.
int shownNumber(int frame) {
    if (frame < 20) return frame; // all move
    if (frame < 80) return 19;    // stands still for longer than a stream's frame numbers reach
    return 19 + (frame - 80) / 3; // each stands for three frames
}

std::unique_ptr<MoviePart> encode(PartedMovieWriter& writer, int index, int frameCount, PixelSize size) {
    auto part = writer.begin(index);
    EXPECT_TRUE(part) << part.error().description();
    Picture picture = detailedPicture(size);
    for (int frame = index * kPartLength; frame < std::min(frameCount, (index + 1) * kPartLength); ++frame) {
        std::vector<PixelBox> changed;
        if (frame == index * kPartLength || shownNumber(frame) != shownNumber(frame - 1))
            changed = drawNumber(picture, shownNumber(frame));
        EXPECT_TRUE((*part)->append(picture, changed));
    }
    EXPECT_TRUE((*part)->finish());
    return std::move(*part);
}

std::string bytesOf(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

TEST(PartedMovie, PlaysEveryFrameInWhateverOrderItsPartsWereEncoded) {
    constexpr int kFrames = 400; // four whole parts and one that is short
    const TemporaryFolder folder;
    for (const PixelSize size : {kTestSize, PixelSize{338, 182}}) { // whole blocks, and sides that end inside one
        std::array<std::string, 2> bytes;
        for (const bool isBackwards : {false, true}) {
            const MovieSettings settings = settingsOf(folder.path() / "film.mp4", size);
            const auto writer = start(settings);
            std::vector<std::unique_ptr<MoviePart>> parts(5);
            for (int i = 0; i < 5; ++i) {
                const int index = isBackwards ? 4 - i : i;
                parts[static_cast<std::size_t>(index)] = encode(*writer, index, kFrames, size);
            }
            for (auto& part : parts) ASSERT_TRUE(writer->place(std::move(part)));
            ASSERT_TRUE(writer->finish());
            bytes[isBackwards ? 1 : 0] = bytesOf(settings.path);
        }
        EXPECT_TRUE(bytes[0] == bytes[1]);

        const ProbedMovie movie = probe(folder.path() / "film.mp4");
        ASSERT_EQ(movie.packets.size(), static_cast<std::size_t>(kFrames));
        for (std::size_t i = 0; i < movie.packets.size(); ++i)
            EXPECT_EQ(movie.packets[i].isKeyFrame, i % kPartLength == 0 || i % kPartLength == 60) << i;
        const auto reader = FFmpegMovieReaderFactory({.threads = 1}).open(folder.path() / "film.mp4");
        ASSERT_TRUE(reader);
        for (int i = 0; i < kFrames; ++i) {
            const auto frame = (*reader)->frameAt(SourceTime((i + 0.5) / 30));
            ASSERT_TRUE(frame) << i << ": " << frame.error().description();
            EXPECT_EQ(frame->number, i);
            EXPECT_EQ(numberIn(*frame->picture), shownNumber(i)) << i;
        }
        // From the middle of a stillness, where the decoder starts at the key frame before it.
        EXPECT_EQ(numberIn(*(*reader)->frameAt(SourceTime(70.5 / 30))->picture), 19);
    }
}

TEST(PartedMovie, KeepsToItsBitRateOnAverageAndStaysBelowItWhereLittleMoves) {
    const TemporaryFolder folder;
    constexpr int kParts = 20;
    Picture picture(kTestSize, Subsampling::Quarter);
    std::mt19937 random(9);
    // Noise all over is the most that a film can ask for. It stands still for the given share of its frames.
    const auto rateOf = [&](double stillness) {
        const MovieSettings settings = settingsOf(folder.path() / "film.mp4", kTestSize);
        const auto writer = start(settings);
        for (int index = 0; index < kParts; ++index) {
            auto part = writer->begin(index);
            for (int frame = 0; frame < 60; ++frame) {
                const bool stands = frame > 0 && frame < stillness * 60;
                for (int plane = 0; plane < 3 && !stands; ++plane)
                    for (int y = 0; y < picture.plane(plane).height; ++y)
                        std::ranges::generate_n(picture.plane(plane).row(y), picture.plane(plane).width,
                                                [&] { return static_cast<std::uint8_t>(96 + (random() & 63)); });
                const std::array changed{whole(picture)};
                EXPECT_TRUE((*part)->append(picture, std::span(changed).first(stands ? 0 : 1)));
            }
            EXPECT_TRUE((*part)->finish());
            EXPECT_TRUE(writer->place(std::move(*part)));
        }
        EXPECT_TRUE(writer->finish());
        const double rate = static_cast<double>(std::filesystem::file_size(settings.path)) * 8 / (2 * kParts);
        return rate / static_cast<double>(settings.bitRate);
    };
    for (const double stillness : {0.0, 0.5}) {
        const double rate = rateOf(stillness);
        EXPECT_LT(rate, 1.25) << stillness;
        EXPECT_GT(rate, 0.75) << stillness << ": what is allowed is used";
    }
    EXPECT_LT(rateOf(1), 0.6);
}

} // namespace
} // namespace morvelin
