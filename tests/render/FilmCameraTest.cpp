// The camera's bubble in a film: its place, and the frames of real camera movies that are late, short or broken.

#include <fstream>

#include "FilmFixture.h"
#include "render/CameraBubble.h"
#include "render/FilmInstruction.h"
#include "render/FilmRenderer.h"

namespace morvelin {
namespace {

TEST(CameraBubble, LiesInsideTheVideo) {
    const Rectangle video{100, 50, 1600, 900};
    struct Case {
        const char* what;
        NormalizedRect rect;
        double radius;
        RoundedRectangle square;
    };
    for (const Case& c : std::vector<Case>{{"as it is", {0.75, 0.6, 0.2, 0.3556}, 0.1, {{1300, 590, 320, 320}, 32}},
                                           {"its width counts", {0.1, 0.1, 0.1, 0.9}, 0.5, {{260, 140, 160, 160}, 80}},
                                           {"past the corner", {0.95, 0.95, 0.2, 0.2}, 0, {{1380, 630, 320, 320}, 0}},
                                           {"before the corner", {-3, -3, 0.2, 0.2}, 0, {{100, 50, 320, 320}, 0}},
                                           {"as large as it can be", {0.4, 0.4, 5, 5}, 0.2, {{100, 50, 900, 900}, 180}},
                                           {"never too small", {0.5, 0.5, 0.001, 0.001}, 0.5, {{900, 500, 32, 32}, 16}},
                                           {"a circle at most", {0, 0, 0.2, 0.2}, 7, {{100, 50, 320, 320}, 160}},
                                           {"no corners below 0", {0, 0, 0.2, 0.2}, -7, {{100, 50, 320, 320}, 0}}}) {
        const auto bubble = cameraBubble({c.rect, c.radius, true, {}}, video, 3);
        ASSERT_TRUE(bubble) << c.what;
        EXPECT_NEAR(bubble->square.rect.x, c.square.rect.x, 1e-9) << c.what;
        EXPECT_NEAR(bubble->square.rect.y, c.square.rect.y, 1e-9) << c.what;
        EXPECT_NEAR(bubble->square.rect.width, c.square.rect.width, 1e-9) << c.what;
        EXPECT_EQ(bubble->square.rect.width, bubble->square.rect.height) << c.what;
        EXPECT_NEAR(bubble->square.radius, c.square.radius, 1e-9) << c.what;
    }
    EXPECT_FALSE(cameraBubble({{0, 0, 0.5, 0.5}, 0, false, {}}, {0, 0, 40, 1}, 3)) << "1 pixel is not seen";
}

constexpr double kCameraRate = 10;
constexpr PixelBox kMarkedBox{112, 40, 96, 96}; ///< in the middle of the camera's picture
constexpr double kFilmRate = 30;
/// The bubble is as high as the film; this is its middle.
constexpr int kBubbleMiddle = kTestSize.height / 2;

int levelOf(int number) { return 40 + 6 * number; }

/// The camera's frame that shows; nothing where the recording's detail is seen instead of the marked box.
std::optional<int> cameraFrameIn(const Picture& picture) {
    int least = 255, most = 0;
    for (int y = kBubbleMiddle - 8; y < kBubbleMiddle + 8; ++y) {
        for (int x = kBubbleMiddle - 8; x < kBubbleMiddle + 8; ++x) {
            least = std::min<int>(least, picture.plane(0).row(y)[x]);
            most = std::max<int>(most, picture.plane(0).row(y)[x]);
        }
    }
    if (most - least > 6) return std::nullopt;
    return static_cast<int>(std::lround((most + least - 2 * 40) / 12.0));
}

class FilmCameraTest : public FilmFixture {
protected:
    void recordCamera(int frames, MovieSettings::Container container) {
        auto writer = m_writers.create({.path = m_cameraPath,
                                        .container = container,
                                        .pace = MovieSettings::Pace::RealTime,
                                        .size = kTestSize,
                                        .frameRate = kCameraRate,
                                        .bitRate = 4'000'000,
                                        .keyFrameInterval = Seconds(0.5)});
        ASSERT_TRUE(writer);
        for (int i = 0; i < frames; ++i) {
            Picture picture = detailedPicture(kTestSize);
            fill(picture, kMarkedBox, {static_cast<std::uint8_t>(levelOf(i)), 128, 128});
            ASSERT_TRUE((*writer)->append(picture, Seconds(i / kCameraRate), std::vector{whole(picture)}));
        }
        ASSERT_TRUE((*writer)->finish(Seconds(frames / kCameraRate)));
    }

    void damage(std::uintmax_t from, std::uintmax_t bytes) {
        std::fstream file(m_cameraPath, std::ios::binary | std::ios::in | std::ios::out);
        file.seekp(static_cast<std::streamoff>(from));
        file << std::string(bytes, '\x55');
    }

