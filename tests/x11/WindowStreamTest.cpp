// One window's own picture, and the list of windows, with a window manager and without.

#include <thread>

#include <gmock/gmock.h>

#include "base/TemporaryFolder.h"
#include "platform/WindowFit.h"
#include "x11/RunningProgram.h"
#include "x11/ScreenFixture.h"

namespace morvelin {

namespace {

using testing::ElementsAre;

constexpr std::uint32_t kRed = 0xff0000;
constexpr std::uint32_t kGreen = 0x00ff00;
constexpr std::uint32_t kBlue = 0x0000ff;
constexpr std::uint32_t kBlack = 0x000000;
constexpr PixelBox kPlace{50, 40, 200, 150};

class WindowStreamTest : public ScreenFixture {
protected:
    void startWindowManager() {
        manager.emplace(std::vector<std::string>{"openbox", "--sm-disable"},
                        RunningProgram::Environment{{"DISPLAY", display.name()}, {"HOME", folder.path().string()}},
                        folder.path() / "openbox");
    }
    /// Whether `isSo` becomes true within some seconds.
    static bool comes(const std::function<bool()>& isSo) {
        for (int attempt = 0; attempt < 300; ++attempt) {
            if (isSo()) return true;
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        }
        return false;
    }
    std::vector<std::string> titles() {
        std::vector<std::string> found;
        const auto windows = source->windows().value();
        for (const DesktopWindow& each : windows) found.push_back(each.title);
        return found;
    }

    void open(xcb_window_t id) {
        auto opened = source->open({.area = {0, 0, kPlace.width, kPlace.height}, .displayID = {}, .window = id});
        ASSERT_TRUE(opened) << opened.error().description();
        stream = std::move(*opened);
    }
    /// Takes what comes until nothing more does; the error, if the stream ended.
    std::optional<ScreenError> follow() {
        desktop->settle();
        for (;;) {
            const auto came = stream->next(0.3_s, [&](const ScreenFrame& frame) {
                pixels.assign(frame.pixels.data, frame.pixels.data + frame.pixels.stride * frame.pixels.size.height);
                stride = frame.pixels.stride;
            });
            if (!came) return came.error();
            if (!*came) return std::nullopt;
        }
    }
    [[nodiscard]] std::uint32_t at(int x, int y) const {
        const auto* pixel = pixels.data() + y * stride + x * 4;
        return static_cast<std::uint32_t>(pixel[2] << 16 | pixel[1] << 8 | pixel[0]);
    }

