// A desktop for the tools that record and drive one: a host and an input that note what is asked of them.
#pragma once

#include <array>
#include <deque>
#include <string>
#include <utility>
#include <vector>

#include <fmt/format.h>
#include <gmock/gmock.h>

#include "agent/AgentRecordingPacer.h"
#include "agent/CommandTable.h"
#include "agent/MCPHost.h"
#include "core/base/SimulatedEventLoop.h"
#include "platform/InputPosting.h"

namespace morvelin {

inline MCPRecordingStatus inTake() {
    MCPRecordingStatus status;
    status.isRecording = status.isAgentDriven = true;
    status.source = "display";
    return status;
}

class NotingHost final : public MCPHost {
public:
    MCPRecordingStatus status() override { return recording; }
    std::vector<MCPDisplay> displays() override { return shown; }
    bool canCaptureScreen() override { return true; }
    std::optional<PointerSpace> recordedSpace() override {
        return recording.isRecording ? area : std::optional<PointerSpace>();
    }
    Task<Result<void, MCPHostError>> startRecording(MCPRecordingRequest request) override {
        requests.push_back(request);
        co_await loop.sleep(0.2_s);
        if (recording.isRecording) co_return failure(MCPHostError(MCPHostError::AlreadyRecording{}));
        recording = inTake();
        co_return Result<void, MCPHostError>();
    }
    Task<Result<MCPFinishedRecording, MCPHostError>> stopRecording() override {
        if (!recording.isRecording) co_return failure(MCPHostError(MCPHostError::NotRecording{}));
        recording = {};
        co_return finished;
    }
    Result<void, MCPHostError> pauseRecording() override { return setPaused(true); }
    Result<void, MCPHostError> resumeRecording() override { return setPaused(false); }

    explicit NotingHost(SimulatedEventLoop& simulated) : loop(simulated) {}

    SimulatedEventLoop& loop;
    MCPRecordingStatus recording;
    std::optional<PointerSpace> area = PointerSpace{{100, 50, 200, 100}, "the recorded area"};
    MCPFinishedRecording finished{"/home/Take.morvelin", "Take", 4.2_s, {}};
    std::vector<MCPDisplay> shown{{7, "left", {0, 0, 1000, 500}, 1, true}, {9, "right", {1000, 0, 800, 500}, 1, false}};
    std::vector<MCPRecordingRequest> requests;
    std::vector<std::pair<double, std::string>> pauses; ///< when it was paused and resumed

private:
    Result<void, MCPHostError> setPaused(bool isPaused) {
        if (!recording.isRecording) return failure(MCPHostError(MCPHostError::NotRecording{}));
        recording.isPaused = isPaused;
        pauses.emplace_back(loop.now().value, isPaused ? "pause" : "resume");
        return {};
    }
};

class NotingInput final : public InputPosting {
public:
    explicit NotingInput(SimulatedEventLoop& simulated) : loop(simulated) {}

    Result<void, InputPostingError> check() override {
        if (missing) return failure(*missing);
        return {};
    }
    std::optional<DesktopPoint> location() override { return place; }
    void moveTo(DesktopPoint to) override {
        place = to;
        note(fmt::format("move {:.0f} {:.0f}", to.x, to.y));
    }
    void press(PointerButton button) override { note(fmt::format("down {}", static_cast<int>(button))); }
    void release(PointerButton button) override { note(fmt::format("up {}", static_cast<int>(button))); }
    void turnWheel(WheelDirection direction, int count) override {
        notches[static_cast<std::size_t>(direction)] += count;
        note("wheel");
    }
    void keyDown(Key key) override { note(fmt::format("key down {}", static_cast<int>(key))); }
    void keyUp(Key key) override { note(fmt::format("key up {}", static_cast<int>(key))); }
    Result<void, InputPostingError> type(char32_t character) override {
        typed += character;
        note("type");
        return {};
    }
    Seconds settlingTime(char32_t) override { return {}; }
    void focus(WindowID) override {}

    /// The events whose words begin like that.
    [[nodiscard]] std::vector<std::pair<double, std::string>> events(std::string_view start) const {
        auto found = noted;
        std::erase_if(found, [&](const auto& event) { return !event.second.starts_with(start); });
        return found;
    }

    SimulatedEventLoop& loop;
    std::optional<InputPostingError> missing;
    DesktopPoint place{};
    std::array<int, 4> notches{};
    std::u32string typed;
    std::vector<std::pair<double, std::string>> noted;

private:
    void note(std::string event) { noted.emplace_back(loop.now().value, std::move(event)); }
};

/// Calls commands as a router does.
class DesktopFixture : public testing::Test {
protected:
    /// Starts a call; its result is there when the loop has run for long enough.
    const std::optional<MCPToolResult>& begin(const std::string& tool, JSONValue arguments = {}) {
        std::optional<MCPToolResult>& result = m_results.emplace_back();
        const auto run = [](const CommandTable::Command& command, JSONValue given,
                            std::optional<MCPToolResult>& into) -> Task<void> {
            into = co_await command(std::move(given));
        };
        m_loop.spawn(run(*m_commands.find(tool), std::move(arguments), result));
        return result;
    }
    JSONValue facts(const std::string& tool, JSONValue arguments = {}) {
        const auto& result = begin(tool, std::move(arguments));
        for (int tick = 0; !result && tick < 40'000; ++tick) m_loop.advance(0.001_s);
        EXPECT_TRUE(result && !result->isError) << tool << ": " << (result ? result->text : "has not ended");
        return result && result->structured ? *result->structured : JSONValue::object();
    }
    std::string refused(const std::string& tool, JSONValue arguments = {}) {
        const auto& result = begin(tool, std::move(arguments));
        m_loop.advance(1_s);
        EXPECT_TRUE(result && result->isError) << tool;
        return result ? result->text : "";
    }

    SimulatedEventLoop m_loop;
    NotingHost m_host{m_loop};
    NotingInput m_input{m_loop};
    AgentRecordingPacer m_pacer{m_loop};
    CommandTable m_commands;

private:
    std::deque<std::optional<MCPToolResult>> m_results;
};

} // namespace morvelin
