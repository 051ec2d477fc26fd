#include "media/GIFWriter.h"

#include <cmath>

#include <gmock/gmock.h>

#include "base/TemporaryFolder.h"
#include "media/ColorConversion.h"
#include "media/FFmpegMovieReader.h"
#include "media/TestPictures.h"

namespace morvelin {
namespace {

/// What a GIF's blocks say, read without decoding its images.
struct Blocks {
    std::vector<int> delays;
    std::vector<std::size_t> imageBytes;
    std::size_t palettes = 0; ///< of images
    bool isEndless = false;
};

Blocks blocksOf(const std::string& file) {
    const auto byte = [&](std::size_t at) { return static_cast<unsigned char>(file.at(at)); };
    const auto pastSubBlocks = [&](std::size_t at) {
        while (byte(at) != 0) at += byte(at) + 1U;
        return at + 1;
    };
    Blocks blocks;
    std::size_t at = 13 + 768;
    while (byte(at) != ';') {
        const std::size_t start = at;
        if (byte(at) == '!') {
            if (byte(at + 1) == 0xF9) blocks.delays.push_back(byte(at + 4) | byte(at + 5) << 8);
            blocks.isEndless |= file.substr(at + 3, 11) == "NETSCAPE2.0" && byte(at + 16) == 0 && byte(at + 17) == 0;
            at = pastSubBlocks(at + 2);
        } else {
            const bool hasPalette = (byte(at + 9) & 0x80) != 0;
            blocks.palettes += hasPalette ? 1 : 0;
            at = pastSubBlocks(at + 11 + (hasPalette ? 768 : 0));
            blocks.imageBytes.push_back(at - start);
        }
    }
    EXPECT_EQ(at + 1, file.size());
    return blocks;
}

class GIFWriterTest : public testing::Test {
protected:
    std::unique_ptr<GIFWriter> create(PixelSize size = kTestSize, double frameRate = 20) {
        auto writer = GIFWriter::create(m_file, size, frameRate);
        EXPECT_TRUE(writer);
        return writer ? std::move(*writer) : nullptr;
    }
    [[nodiscard]] Blocks blocks() const { return blocksOf(readFile(m_file).value()); }

