#include "agent/MCPProjectEditor.h"

#include <ranges>

#include "agent/HeadlessEditError.h"
#include "storage/BundleFiles.h"
#include "timeline/PositionKeys.h"

namespace morvelin {

namespace fs = std::filesystem;

Task<MCPProjectEditor::Opened> MCPProjectEditor::open(fs::path bundleURL, const Services& services) {
    MCPLiveEditor* live = services.liveEditors ? services.liveEditors(bundleURL) : nullptr;
    std::optional<ProjectLock> lock;
    if (live == nullptr) {
        auto taken = co_await ProjectLock::wait(services.loop, bundleURL);
        if (!taken) co_return refusal(taken.error());
        lock.emplace(std::move(*taken));
    }
    auto contents = ProjectBundle::load(bundleURL, services.bundles);
    if (!contents) co_return refusal(contents.error());
    if (contents->versions.empty()) co_return refusal(HeadlessEditError(HeadlessEditError::NoVersions{}));

    std::unique_ptr<MCPProjectEditor> editor(new MCPProjectEditor(bundleURL, services.bundles));
    editor->m_cursorEvents = std::move(contents->cursorEvents);
    editor->m_hasCamera = contents->cameraURL.has_value();
    if (live != nullptr) {
        editor->m_backend = std::make_unique<Backend>(Live{*live});
    } else {
        auto store = std::make_unique<ProjectVersionStore>(bundleURL, std::move(*contents), services.bundles);
        editor->m_backend = std::make_unique<Backend>(Disk{std::move(store), std::move(*lock)});
    }
    co_return Opened(std::move(editor));
}

ToolOutcome MCPProjectEditor::apply(const EditTool& tool, const ArgumentReader& arguments) {
    const EditPayload before = currentEdit();
    EditedProject project{m_bundleURL,
                          before,
                          m_cursorEvents,
                          m_hasCamera,
                          ProjectBundle::isPresent(m_bundleURL / ProjectBundle::kCursorShapesFile),
                          m_services,
                          false,
                          {}};
    ToolOutcome outcome = tool(project, arguments);
    const auto undoes = std::move(project.undoes);
    const auto takeBack = [&undoes] {
        for (const auto& undo : undoes | std::views::reverse) undo();
    };
    if (!outcome) takeBack();
    if (!outcome || (project.edit == before && !project.isTranscriptChanged)) return outcome;
    project.edit.positionKeyframes = refitPositionKeys(std::move(project.edit.positionKeyframes),
                                                       project.edit.zoomKeyframes, project.edit.padding);
    if (save(std::move(project))) return outcome;
    takeBack();
    return failure(std::string("The change could not be saved: the project’s folder can’t be written to."));
}

EditPayload MCPProjectEditor::currentEdit() const {
    if (const auto* live = std::get_if<Live>(m_backend.get())) return live->editor.edit();
    const ProjectVersionStore& store = *std::get<Disk>(*m_backend).store;
    return store.version(store.currentID())->edit;
}

bool MCPProjectEditor::save(EditedProject&& project) {
    if (auto* live = std::get_if<Live>(m_backend.get())) {
        if (project.isTranscriptChanged) live->editor.transcriptChanged();
        live->editor.apply(std::move(project.edit));
        return true;
    }
    return std::get<Disk>(*m_backend).store->save(project.edit, m_services.clock.now());
}

} // namespace morvelin
