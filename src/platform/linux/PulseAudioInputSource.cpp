#include "platform/linux/PulseAudioInputSource.h"

#include <algorithm>
#include <string_view>
#include <tuple>

#include <pulse/pulseaudio.h>

#include "platform/linux/PulseConnection.h"
#include "platform/linux/PulseInputStream.h"

namespace morvelin {

namespace {

constexpr Seconds kPatience{3};

/// The server's answer to "which inputs are there, and which is the default".
struct Scan {
    PulseConnection& connection;
    std::string defaultID;
    MicrophoneScan microphones;
    int openQuestions = 0;

    void answered() {
        --openQuestions;
        connection.wake();
    }
};

bool hasProperty(const pa_source_info& source, const char* key, std::string_view value) {
    const char* text = pa_proplist_gets(source.proplist, key);
    return text != nullptr && text == value;
}

/// Built into the machine: on its own bus, and neither a socket for a plug nor a line.
bool isBuiltIn(const pa_source_info& source) {
    if (hasProperty(source, PA_PROP_DEVICE_FORM_FACTOR, "internal")) return true;
    const pa_source_port_info* port = source.active_port;
    return hasProperty(source, PA_PROP_DEVICE_BUS, "pci") && port != nullptr &&
           std::string_view(port->name).contains("internal-mic");
}

void addSource(Scan& scan, const pa_source_info& source) {
    if (source.monitor_of_sink != PA_INVALID_INDEX) return;
    scan.microphones.devices.push_back({source.name, source.description});
    if (isBuiltIn(source)) scan.microphones.builtInID = source.name;
}

/// A change is told once, however many the server tells before the loop comes to it.
class ChangeNotice final : public PulseConnection::Observer {
public:
    ChangeNotice(std::shared_ptr<PulseConnection> connection, EventLoop& loop, std::function<void()> action)
        : m_connection(std::move(connection)),
          m_loop(loop),
          m_action(std::make_shared<std::function<void()>>(std::move(action))) {
        const PulseConnection::Lock lock(*m_connection);
        m_connection->add(*this);
    }
    ~ChangeNotice() override {
        const PulseConnection::Lock lock(*m_connection);
        m_connection->remove(*this);
    }
    ChangeNotice(const ChangeNotice&) = delete;
    ChangeNotice& operator=(const ChangeNotice&) = delete;

private:
    void serverCame() override { devicesChanged(); }
    void serverWent() override { devicesChanged(); }
    void devicesChanged() override {
        m_loop.post([action = std::weak_ptr(m_action)] {
            if (const auto alive = action.lock()) (*alive)();
        });
    }

    std::shared_ptr<PulseConnection> m_connection;
    EventLoop& m_loop;
    std::shared_ptr<std::function<void()>> m_action;
};

} // namespace

PulseAudioInputSource::PulseAudioInputSource(const WallClock& clock, std::string server)
    : m_clock(clock),
      m_server(std::move(server)) {}

PulseAudioInputSource::~PulseAudioInputSource() = default;

std::shared_ptr<PulseConnection> PulseAudioInputSource::connection() {
    const std::lock_guard lock(m_mutex);
    if (!m_connection) m_connection = std::make_shared<PulseConnection>(m_server);
    return m_connection;
}

Result<std::shared_ptr<PulseConnection>, AudioInputError> PulseAudioInputSource::readyConnection() {
    auto shared = connection();
    const PulseConnection::Lock lock(*shared);
    if (shared->waitForServer(kPatience)) return shared;
    return failure(AudioInputError{AudioInputError::Kind::NoSoundServer,
                                   "The sound server does not answer. Start PulseAudio or PipeWire, or record without "
                                   "sound."});
}

Result<MicrophoneScan, AudioInputError> PulseAudioInputSource::microphones() {
    auto ready = readyConnection();
    if (!ready) return passOn(std::move(ready));
    PulseConnection& connection = **ready;
    const PulseConnection::Lock lock(connection);
    Scan scan{connection, {}, {}, 0};
    std::vector<pa_operation*> questions{pa_context_get_server_info(
                                             connection.context(),
                                             [](pa_context*, const pa_server_info* server, void* result) {
                                                 auto& running = *static_cast<Scan*>(result);
                                                 if (server != nullptr && server->default_source_name != nullptr)
                                                     running.defaultID = server->default_source_name;
                                                 running.answered();
                                             },
                                             &scan),
                                         pa_context_get_source_info_list(
                                             connection.context(),
                                             [](pa_context*, const pa_source_info* source, int end, void* result) {
                                                 auto& running = *static_cast<Scan*>(result);
                                                 if (end == 0)
                                                     addSource(running, *source);
                                                 else
                                                     running.answered();
                                             },
                                             &scan)};
    std::erase(questions, nullptr);
    scan.openQuestions += static_cast<int>(questions.size());
    connection.waitUntil([&] { return scan.openQuestions == 0 || connection.context() == nullptr; }, kPatience);
    for (pa_operation* question : questions) {
        pa_operation_cancel(question);
        pa_operation_unref(question);
    }
    std::ranges::sort(scan.microphones.devices, {}, [&](const AudioInputDevice& device) {
        return std::tuple(device.id != scan.defaultID, device.name, device.id);
    });
    return std::move(scan.microphones);
}

EventLoop::Timer PulseAudioInputSource::onMicrophonesChanged(EventLoop& loop, std::function<void()> action) {
    const auto notice = std::make_shared<ChangeNotice>(connection(), loop, std::move(action));
    return EventLoop::Timer([notice] {}); // which goes with the timer
}

Result<std::unique_ptr<AudioInputStream>, AudioInputError> PulseAudioInputSource::open(const AudioInputTarget& target,
                                                                                       AudioInputListener& listener) {
    auto ready = readyConnection();
    if (!ready) return passOn(std::move(ready));
    return PulseInputStream::open(std::move(*ready), target, listener, m_clock);
}

} // namespace morvelin