    TemporaryFolder m_folder;
    std::filesystem::path m_file = m_folder.path() / "film.gif";
};

TEST_F(GIFWriterTest, EveryFrameLooksLikeItsPictureAtItsTime) {
    // Given a film that is longer than a stretch of one palette, and noise that fills every code's table many times.
    Picture noise({64, 48}, Subsampling::None);
    std::uint32_t state = 1;
    for (int index = 0; index < 3; ++index)
        for (int y = 0; y < 48; ++y)
            for (int x = 0; x < 64; ++x) {
                state = state * 1664525 + 1013904223;
                noise.plane(index).row(y)[x] = static_cast<std::uint8_t>(index == 0 ? 60 + (state >> 24) / 2 : 128);
            }
    Picture picture = detailedPicture(kTestSize, Subsampling::None);
    for (int index = 0; index < 3; ++index)
        for (int y = 0; y < 48; ++y)
            std::copy_n(noise.plane(index).row(y), 64, picture.plane(index).row(100 + y) + 200);
    auto writer = create();
    for (int i = 0; i < 120; ++i) ASSERT_TRUE(writer->append(picture, drawNumber(picture, i)));
    ASSERT_TRUE(writer->finish());

    const auto film = FFmpegMovieReaderFactory().open(m_file);
    ASSERT_TRUE(film) << film.error().description();
    EXPECT_NEAR((*film)->properties().end.value, 6, 0.005);
    for (int i = 0; i < 120; ++i) {
        const auto frame = (*film)->frameAt(SourceTime(i / 20.0 + 0.02));
        ASSERT_TRUE(frame);
        EXPECT_EQ(frame->number, i);
        EXPECT_EQ(numberIn(*frame->picture), i);
    }
    const Picture& last = *(*film)->frameAt(SourceTime(5.99))->picture;
    double error = 0;
    for (int y = 0; y < kTestSize.height; ++y)
        for (int x = 0; x < kTestSize.width; ++x)
            error += std::abs(last.plane(0).row(y)[x] - picture.plane(0).row(y)[x]);
    EXPECT_LT(error / (kTestSize.width * kTestSize.height), 4);
}

TEST_F(GIFWriterTest, DelaysAddUpToTheExactTimes) {
    for (const double frameRate : {10.0, 12.0, 15.0, 20.0, 24.0, 29.97}) {
        auto writer = create({16, 16}, frameRate);
        const Picture picture = detailedPicture({16, 16}, Subsampling::None);
        for (int i = 0; i < 250; ++i) ASSERT_TRUE(writer->append(picture, {}));
        ASSERT_TRUE(writer->finish());
        const Blocks written = blocks();
        EXPECT_TRUE(written.isEndless);
        ASSERT_EQ(written.delays.size(), 250U);
        double hundredths = 0;
        for (std::size_t i = 0; i < written.delays.size(); ++i) {
            hundredths += written.delays[i];
            EXPECT_NEAR(hundredths, 100 * static_cast<double>(i + 1) / frameRate, 0.5 + 1e-9) << frameRate;
        }
    }
}

TEST_F(GIFWriterTest, WhatStaysCostsNothing) {
    Picture picture = detailedPicture(kTestSize, Subsampling::None);
    auto writer = create();
    ASSERT_TRUE(writer->append(picture, {}));
    ASSERT_TRUE(writer->append(picture, {}));
    fill(picture, {100, 100, 3, 3}, {235, 128, 128});
    ASSERT_TRUE(writer->append(picture, std::vector{whole(picture)}));
    ASSERT_TRUE(writer->append(picture, std::vector{whole(picture)}));
    ASSERT_TRUE(writer->finish());
    const Blocks written = blocks();
    EXPECT_GT(written.imageBytes[0], 20'000U);
    EXPECT_LT(written.imageBytes[1], 20U);
    EXPECT_LT(written.imageBytes[2], 40U) << "the box alone, wherever a change was possible";
    EXPECT_LT(written.imageBytes[3], 20U);
}

TEST_F(GIFWriterTest, ColoursFollowTheFilmAndEvenAreasStayEven) {
    Picture picture({64, 64}, Subsampling::None);
    auto writer = create(picture.size());
    std::vector<Image> shown;
    // Given colours that a first stretch has not seen, each for longer than a stretch.
    for (const auto& colour : {std::array<std::uint8_t, 3>{40, 110, 118}, {180, 60, 200}, {120, 200, 60}}) {
        fill(picture, whole(picture), colour);
        shown.push_back(imageOf(picture));
        for (int i = 0; i < 50; ++i) ASSERT_TRUE(writer->append(picture, std::vector{whole(picture)}));
    }
    ASSERT_TRUE(writer->finish());
    EXPECT_EQ(blocks().palettes, 2U) << "one frame of each new colour; the others are empty";

    const auto film = FFmpegMovieReaderFactory().open(m_file);
    for (std::size_t i = 0; i < shown.size(); ++i) {
        const Image image = imageOf(*(*film)->frameAt(SourceTime(static_cast<double>(i) * 2.5 + 1))->picture);
        for (std::size_t at = 0; at < image.pixels.size(); ++at)
            ASSERT_NEAR(image.pixels[at], shown[i].pixels[at], 4) << "colour " << i << ", byte " << at;
    }
}

TEST_F(GIFWriterTest, TheSystemsReasonComesBack) {
    EXPECT_EQ(GIFWriter::create(m_folder.path() / "gone" / "film.gif", kTestSize, 20).error(), ENOENT);
    const FullDisk disk(10'000);
    auto writer = create();
    ASSERT_TRUE(writer->append(detailedPicture(kTestSize, Subsampling::None), {}));
    const auto finished = writer->finish();
    ASSERT_FALSE(finished);
    EXPECT_EQ(finished.error(), EFBIG);
}

} // namespace
} // namespace morvelin
