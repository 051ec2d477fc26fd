// The screen's picture, fetched by damage, against the same pixels asked for plainly.

#include <chrono>
#include <cstring>
#include <random>
#include <thread>

#include <gtest/gtest.h>

#include "platform/x11/FetchPlan.h"
#include "x11/ScreenFixture.h"

namespace morvelin {

namespace {

/// A picture kept up only by what a stream says has changed.
class Follower {
public:
    explicit Follower(PixelSize size)
        : m_size(size),
          m_pixels(static_cast<std::size_t>(size.width) * static_cast<std::size_t>(size.height) * 4) {}

    void take(const ScreenFrame& frame) {
        ++frames;
        for (const PixelBox& box : frame.changed) {
            changedPixels += std::int64_t{box.width} * box.height;
            for (int y = box.y; y < box.bottom(); ++y)
                std::memcpy(at(box.x, y), frame.pixels.data + y * frame.pixels.stride + box.x * 4,
                            static_cast<std::size_t>(box.width) * 4);
        }
    }

    /// The first pixel whose colour is another than in `truth`; nothing when all are alike.
    [[nodiscard]] std::optional<std::pair<int, int>> difference(const std::vector<std::uint8_t>& truth) const {
        if (truth.size() != m_pixels.size()) return std::pair{-1, -1};
        for (int y = 0; y < m_size.height; ++y)
            for (int x = 0; x < m_size.width; ++x) {
                const std::size_t index = offset(x, y);
                if (std::memcmp(&truth[index], &m_pixels[index], 3) != 0) return std::pair{x, y};
            }
        return std::nullopt;
    }

    int frames = 0;
    std::int64_t changedPixels = 0;

private:
    [[nodiscard]] std::size_t offset(int x, int y) const {
        return (static_cast<std::size_t>(y) * static_cast<std::size_t>(m_size.width) + static_cast<std::size_t>(x)) * 4;
    }
    std::uint8_t* at(int x, int y) { return &m_pixels[offset(x, y)]; }

    PixelSize m_size;
    std::vector<std::uint8_t> m_pixels;
};

class ScreenStreamTest : public ScreenFixture {
protected:
    void open(const PixelBox& area, const std::string& displayID = "") {
        auto opened = source->open({area, displayID});
        ASSERT_TRUE(opened) << opened.error().description();
        stream = std::move(*opened);
        follower.emplace(PixelSize{area.width, area.height});
        ASSERT_TRUE(follow(1_s)) << "the first frame comes by itself";
    }

    /// Whether a frame came within the time; it has been followed.
    bool follow(Seconds timeout) {
        const auto came = stream->next(timeout, [&](const ScreenFrame& frame) { follower->take(frame); });
        return came && *came;
    }
    void followAll() {
        desktop->settle();
        while (follow(0.1_s)) {}
    }