    /// The camera's frame in each frame of the film.
    std::vector<std::optional<int>> cameraFrames(const std::vector<VideoFragment>& fragments, double startOffset) {
        auto project = plainProject(fragments);
        EditPayload& edit = project.versions[0].edit;
        edit.camera = CameraSettings{{0, 0, 1, 1}, 0, false, Seconds(startOffset)};
        edit.cameraEnabled = true;
        const auto recording = open(project.recordingURL);
        const auto camera = open(m_cameraPath);
        FilmIngredients ingredients{edit, {}, nullptr, kTestSize, kTestSize, FilmStyle::OfProject, {}, nullptr, true};
        const Film film{FragmentCompositionBuilder::build(recording->properties(), fragments).value(),
                        makeInstruction(ingredients), kFilmRate};
        std::vector<std::optional<int>> numbers;
        const auto note = [&](std::int64_t, const ComposedFrame& frame) -> Result<void, ExportError> {
            numbers.push_back(cameraFrameIn(frame.picture));
            return {};
        };
        const Log log = [this](std::string_view line) { m_lines.emplace_back(line); };
        Compositor compositor(film.instruction, Subsampling::Quarter);
        EXPECT_TRUE(renderPart(film, {0, film.frameCount()}, {*recording, camera.get(), log}, compositor, note, {}));
        EXPECT_EQ(numbers.size(), static_cast<std::size_t>(film.frameCount()));
        return numbers;
    }

    std::filesystem::path m_cameraPath = m_bundle / "camera.mov";
    std::vector<std::string> m_lines;
};

TEST_F(FilmCameraTest, FollowsTheFragmentsByItsOwnClock) {
    record(90);
    struct Case {
        const char* what;
        int frames;
        double startOffset;
        std::vector<VideoFragment> fragments;
        std::vector<std::pair<std::size_t, int>> shown; ///< film frame, camera frame
    };
    for (const Case& c : std::vector<Case>{
             {"in step", 30, 0, {fragment(0, 3)}, {{0, 0}, {2, 0}, {3, 1}, {44, 14}, {89, 29}}},
             {"starts later: the first is held", 30, 2, {fragment(0, 3)}, {{0, 0}, {59, 0}, {62, 0}, {63, 1}, {89, 9}}},
             {"started earlier", 30, -0.5, {fragment(0, 2)}, {{0, 5}, {3, 6}, {59, 24}}},
             {"ends early: the last is held", 8, 0, {fragment(0, 3)}, {{20, 6}, {21, 7}, {60, 7}, {89, 7}}},
             {"cuts, order and speed; a seam shows the later",
              30,
              0,
              {fragment(2, 3, 2, 1), fragment(0, 1, 1, 0)},
              {{0, 0}, {29, 9}, {30, 20}, {31, 20}, {32, 21}, {44, 29}}}}) {
        recordCamera(c.frames, MovieSettings::Container::FragmentedQuickTime);
        const auto numbers = cameraFrames(c.fragments, c.startOffset);
        for (const auto& [at, number] : c.shown) EXPECT_EQ(numbers[at], number) << c.what << ", frame " << at;
    }
    EXPECT_TRUE(m_lines.empty());
}

TEST_F(FilmCameraTest, DamageCostsOnlyAStretchOfTheBubble) {
    record(90);
    recordCamera(30, MovieSettings::Container::FastStartMPEG4);
    damage(std::filesystem::file_size(m_cameraPath) / 2, 600);
    const auto numbers = cameraFrames({fragment(0, 3)}, 0);
    int missing = 0;
    for (std::size_t i = 0; i < numbers.size(); ++i) {
        EXPECT_EQ(numbers[i].value_or(static_cast<int>(i) / 3), static_cast<int>(i) / 3) << i;
        missing += numbers[i] ? 0 : 1;
    }
    EXPECT_GT(missing, 0);
    EXPECT_LE(missing, 36) << "no more than the damaged key frame's pictures and a moment";
    ASSERT_EQ(m_lines.size(), 1U);
    EXPECT_THAT(m_lines[0], testing::StartsWith("[FragmentCompositionBuilder] Could not lay out camera fragment: "));
}

TEST_F(FilmCameraTest, ALostEndIsNotHeld) {
    record(90);
    recordCamera(10, MovieSettings::Container::FastStartMPEG4);
    damage(std::filesystem::file_size(m_cameraPath) - 600, 600);
    const auto numbers = cameraFrames({fragment(2, 3)}, 0);
    EXPECT_THAT(numbers, testing::Each(testing::Eq(std::nullopt)));
    ASSERT_EQ(m_lines.size(), 1U);
    EXPECT_THAT(m_lines[0], testing::StartsWith("[FragmentCompositionBuilder] Could not hold a camera frame: "));
}

TEST_F(FilmCameraTest, ACutOffMovieHoldsWhatIsLeft) {
    record(90);
    recordCamera(30, MovieSettings::Container::FragmentedQuickTime);
    std::filesystem::resize_file(m_cameraPath, std::filesystem::file_size(m_cameraPath) / 2);
    const auto numbers = cameraFrames({fragment(0, 3)}, 0);
    ASSERT_TRUE(numbers.back());
    EXPECT_GT(*numbers.back(), 3);
    EXPECT_LT(*numbers.back(), 27);
    for (std::size_t i = 0; i < numbers.size(); ++i)
        EXPECT_EQ(numbers[i], std::min(static_cast<int>(i) / 3, *numbers.back())) << i;
}

} // namespace
} // namespace morvelin
