#include "core/base/GLibEventLoop.h"

#include <cmath>
#include <memory>

#include <glib-unix.h>
#include <glib.h>

namespace morvelin {

namespace {

gboolean callAndKeep(gpointer action) {
    (*static_cast<EventLoop::Action*>(action))();
    return G_SOURCE_CONTINUE;
}

gboolean callOnce(gpointer action) {
    (*static_cast<EventLoop::Action*>(action))();
    return G_SOURCE_REMOVE;
}

gboolean callForDescriptor(gint, GIOCondition, gpointer action) { return callAndKeep(action); }

void destroyAction(gpointer action) { delete static_cast<EventLoop::Action*>(action); }

guint milliseconds(Seconds length) {
    return static_cast<guint>(std::lround(std::clamp(length.value, 0.0, 4.0e6) * 1000));
}

/// Attaches a source to the default context; the timer removes it, also after it has fired.
EventLoop::Timer attach(GSource* source, GSourceFunc call, EventLoop::Action action) {
    g_source_set_callback(source, call, new EventLoop::Action(std::move(action)), destroyAction);
    g_source_attach(source, nullptr);
    return EventLoop::Timer([source] {
        g_source_destroy(source);
        g_source_unref(source);
    });
}

/// What `offload` hands to the pool.
struct Errand {
    EventLoop& loop;
    EventLoop::Action work;
    EventLoop::Action done;
};

void runErrand(gpointer data, gpointer) {
    const std::unique_ptr<Errand> errand(static_cast<Errand*>(data));
    errand->work();
    errand->loop.post(std::move(errand->done));
}

/// A repeating timer that aims at exact times: GLib counts whole milliseconds, and 30 ticks a second would drift.
class Beat : public std::enable_shared_from_this<Beat> {
public:
    Beat(const EventLoop& loop, Seconds interval, EventLoop::Action action)
        : m_loop(loop),
          m_interval(interval),
          m_next(loop.now() + interval),
          m_action(std::move(action)) {}

    void schedule() {
        auto* tick = new EventLoop::Action([beat = shared_from_this()] { beat->tick(); });
        const Seconds wait = std::max(m_next - m_loop.now(), 0_s);
        m_source = g_timeout_add_full(G_PRIORITY_DEFAULT, milliseconds(wait), callOnce, tick, destroyAction);
    }

    void cancel() {
        m_isCancelled = true;
        if (m_source != 0) g_source_remove(std::exchange(m_source, 0U));
    }

private:
    void tick() {
        m_source = 0;
        m_next = std::max(m_next + m_interval, m_loop.now());
        m_action();
        if (!m_isCancelled) schedule();
    }

    const EventLoop& m_loop;
    Seconds m_interval;
    HostTime m_next;
    EventLoop::Action m_action;
    guint m_source = 0;
    bool m_isCancelled = false;
};

} // namespace

struct GLibEventLoop::State {
    GMainLoop* loop = g_main_loop_new(nullptr, FALSE);
    GThreadPool* workers = g_thread_pool_new(runErrand, nullptr, -1, FALSE, nullptr);

    ~State() {
        g_thread_pool_free(workers, FALSE, TRUE);
        g_main_loop_unref(loop);
    }
};

GLibEventLoop::GLibEventLoop() : m_state(std::make_unique<State>()) {}
GLibEventLoop::~GLibEventLoop() = default;

void GLibEventLoop::post(Action action) {
    g_idle_add_full(G_PRIORITY_DEFAULT, callOnce, new Action(std::move(action)), destroyAction);
}

EventLoop::Timer GLibEventLoop::after(Seconds delay, Action action) {
    return attach(g_timeout_source_new(milliseconds(delay)), callOnce, std::move(action));
}

EventLoop::Timer GLibEventLoop::every(Seconds interval, Action action) {
    const auto beat = std::make_shared<Beat>(*this, interval, std::move(action));
    beat->schedule();
    return Timer([beat] { beat->cancel(); });
}

HostTime GLibEventLoop::now() const { return HostTime(static_cast<double>(g_get_monotonic_time()) * 1e-6); }

void GLibEventLoop::offload(Action work, Action done) {
    g_thread_pool_push(m_state->workers, new Errand{*this, std::move(work), std::move(done)}, nullptr);
}

EventLoop::Timer GLibEventLoop::onSignal(int signal, Action action) {
    return attach(g_unix_signal_source_new(signal), callAndKeep, std::move(action));
}

EventLoop::Timer GLibEventLoop::onReadable(int descriptor, Action action) {
    GSource* source = g_unix_fd_source_new(descriptor, G_IO_IN);
    // A source that may not recurse is taken out of the poll for each of its calls and put back: four system calls more.
    // No action of ours runs the loop again.
    g_source_set_can_recurse(source, TRUE);
    return attach(source, reinterpret_cast<GSourceFunc>(reinterpret_cast<void (*)()>(callForDescriptor)),
                  std::move(action));
}

void GLibEventLoop::run() { g_main_loop_run(m_state->loop); }
/// By way of the loop, so that what ends at once, before `run`, ends `run` too.
void GLibEventLoop::quit() {
    const std::shared_ptr<GMainLoop> loop(g_main_loop_ref(m_state->loop), g_main_loop_unref);
    post([loop] { g_main_loop_quit(loop.get()); });
}

} // namespace morvelin
