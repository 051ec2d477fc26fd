#include "agent/VersionTools.h"

#include <algorithm>

#include "agent/HeadlessEditError.h"
#include "agent/MCPHostError.h"
#include "agent/ProjectArgument.h"
#include "agent/ProjectDescription.h"
#include "core/base/Text.h"
#include "storage/BundleFiles.h"
#include "storage/DuplicateProject.h"
#include "storage/ProjectLock.h"
#include "storage/VersionNames.h"

namespace morvelin {

namespace {

namespace fs = std::filesystem;

/// The version with that id, or else with that name as people compare names.
const ProjectVersion* findVersion(const ProjectVersionStore& store, const std::string& idOrName) {
    if (const auto id = UUID::parse(trimmed(idOrName)))
        if (const ProjectVersion* version = store.version(*id)) return version;
    const auto named = std::ranges::find_if(
        store.versions(), [&](const ProjectVersion& version) { return isSameVersionName(version.name, idOrName); });
    return named != store.versions().end() ? &*named : nullptr;
}

auto unknownVersion(const std::string& name) {
    return refusal(HeadlessEditError(HeadlessEditError::UnknownVersion{name}));
}

/// The `version` argument of a tool that needs one.
Result<const ProjectVersion*, std::string> neededVersion(const ProjectVersionStore& store,
                                                         const ArgumentReader& arguments) {
    const auto wanted = arguments.text("version");
    if (!wanted || trimmed(*wanted).empty()) return invalidArgument("version", "expected a version id or name");
    if (const ProjectVersion* version = findVersion(store, *wanted)) return version;
    return unknownVersion(*wanted);
}

/// The store writes quietly; an agent has to hear when something didn't reach the disk.
bool isSaved(const ProjectVersionStore& store) {
    return store.unwrittenVersionIDs().empty() && store.capture().currentVersionID == store.currentID() &&
           store.capture().versionOrder.size() == store.versions().size() + store.unreadableVersionIDs().size();
}

JSONValue describeCopy(const fs::path& copy) {
    const auto header = ProjectBundle::readRecord<ProjectBundle::Capture>(copy / ProjectBundle::kCaptureFile);
    return {{"name", header ? header->name : copy.stem().string()}, {"path", copy.string()}};
}

JSONValue describeDeletion(const fs::path& bundle, const std::optional<fs::path>& trashed) {
    JSONValue result{{"deleted", bundle.string()},
                     {"note", "Moved to the Trash, not erased: it can be put back from there."}};
    if (trashed) result["trash_path"] = trashed->string();
    return result;
}

} // namespace

void VersionTools::addTo(CommandTable& commands) {
    commands.add("list_versions", [this](const ArgumentReader& arguments) { return listVersions(arguments); });
    addEdit(commands, "create_version", &VersionTools::createVersion);
    addEdit(commands, "rename_version", &VersionTools::renameVersion);
    addEdit(commands, "switch_version", &VersionTools::switchVersion);
    addEdit(commands, "delete_version", &VersionTools::deleteVersion);
    addEdit(commands, "rename_project", &VersionTools::renameProject);
    commands.addWaiting("duplicate_project",
                        [this](JSONValue arguments) { return duplicateProject(std::move(arguments)); });
    commands.addWaiting("delete_project", [this](JSONValue arguments) { return deleteProject(std::move(arguments)); });
    commands.add("open_project", [this](const ArgumentReader& arguments) { return openProject(arguments); });
}

void VersionTools::addEdit(CommandTable& commands, const char* tool, Edit edit) {
    commands.addWaiting(tool, [this, edit](JSONValue arguments) { return edited(std::move(arguments), edit); });
}

Task<ToolOutcome> VersionTools::edited(JSONValue arguments, Edit edit) {
    const ArgumentReader reader(arguments);
    const auto bundle = resolveProject(reader, m_services.folders);
    if (!bundle) co_return refusal(bundle.error());
    const auto lock = co_await ProjectLock::wait(m_services.loop, *bundle);
    if (!lock) co_return refusal(lock.error());
    auto contents = ProjectBundle::load(*bundle, m_services.bundles);
    if (!contents) co_return refusal(contents.error());
    if (contents->versions.empty()) co_return refusal(HeadlessEditError(HeadlessEditError::NoVersions{}));

    ProjectVersionStore store(*bundle, std::move(*contents), m_services.bundles);
    ToolOutcome outcome = (this->*edit)(store, reader);
    if (outcome && !isSaved(store))
        co_return failure(std::string("The change could not be saved: the project’s folder can’t be written to."));
    co_return outcome;
}

ToolOutcome VersionTools::listVersions(const ArgumentReader& arguments) const {
    const auto bundle = resolveProject(arguments, m_services.folders);
    if (!bundle) return refusal(bundle.error());
    const auto snapshot = m_services.snapshots.read(*bundle);
    if (!snapshot) return refusal(snapshot.error());
    const ProjectBundle::Contents& project = (*snapshot)->contents;
    if (project.versions.empty()) return refusal(HeadlessEditError(HeadlessEditError::NoVersions{}));
    return JSONValue{{"versions", describeVersions(project.versions, project.currentVersionID)}};
}

ToolOutcome VersionTools::createVersion(ProjectVersionStore& store, const ArgumentReader& arguments) const {
    const ProjectVersion source = *store.version(store.currentID());
    const Date now = m_services.bundles.clock.now();
    const auto name = arguments.text("name");
    if (!name) return describeVersion(store.duplicate(source, now), store.currentID());
    const auto copy = store.duplicateNamed(source, *name, now);
    if (!copy) return refusal(HeadlessEditError(HeadlessEditError::VersionRename{copy.error().description()}));
    return describeVersion(*copy, store.currentID());
}

ToolOutcome VersionTools::renameVersion(ProjectVersionStore& store, const ArgumentReader& arguments) const {
    const auto name = arguments.text("name");
    if (!name) return invalidArgument("name", "expected the new name");
    const std::string wanted = arguments.text("version").value_or(store.currentID().text());
    const ProjectVersion* version = findVersion(store, wanted);
    if (version == nullptr) return unknownVersion(wanted);
    const UUID id = version->id;
    const auto renamed = store.rename(id, *name, m_services.bundles.clock.now());
    if (!renamed) return refusal(HeadlessEditError(HeadlessEditError::VersionRename{renamed.error().description()}));
    return describeVersion(*store.version(id), store.currentID());
}

ToolOutcome VersionTools::switchVersion(ProjectVersionStore& store, const ArgumentReader& arguments) const {
    const auto version = neededVersion(store, arguments);
    if (!version) return failure(version.error());
    const EditPayload currentEdit = store.version(store.currentID())->edit;
    const auto outcome = store.switchTo((*version)->id, currentEdit, m_services.bundles.clock.now());
    JSONValue record = describeVersion(*store.version(store.currentID()), store.currentID());
    if (outcome && outcome->didClone) record["note"] = "The original is locked, so a copy of it was made and opened.";
    return record;
}

ToolOutcome VersionTools::deleteVersion(ProjectVersionStore& store, const ArgumentReader& arguments) const {
    const auto version = neededVersion(store, arguments);
    if (!version) return failure(version.error());
    const UUID id = (*version)->id;
    const auto deleted = store.deleteVersion(id);
    if (!deleted) return refusal(HeadlessEditError(HeadlessEditError::VersionDelete{deleted.error().description()}));
    return JSONValue{{"deleted", id.text()}, {"versions", describeVersions(store.versions(), store.currentID())}};
}

ToolOutcome VersionTools::renameProject(ProjectVersionStore& store, const ArgumentReader& arguments) const {
    const std::string name = trimmed(arguments.text("name").value_or(""));
    if (name.empty()) return invalidArgument("name", "expected the new name");
    if (!store.renameProject(name)) return refusal(MCPToolError(MCPToolError::RenameFailed{name}));
    return JSONValue{{"name", store.projectName()}, {"path", store.bundleURL().string()}};
}

Task<ToolOutcome> VersionTools::duplicateProject(JSONValue arguments) {
    const ArgumentReader reader(arguments);
    const auto bundle = resolveProject(reader, m_services.folders);
    if (!bundle) co_return refusal(bundle.error());
    const auto lock = co_await ProjectLock::wait(m_services.loop, *bundle);
    if (!lock) co_return refusal(lock.error());
    const std::string name = reader.text("name").value_or("");
    const std::stop_token stop = m_stop.get_token();
    const auto copy = co_await onWorker(m_services.loop,
                                        [&] { return ProjectBundle::duplicateProject(*bundle, name, stop); });
    if (!copy) co_return refusal(copy.error());
    co_return describeCopy(*copy);
}

Task<ToolOutcome> VersionTools::deleteProject(JSONValue arguments) {
    const auto bundle = resolveNamedProject(ArgumentReader(arguments), m_services.folders);
    if (!bundle) co_return refusal(bundle.error());
    const auto lock = co_await ProjectLock::wait(m_services.loop, *bundle);
    if (!lock) co_return refusal(lock.error());
    const auto trashed = m_services.trash.moveToTrash(*bundle);
    if (!trashed) co_return failure(trashed.error());
    co_return describeDeletion(*bundle, *trashed);
}

ToolOutcome VersionTools::openProject(const ArgumentReader& arguments) const {
    const auto bundle = resolveProject(arguments, m_services.folders);
    if (!bundle) return refusal(bundle.error());
    return refusal(MCPHostError(MCPHostError::EditorFailed{"No editor is running."}));
}

} // namespace morvelin
