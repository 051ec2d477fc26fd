#include "agent/ReadingTools.h"

#include <algorithm>

#include "agent/ProjectArgument.h"
#include "agent/ProjectDescription.h"
#include "agent/ProjectSummary.h"
#include "core/base/Files.h"
#include "render/SidecarFile.h"

namespace morvelin {

namespace {

namespace fs = std::filesystem;

constexpr std::int64_t kListedProjects = 20;
constexpr std::string_view kSidecarEnding = ".events.json";

std::optional<EditTime> moment(const ArgumentReader& arguments, const char* name) {
    const auto seconds = arguments.number(name);
    return seconds ? std::optional(EditTime(*seconds)) : std::nullopt;
}

/// The sidecar that was written last.
std::optional<fs::path> newestSidecar(const fs::path& exports) {
    std::optional<fs::path> newest;
    fs::file_time_type newestTime;
    std::error_code error;
    for (fs::directory_iterator entry(exports, error), end; !error && entry != end; entry.increment(error)) {
        if (!entry->path().string().ends_with(kSidecarEnding)) continue;
        std::error_code gone;
        const auto time = entry->last_write_time(gone);
        if (gone || (newest && time <= newestTime)) continue;
        newest = entry->path();
        newestTime = time;
    }
    return newest;
}

} // namespace

void ReadingTools::addTo(CommandTable& commands) {
    commands.add("list_projects", [this](const ArgumentReader& arguments) { return listProjects(arguments); });
    commands.add("describe_project", [this](const ArgumentReader& arguments) { return describeProject(arguments); });
    commands.add("read_events", [this](const ArgumentReader& arguments) { return readEvents(arguments); });
}

ToolOutcome ReadingTools::listProjects(const ArgumentReader& arguments) const {
    const std::int64_t limit = std::max<std::int64_t>(arguments.integer("limit").value_or(kListedProjects), 0);
    return JSONValue{{"directory", m_folders.projects.path().string()},
                     {"projects", projectSummaries(m_folders.projects, static_cast<std::size_t>(limit))}};
}

ToolOutcome ReadingTools::describeProject(const ArgumentReader& arguments) const {
    const auto snapshot = readProject(arguments, m_folders, m_snapshots);
    if (!snapshot) return failure(snapshot.error());
    return morvelin::describeProject(**snapshot, {moment(arguments, "from"), moment(arguments, "until")},
                                     EditorState::Closed);
}

ToolOutcome ReadingTools::readEvents(const ArgumentReader& arguments) const {
    const auto wanted = arguments.text("path");
    std::optional<fs::path> sidecar;
    if (!wanted) {
        sidecar = newestSidecar(m_folders.exports);
        if (!sidecar) return refusal(MCPToolError(MCPToolError::NoExports{}));
    } else {
        const fs::path path = expandingTilde(*wanted, m_folders.home);
        sidecar = wanted->ends_with(kSidecarEnding) ? path : sidecarPath(path, "events");
    }
    std::error_code error;
    if (!fs::exists(*sidecar, error))
        return refusal(MCPToolError(MCPToolError::SidecarMissing{wanted.value_or(sidecar->string())}));
    const auto text = readFile(*sidecar);
    if (!text) return refusal(text.error());
    auto events = parseJSON(*text);
    if (!events) return refusal(events.error());
    return std::move(*events);
}

} // namespace morvelin
