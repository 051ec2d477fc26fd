// A project's folder on a real disk, and the services of a run that can be repeated.
#pragma once

#include <gmock/gmock.h>

#include "base/TemporaryFolder.h"
#include "storage/ProjectBundle.h"

namespace morvelin::ProjectBundle {

struct FixedClock final : WallClock {
    Date date = Date::parse("2026-11-21T04:10:33.750Z").value();
    [[nodiscard]] Date now() const override { return date; }
    [[nodiscard]] HostTime uptime() const override { return HostTime(0); }
};

/// Three seconds of pointer with one click in the middle, enough for a zoom.
inline std::vector<CursorEvent> oneClick() {
    std::vector<CursorEvent> events;
    for (int i = 0; i <= 300; ++i) events.push_back({SourceTime(i / 30.0), 0.25, 0.75, CursorEventType::Move, {}, {}});
    events[150].event = CursorEventType::MouseDown;
    events[150].button = MouseButton::Left;
    events[150].clickCount = 1;
    return events;
}

class BundleOnDisk : public testing::Test {
protected:
    BundleOnDisk() { put(m_url / "recording.mov", "movie"); }

    Services services() {
        return {m_ids, m_clock, [this](std::string_view line) { m_log.emplace_back(line); }};
    }
    Result<Contents, BundleError> open() { return load(m_url, services()); }

    Capture header(std::vector<UUID> order, std::optional<UUID> current = {}) const {
        return {
            9, "Take", Date::fromUnixSeconds(1'700'000'000), 10_s, std::move(order), current, RecordingKind::Screen};
    }
    ProjectVersion version(const std::string& name, int day = 1) {
        ProjectVersion made = newVersion(name, initialEdit({}, 10_s, m_ids), services());
        made.createdAt = Date::fromUnixSeconds(1'700'000'000 + day * 86'400);
        return made;
    }
    ProjectVersion original() {
        ProjectVersion made = version("Original", 0);
        made.isInitial = true;
        return made;
    }
    /// Writes a version as a newer program might: nothing here can read it.
    void writeNewer(const UUID& id) { put(m_url / "versions" / (id.text() + ".json"), R"({"format":99})"); }

    std::vector<std::string> names(const Contents& contents) const {
        std::vector<std::string> all;
        for (const ProjectVersion& each : contents.versions) all.push_back(each.name);
        return all;
    }
    Capture headerOnDisk() const { return decode<Capture>(readFile(m_url / "capture.json").value()).value(); }

    TemporaryFolder m_folder;
    std::filesystem::path m_url = m_folder.path() / "Take.morvelin";
    SeededIdSource m_ids{1};
    FixedClock m_clock;
    std::vector<std::string> m_log;
};

} // namespace morvelin::ProjectBundle