    TemporaryFolder folder;
    std::optional<RunningProgram> manager;
    std::unique_ptr<ScreenStream> stream;
    std::vector<std::uint8_t> pixels;
    std::ptrdiff_t stride = 0;
};

} // namespace

TEST_F(WindowStreamTest, ShowsTheWindowAlsoWhereOthersCoverItAndWhereverItIs) {
    const xcb_window_t window = desktop->openWindow(kPlace, kRed);
    const xcb_window_t cover = desktop->openWindow({100, 80, 400, 400}, kBlue);
    open(window);
    follow();
    EXPECT_EQ(at(199, 149), kRed) << "under the cover";
    desktop->fill(window, {180, 130, 20, 20}, kGreen);
    desktop->fill(cover, {0, 0, 400, 400}, 0xffffff);
    follow();
    EXPECT_EQ(at(185, 135), kGreen);
    EXPECT_EQ(at(179, 135), kRed);
    desktop->place(window, {600, 300, 200, 150});
    desktop->fill(window, {0, 0, 10, 10}, kBlue);
    EXPECT_FALSE(follow());
    EXPECT_EQ(at(5, 5), kBlue);
    EXPECT_EQ(at(185, 135), kGreen);
    EXPECT_EQ(source->windowFrame(window), (PixelBox{600, 300, 200, 150}));
}

TEST_F(WindowStreamTest, FitsAWindowOfAnotherSizeIntoItsPicture) {
    const xcb_window_t window = desktop->openWindow(kPlace, kRed);
    open(window);
    follow();
    desktop->place(window, {50, 40, 100, 51}); // smaller: in the middle, as it is
    follow();
    EXPECT_EQ(at(50, 50), kRed);
    EXPECT_EQ(at(149, 99), kRed);
    EXPECT_EQ(at(49, 75), kBlack);
    EXPECT_EQ(at(150, 75), kBlack);
    EXPECT_EQ(at(100, 101), kBlack);

    desktop->place(window, {50, 40, 800, 300}); // larger: whole, a quarter of its size
    desktop->fill(window, {400, 0, 400, 300}, kGreen);
    follow();
    EXPECT_EQ(at(2, 75), kRed);
    EXPECT_EQ(at(197, 75), kGreen);
    EXPECT_EQ(at(100, 20), kBlack);
    desktop->fill(window, {0, 0, 800, 300}, kBlue);
    follow();
    EXPECT_EQ(at(50, 60), kBlue);

    desktop->place(window, kPlace);
    desktop->fill(window, {0, 0, 200, 150}, kGreen);
    follow();
    EXPECT_EQ(at(0, 0), kGreen);
    EXPECT_EQ(at(199, 149), kGreen);
}

TEST_F(WindowStreamTest, KeepsTheLastPictureOfAHiddenWindowAndEndsWithAClosedOne) {
    const xcb_window_t window = desktop->openWindow(kPlace, kRed);
    desktop->setTitle(window, "Notes");
    open(window);
    follow();
    desktop->hide(window);
    EXPECT_FALSE(follow());
    EXPECT_EQ(at(100, 75), kRed);
    desktop->show(window);
    desktop->fill(window, {0, 0, 200, 150}, kGreen);
    EXPECT_FALSE(follow());
    EXPECT_EQ(at(100, 75), kGreen);
    desktop->close(window);
    const auto end = follow();
    ASSERT_TRUE(end);
    EXPECT_EQ(end->kind, ScreenError::Kind::WindowClosed);
    EXPECT_EQ(end->description(), "The recorded window “Notes” was closed.");
    EXPECT_FALSE(source->open({.area = kPlace, .displayID = {}, .window = window})) << "there is none any more";
}

TEST_F(WindowStreamTest, LeavesOutTheShadowThatAProgramDrawsAroundItsWindow) {
    const xcb_window_t window = desktop->openWindow({50, 40, 240, 180}, kBlack);
    desktop->setWords(window, "_GTK_FRAME_EXTENTS", {20, 20, 10, 20});
    desktop->fill(window, {20, 10, 200, 150}, kRed);
    EXPECT_EQ(source->windowFrame(window), (PixelBox{70, 50, 200, 150}));
    open(window);
    follow();
    desktop->fill(window, {219, 159, 1, 1}, kGreen);
    follow();
    EXPECT_EQ(at(0, 0), kRed);
    EXPECT_EQ(at(199, 149), kGreen);
}

TEST_F(WindowStreamTest, IsFollowedInAWindowManagersFrame) {
    startWindowManager();
    const xcb_window_t window = desktop->openManagedWindow(kPlace, kRed, "Main window");
    ASSERT_TRUE(comes([&] { return titles() == std::vector<std::string>{"Main window"}; }));
    const auto frame = source->windowFrame(window);
    ASSERT_TRUE(frame);
    EXPECT_EQ(frame->width, 200) << "without the frame around it";
    const auto shown = desktop->pixels({frame->x, frame->y, 1, 1});
    EXPECT_EQ(shown[2], 0xff) << "it is where it says";
    open(window);
    follow();
    EXPECT_EQ(at(0, 0), kRed);
    EXPECT_EQ(at(199, 149), kRed);
    desktop->minimise(window);
    ASSERT_TRUE(comes([&] { return titles().empty(); })) << "only windows that show";
    EXPECT_FALSE(follow());
    EXPECT_EQ(at(100, 75), kRed);
    desktop->show(window);
    ASSERT_TRUE(comes([&] { return titles().size() == 1; }));
    desktop->fill(window, {0, 0, 200, 150}, kGreen);
    EXPECT_FALSE(follow());
    EXPECT_EQ(at(100, 75), kGreen);
}

TEST_F(WindowStreamTest, ListsWindowsFromTheTopByTheirNewOrOldTitles) {
    const xcb_window_t old = desktop->openWindow({0, 0, 100, 100}, kRed);
    desktop->setOldTitle(old, "Caf\xe9");
    const xcb_window_t both = desktop->openWindow({50, 50, 100, 100}, kRed);
    desktop->setOldTitle(both, "ASCII");
    desktop->setTitle(both, "日本");
    desktop->hide(desktop->openWindow({50, 50, 100, 100}, kRed));
    EXPECT_THAT(titles(), ElementsAre("日本", "Café"));
    const auto windows = source->windows().value();
    EXPECT_EQ(windows[1].id, old);
    EXPECT_EQ(windows[1].frame, (PixelBox{0, 0, 100, 100}));

    RunningProgram terminal({"xterm", "-T", "shell", "-e", "sleep", "60"}, {{"DISPLAY", display.name()}},
                            folder.path() / "xterm");
    ASSERT_TRUE(comes([&] { return titles().front() == "shell"; }));
    EXPECT_EQ(source->windows().value().front().application, "XTerm");
}

TEST_F(WindowStreamTest, KnowsTheScaleOfTheDesktop) {
    struct Case {
        const char* resources;
        double scale;
    };
    for (const auto& [resources, scale] : {Case{"", 1},
                                           {"Xft.dpi:\t96\n", 1},
                                           {"Xft.dpi:\t192\n", 2},
                                           {"Xft.dpi: 100", 1},
                                           {"Xft.dpi: 144.0", 1.5},
                                           {"Xft.dpi: none", 1}}) {
        desktop->setResources(resources);
        EXPECT_EQ(source->displays().value().front().pointPixelScale, scale) << resources;
    }
}

TEST(WindowFit, ShowsTheWholeWindowAndTellsWhichPartOfTheDesktopThePictureIs) {
    struct Case {
        PixelSize window;
        WindowFit fit;
        PixelBox desktop; ///< for a window at 100, 100
    };
    constexpr PixelSize kPicture{400, 300};
    for (const auto& [window, fit, desktop] : {Case{{400, 300}, {{0, 0, 400, 300}, 1}, {100, 100, 400, 300}},
                                               Case{{401, 301}, {{0, 0, 400, 300}, 1}, {100, 100, 400, 300}},
                                               Case{{200, 100}, {{100, 100, 200, 100}, 1}, {0, 0, 400, 300}},
                                               Case{{800, 300}, {{0, 74, 400, 150}, 0.5}, {100, -48, 800, 600}},
                                               Case{{1, 1}, {{198, 148, 2, 2}, 1}, {-98, -48, 400, 300}}}) {
        const WindowFit found = fitWindow(window, kPicture);
        EXPECT_EQ(found.place, fit.place) << window.width;
        EXPECT_EQ(found.scale, fit.scale) << window.width;
        EXPECT_EQ(desktopBoxOfPicture({100, 100, window.width, window.height}, kPicture), desktop) << window.width;
    }
}

} // namespace morvelin