    std::unique_ptr<ScreenStream> stream;
    std::optional<Follower> follower;
};

constexpr PixelBox kScreen{0, 0, 1280, 720};
constexpr PixelBox kPart{101, 53, 700, 500};

} // namespace

TEST_F(ScreenStreamTest, FollowsRandomDrawingPixelForPixel) {
    for (const PixelBox& area : {kScreen, kPart}) {
        open(area);
        const xcb_window_t window = desktop->openWindow({60, 40, 900, 600}, 0x204060);
        followAll();
        std::mt19937 random(7);
        const auto below = [&](int end) { return static_cast<int>(random() % static_cast<unsigned>(end)); };
        for (int round = 0; round < 40; ++round) {
            for (int count = below(30); count >= 0; --count)
                desktop->fill(window, {below(900), below(600), 1 + below(count % 7 == 0 ? 400 : 20), 1 + below(40)},
                              random() & 0xffffff);
            desktop->settle();
            follow(0.1_s);
        }
        followAll();
        EXPECT_EQ(follower->difference(desktop->pixels(area)), std::nullopt);
    }
}

TEST_F(ScreenStreamTest, FetchesOnlyWhatWasDrawn) {
    open(kScreen);
    const xcb_window_t window = desktop->openWindow({0, 0, 1280, 720}, 0x808080);
    followAll();
    follower->changedPixels = 0;
    desktop->fill(window, {100, 100, 6, 13}, 0x000000);
    desktop->fill(window, {1200, 700, 10, 10}, 0x000000);
    followAll();
    EXPECT_EQ(follower->changedPixels, 6 * 13 + 10 * 10);
}

TEST_F(ScreenStreamTest, ShowsNothingForAScreenThatStandsStill) {
    open(kScreen);
    const xcb_window_t window = desktop->openWindow({0, 0, 400, 400}, 0x808080);
    followAll();
    const int before = follower->frames;
    desktop->fill(window, {0, 0, 400, 400}, 0x808080); // drawn again as it was
    for (int x = 0; x < 400; x += 20) desktop->movePointer(x, 200);
    followAll();
    EXPECT_EQ(follower->frames, before);
}

TEST_F(ScreenStreamTest, LeavesThePointerOut) {
    const xcb_window_t window = desktop->openWindow(kScreen, 0x3070b0);
    desktop->setPointer(window, 68);
    desktop->movePointer(300, 300);
    open({280, 280, 64, 64});
    desktop->movePointer(310, 310);
    desktop->fill(window, {300, 300, 4, 4}, 0x3070b1); // damage right under the pointer
    followAll();
    std::vector<std::uint8_t> plain(64 * 64 * 4);
    for (std::size_t pixel = 0; pixel < 64 * 64; ++pixel) {
        const std::size_t x = pixel % 64;
        const std::size_t y = pixel / 64;
        const bool isDrawn = x >= 20 && x < 24 && y >= 20 && y < 24;
        const std::array<std::uint8_t, 4> colour{static_cast<std::uint8_t>(isDrawn ? 0xb1 : 0xb0), 0x70, 0x30, 0};
        std::memcpy(&plain[pixel * 4], colour.data(), 4);
    }
    EXPECT_EQ(follower->difference(plain), std::nullopt);
}

TEST_F(ScreenStreamTest, ComesAtMostSixtyTimesASecond) {
    open(kScreen);
    const xcb_window_t window = desktop->openWindow({0, 0, 400, 400}, 0x808080);
    followAll();
    follower->frames = 0;
    const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(500);
    std::jthread painter([&](const std::stop_token& stop) {
        for (std::uint32_t colour = 0; !stop.stop_requested(); ++colour) {
            desktop->fill(window, {0, 0, 50, 50}, colour & 0xffffff);
            desktop->settle();
        }
    });
    while (std::chrono::steady_clock::now() < end) follow(0.05_s);
    EXPECT_LE(follower->frames, 32);
    EXPECT_GE(follower->frames, 10);
}

TEST_F(ScreenStreamTest, IsInterruptedFromAnotherThread) {
    open(kScreen);
    followAll();
    std::jthread interrupter([&] {
        std::this_thread::sleep_for(std::chrono::milliseconds(30));
        stream->interrupt();
    });
    const auto start = std::chrono::steady_clock::now();
    EXPECT_FALSE(follow(20_s));
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(5));
}

TEST_F(ScreenStreamTest, TellsThatTheServerHasGone) {
    open(kScreen);
    display.kill();
    const auto frame = stream->next(5_s, [](const ScreenFrame&) {});
    ASSERT_FALSE(frame);
    EXPECT_EQ(frame.error().kind, ScreenError::Kind::ConnectionLost);
    EXPECT_NE(frame.error().description().find(display.name()), std::string::npos);
}

