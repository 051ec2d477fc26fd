// A camera's frames in each layout that drivers give become the same picture.

#include <cmath>
#include <cstdio>

#include <gtest/gtest.h>

#include "media/CameraPictures.h"

namespace morvelin {

namespace {

constexpr PixelSize kSize{16, 8};

/// A plain orange of BT.601, limited range, as small cameras give it.
constexpr std::uint8_t kY = 150;
constexpr std::uint8_t kCb = 60;
constexpr std::uint8_t kCr = 170;

std::vector<std::uint8_t> repeated(std::initializer_list<std::uint8_t> pattern, std::size_t count) {
    std::vector<std::uint8_t> bytes;
    for (std::size_t turn = 0; turn < count; ++turn) bytes.insert(bytes.end(), pattern);
    return bytes;
}

std::vector<std::uint8_t> joined(std::initializer_list<std::vector<std::uint8_t>> parts) {
    std::vector<std::uint8_t> bytes;
    for (const auto& part : parts) bytes.insert(bytes.end(), part.begin(), part.end());
    return bytes;
}

/// The same orange as a JPEG, by FFmpeg's program.
std::vector<std::uint8_t> jpeg() {
    std::vector<std::uint8_t> bytes(1 << 16);
    FILE* pipe = popen("ffmpeg -v error -f lavfi -i color=c=0xdf9513:s=16x8:d=0.04:r=25 -frames:v 1 -q:v 1 "
                       "-pix_fmt yuvj422p -f mjpeg - </dev/null",
                       "r");
    bytes.resize(pipe != nullptr ? fread(bytes.data(), 1, bytes.size(), pipe) : 0);
    if (pipe != nullptr) pclose(pipe);
    return bytes;
}

std::array<int, 3> middle(const Picture& picture) {
    std::array<int, 3> samples{};
    for (int index = 0; index < 3; ++index) {
        const auto plane = picture.plane(index);
        samples[static_cast<std::size_t>(index)] = plane.row(plane.height / 2)[plane.width / 2];
    }
    return samples;
}

} // namespace

TEST(CameraPictures, ReadsEveryLayout) {
    const std::size_t pixels = kSize.width * kSize.height;
    const std::vector<std::uint8_t> luma = repeated({kY}, pixels);
    struct Case {
        const char* name;
        CameraPixels pixels;
        std::vector<std::uint8_t> bytes;
        std::ptrdiff_t stride = 0;
    };
    const std::vector<Case> cases{
        {"YUYV", CameraPixels::YUYV, repeated({kY, kCb, kY, kCr}, pixels / 2)},
        {"UYVY", CameraPixels::UYVY, repeated({kCb, kY, kCr, kY}, pixels / 2)},
        {"NV12", CameraPixels::NV12, joined({luma, repeated({kCb, kCr}, pixels / 4)})},
        {"I420", CameraPixels::I420, joined({luma, repeated({kCb}, pixels / 4), repeated({kCr}, pixels / 4)})},
        {"NV12 with padded rows", CameraPixels::NV12,
         joined({repeated({kY}, pixels * 2), repeated({kCb, kCr}, pixels / 2)}), kSize.width * 2},
        {"RGB", CameraPixels::RGB, repeated({223, 149, 19}, pixels)},
        {"BGR", CameraPixels::BGR, repeated({19, 149, 223}, pixels)},
        {"BGRX", CameraPixels::BGRX, repeated({19, 149, 223, 0}, pixels)},
        {"JPEG", CameraPixels::MotionJPEG, jpeg()}};
    CameraPictures pictures;
    for (const Case& c : cases) {
        const auto picture = pictures.picture({c.bytes, c.pixels, kSize, c.stride});
        ASSERT_TRUE(picture) << c.name;
        EXPECT_EQ(picture->size(), kSize) << c.name;
        // The orange in BT.709.
        const auto [y, cb, cr] = middle(*picture);
        EXPECT_NEAR(y, 149, 3) << c.name;
        EXPECT_NEAR(cb, 64, 4) << c.name;
        EXPECT_NEAR(cr, 166, 4) << c.name;
    }
}

TEST(CameraPictures, PassesOverWhatIsCutShort) {
    CameraPictures pictures;
    const auto whole = repeated({kY, kCb, kY, kCr}, kSize.width * kSize.height / 2);
    const std::span most(whole.data(), whole.size() - 1);
    EXPECT_FALSE(pictures.picture({most, CameraPixels::YUYV, kSize, 0}));
    EXPECT_FALSE(pictures.picture({whole, CameraPixels::YUYV, kSize, 8})) << "rows lie in one another";
    EXPECT_FALSE(pictures.picture({whole, CameraPixels::YUYV, {0, 8}, 0}));
    EXPECT_FALSE(pictures.picture({whole, CameraPixels::MotionJPEG, kSize, 0})) << "no JPEG";
    EXPECT_FALSE(pictures.picture({{}, CameraPixels::MotionJPEG, kSize, 0}));
    EXPECT_TRUE(pictures.picture({whole, CameraPixels::YUYV, kSize, 0})) << "the next whole one";
}

} // namespace morvelin
