// Both loops keep the same promises; the real one also its own: threads, signals, descriptors.

#include <array>
#include <atomic>
#include <csignal>
#include <thread>

#include <unistd.h>

#include <gmock/gmock.h>

#include "core/base/GLibEventLoop.h"
#include "core/base/SimulatedEventLoop.h"

namespace morvelin {
namespace {

using testing::ElementsAre;

/// A loop, and how a test lets time pass on it.
struct Driven {
    virtual ~Driven() = default;
    virtual EventLoop& loop() = 0;
    virtual void pass(Seconds length) = 0;
};

struct DrivenGLib final : Driven {
    GLibEventLoop real;
    EventLoop& loop() override { return real; }
    void pass(Seconds length) override {
        const auto end = real.after(length, [this] { real.quit(); });
        real.run();
    }
};

struct DrivenSimulation final : Driven {
    SimulatedEventLoop simulated;
    EventLoop& loop() override { return simulated; }
    void pass(Seconds length) override { simulated.advance(length); }
};

enum class Kind { GLib, Simulated };

class Loops : public testing::TestWithParam<Kind> {
protected:
    Loops() {
        if (GetParam() == Kind::GLib)
            m_driven = std::make_unique<DrivenGLib>();
        else
            m_driven = std::make_unique<DrivenSimulation>();
    }
    EventLoop& loop() { return m_driven->loop(); }
    void pass(Seconds length) { m_driven->pass(length); }
    EventLoop::Action note(std::string what) {
        return [this, what = std::move(what)] { m_noted.push_back(what); };
    }