TEST_F(ScreenStreamTest, EndsWhenItsMonitorGoesAndOnlyThen) {
    desktop->addMonitor("left", {0, 0, 640, 720});
    desktop->addMonitor("right", {640, 0, 640, 720});
    const auto displays = source->displays();
    ASSERT_TRUE(displays);
    ASSERT_EQ(displays->size(), 2U);
    EXPECT_EQ((*displays)[1].id, "right");
    EXPECT_EQ((*displays)[1].frame, (PixelBox{640, 0, 640, 720}));

    open((*displays)[1].frame, "right");
    desktop->removeMonitor("left");
    const auto kept = stream->next(0.2_s, [](const ScreenFrame&) {});
    EXPECT_TRUE(kept);
    desktop->removeMonitor("right");
    const auto lost = stream->next(2_s, [](const ScreenFrame&) {});
    ASSERT_FALSE(lost);
    EXPECT_EQ(lost.error().kind, ScreenError::Kind::DisplayNotFound);
}

TEST_F(ScreenStreamTest, IsBlackWhereAShrunkDesktopEndsAndComesBack) {
    desktop->addMode({800, 600});
    const xcb_window_t window = desktop->openWindow(kScreen, 0xffffff);
    open(kScreen);
    desktop->setMode({800, 600});
    desktop->fill(window, {10, 10, 10, 10}, 0xff0000);
    followAll();
    const auto seen = desktop->pixels({0, 0, 800, 600});
    ASSERT_EQ(seen.size(), 800U * 600 * 4);
    std::vector<std::uint8_t> expected(1280 * 720 * 4);
    for (std::size_t y = 0; y < 600; ++y) std::memcpy(&expected[y * 1280 * 4], &seen[y * 800 * 4], 800 * 4);
    EXPECT_EQ(follower->difference(expected), std::nullopt);

    desktop->setMode({1280, 720});
    desktop->fill(window, kScreen, 0x00ff00);
    followAll();
    EXPECT_EQ(follower->difference(desktop->pixels(kScreen)), std::nullopt);
}

TEST(ScreenSource, SaysInOneSentenceThatNoServerAnswers) {
    const auto absent = X11ScreenSource::connect(":4711");
    ASSERT_FALSE(absent);
    EXPECT_EQ(absent.error().kind, ScreenError::Kind::NoDisplayServer);
    EXPECT_NE(absent.error().description().find(":4711"), std::string::npos);

    unsetenv("DISPLAY");
    const auto unnamed = X11ScreenSource::connect("");
    ASSERT_FALSE(unnamed);
    EXPECT_NE(unnamed.error().description().find("DISPLAY is not set"), std::string::npos);
}

TEST(FetchPlan, MergesWhatIsCheaperTogetherAndCoversAll) {
    const auto contains = [](const PixelBox& outer, const PixelBox& inner) { return outer.united(inner) == outer; };
    struct Case {
        const char* what;
        std::vector<PixelBox> drawn;
        std::size_t requests;
    };
    std::vector<PixelBox> checkerboard;
    for (int y = 0; y < 1080; y += 20)
        for (int x = 0; x < 1920; x += 20) checkerboard.push_back({x, y, 10, 10});
    for (const auto& [what, drawn, requests] : {
             Case{"nothing", {}, 0},
             Case{"empty boxes", {{5, 5, 0, 3}}, 0},
             Case{"two neighbours", {{0, 0, 10, 10}, {12, 0, 10, 10}}, 1},
             Case{"far corners", {{0, 0, 10, 10}, {1900, 1000, 10, 10}}, 2},
             Case{"a bridge between two", {{0, 0, 300, 20}, {700, 0, 300, 20}, {300, 0, 400, 20}}, 1},
             Case{"overlapping", {{0, 0, 500, 500}, {250, 250, 500, 500}, {0, 0, 750, 750}}, 1},
             Case{"everywhere a little", checkerboard, 32},
         }) {
        const auto plan = planFetch(drawn);
        EXPECT_EQ(plan.size(), requests) << what;
        for (const PixelBox& box : drawn)
            EXPECT_TRUE(box.isEmpty() ||
                        std::ranges::any_of(plan, [&](const auto& each) { return contains(each, box); }))
                << what;
    }
}

} // namespace morvelin