    std::vector<std::string> m_noted;

private:
    std::unique_ptr<Driven> m_driven;
};

INSTANTIATE_TEST_SUITE_P(Both, Loops, testing::Values(Kind::GLib, Kind::Simulated),
                         [](const auto& each) { return each.param == Kind::GLib ? "GLib" : "Simulated"; });

TEST_P(Loops, RunPostsInOrderAndTimersByTime) {
    const auto late = loop().after(0.03_s, note("late"));
    const auto early = loop().after(0.01_s, note("early"));
    loop().post(note("first"));
    loop().post([this] {
        m_noted.emplace_back("second");
        loop().post(note("nested"));
    });
    EXPECT_TRUE(m_noted.empty()) << "nothing runs before the loop does";
    pass(0.06_s);
    EXPECT_THAT(m_noted, ElementsAre("first", "second", "nested", "early", "late"));
}

TEST_P(Loops, ATimerThatGoesNeverFires) {
    { const auto gone = loop().after(0.001_s, note("gone")); }
    auto replaced = loop().after(0.001_s, note("replaced"));
    replaced = EventLoop::Timer();
    auto moved = loop().after(0.001_s, note("moved"));
    const EventLoop::Timer kept = std::move(moved);
    pass(0.02_s);
    EXPECT_THAT(m_noted, ElementsAre("moved"));
}

TEST_P(Loops, ATimerMayEndItselfAndOthersInsideItsAction) {
    EventLoop::Timer once, ticking, victim;
    int ticks = 0;
    once = loop().after(0.001_s, [&] {
        once = EventLoop::Timer();
        victim = EventLoop::Timer();
    });
    victim = loop().after(0.02_s, note("victim"));
    // The capture outlives the cancelling: an action that is running isn't destroyed under itself.
    const auto alive = std::make_shared<int>(0);
    ticking = loop().every(0.002_s, [&, held = alive] {
        if (++ticks == 3) ticking = EventLoop::Timer();
        *held = ticks;
    });
    pass(0.05_s);
    EXPECT_EQ(ticks, 3);
    EXPECT_EQ(*alive, 3);
    EXPECT_TRUE(m_noted.empty());
    EXPECT_EQ(alive.use_count(), 1) << "the ended timer's action is gone";
}

Task<int> half(EventLoop& loop, int value) {
    co_await loop.sleep(0.01_s);
    co_return value / 2;
}

Task<void> story(EventLoop& loop, std::vector<std::string>& noted) {
    noted.emplace_back("begins");
    noted.push_back(std::to_string(co_await half(loop, 84)));
    const std::string worked = co_await onWorker(loop, [] { return std::string("worked"); });
    noted.push_back(worked);
}

TEST_P(Loops, TasksSleepAwaitEachOtherAndWorkElsewhere) {
    { const Task<void> neverStarted = story(loop(), m_noted); }
    EXPECT_TRUE(m_noted.empty());
    const HostTime before = loop().now();
    loop().spawn(story(loop(), m_noted));
    EXPECT_THAT(m_noted, ElementsAre("begins")) << "a spawned task runs at once, to its first wait";
    pass(0.2_s);
    EXPECT_THAT(m_noted, ElementsAre("begins", "42", "worked"));
    EXPECT_GE((loop().now() - before).value, 0.2 - 0.002);
}

Task<void> countDown(EventLoop& loop, int count, std::shared_ptr<int> alive) {
    for (int i = 0; i < count; ++i) {
        co_await onWorker(loop, [] { return 0; });
        ++*alive;
    }
}

TEST_P(Loops, TasksSideBySideAllEndAndLeaveNothing) {
    const auto done = std::make_shared<int>(0);
    for (int i = 0; i < 20; ++i) loop().spawn(countDown(loop(), 25, done));
    for (int round = 0; round < 100 && *done < 500; ++round) pass(0.05_s);
    EXPECT_EQ(*done, 500);
    pass(0.001_s);
    EXPECT_EQ(done.use_count(), 1);
}

TEST(SimulatedLoop, RunsHoursAtOnceEachActionAtItsOwnTime) {
    SimulatedEventLoop loop;
    std::vector<double> times;
    const auto hourly = loop.every(Seconds(3600), [&] { times.push_back(loop.now().value); });
    const auto between = loop.after(Seconds(5400), [&] { loop.post([&] { times.push_back(loop.now().value); }); });
    loop.advance(Seconds(3 * 3600));
    EXPECT_THAT(times, ElementsAre(3600, 5400, 7200, 10800));
    EXPECT_EQ(loop.now(), HostTime(10800));
}

TEST(GLibLoop, TakesPostsFromOtherThreadsAndWorksOffItsOwn) {
    DrivenGLib driven;
    const auto main = std::this_thread::get_id();
    std::atomic<bool> workedElsewhere = false;
    std::vector<int> order;
    std::jthread poster([&] {
        for (int i = 0; i < 100; ++i)
            driven.real.post([&order, &main, i] {
                EXPECT_EQ(std::this_thread::get_id(), main);
                order.push_back(i);
            });
    });
    driven.real.offload([&] { workedElsewhere = std::this_thread::get_id() != main; },
                        [&] { EXPECT_EQ(std::this_thread::get_id(), main); });
    poster.join();
    driven.pass(0.05_s);
    EXPECT_TRUE(workedElsewhere);
    ASSERT_EQ(order.size(), 100U);
    EXPECT_TRUE(std::ranges::is_sorted(order));
}

// A command whose first step fails is over before its loop runs; it used to wait for ever then.
TEST(GLibLoop, EndsAtOnceWhenItsQuitCameFirst) {
    GLibEventLoop loop;
    loop.quit();
    loop.run();
    // What a loop had posted when it went must not touch it when the next one runs.
    { GLibEventLoop().quit(); }
    loop.quit();
    loop.run();
}

TEST(GLibLoop, HearsSignalsAndReadableDescriptors) {
    DrivenGLib driven;
    std::vector<std::string> heard;
    std::array<int, 2> ends{};
    ASSERT_EQ(::pipe(ends.data()), 0);
    auto onSignal = driven.real.onSignal(SIGHUP, [&] { heard.emplace_back("signal"); });
    auto onReadable = driven.real.onReadable(ends[0], [&] {
        char byte = 0;
        if (::read(ends[0], &byte, 1) == 1) heard.push_back(std::string("byte ") + byte);
    });
    ASSERT_EQ(::write(ends[1], "ab", 2), 2);
    driven.pass(0.02_s);
    EXPECT_THAT(heard, ElementsAre("byte a", "byte b"));
    ::raise(SIGHUP);
    driven.pass(0.02_s);
    EXPECT_EQ(heard.back(), "signal");

    onReadable = EventLoop::Timer();
    ASSERT_EQ(::write(ends[1], "c", 1), 1);
    driven.pass(0.02_s);
    EXPECT_EQ(heard.size(), 3U) << "a descriptor that nobody watches is left alone";
    ::close(ends[0]);
    ::close(ends[1]);
}

} // namespace
} // namespace morvelin
