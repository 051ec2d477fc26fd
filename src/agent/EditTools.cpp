#include "agent/EditTools.h"

#include "agent/AnnotationTools.h"
#include "agent/PositionKeyTools.h"
#include "agent/ProjectArgument.h"
#include "agent/TimelineTools.h"
#include "agent/ZoomTools.h"

namespace morvelin {

void EditTools::addTo(CommandTable& commands) {
    add(commands, "cut", TimelineTools::cut);
    add(commands, "trim", TimelineTools::trim);
    add(commands, "set_speed", TimelineTools::setSpeed);
    add(commands, "set_zoom", ZoomTools::set);
    add(commands, "update_zoom", ZoomTools::update);
    add(commands, "remove_zoom", ZoomTools::remove);
    add(commands, "roll_zoom_seam", ZoomTools::rollSeam);
    add(commands, "rebuild_zoom_position_keys", ZoomTools::rebuildPositionKeys);
    add(commands, "set_auto_timeline", ZoomTools::setAutoTimeline);
    add(commands, "add_position_key", PositionKeyTools::add);
    add(commands, "update_position_key", PositionKeyTools::update);
    add(commands, "remove_position_key", PositionKeyTools::remove);
    add(commands, "annotate", AnnotationTools::annotate);
    add(commands, "update_annotation", AnnotationTools::update);
    add(commands, "remove_annotation", AnnotationTools::remove);
    const auto of = [](const auto& tools, auto method) {
        return [&tools, method](EditedProject& project, const ArgumentReader& arguments) {
            return (tools.*method)(project, arguments);
        };
    };
    add(commands, "set_style", of(m_style, &StyleTools::setStyle));
    add(commands, "set_camera", of(m_style, &StyleTools::setCamera));
    add(commands, "narrate", of(m_words, &WordTools::narrate));
    add(commands, "clear_narration", of(m_words, &WordTools::clearNarration));
    add(commands, "edit_transcript", of(m_words, &WordTools::editTranscript));
    add(commands, "export_captions", of(m_words, &WordTools::exportCaptions));
    add(commands, "transcription_status", of(m_words, &WordTools::transcriptionStatus));
    add(commands, "use_narration_take", of(m_words, &WordTools::useNarrationTake));
}

void EditTools::add(CommandTable& commands, const char* name, EditTool tool) {
    commands.addWaiting(
        name, [this, tool = std::move(tool)](JSONValue arguments) { return run(tool, std::move(arguments)); });
}

Task<ToolOutcome> EditTools::run(const EditTool& tool, JSONValue arguments) const {
    const ArgumentReader reader(arguments);
    const auto bundle = resolveProject(reader, m_services.folders);
    if (!bundle) co_return refusal(bundle.error());
    const auto editor = co_await MCPProjectEditor::open(*bundle, m_services.editor);
    if (!editor) co_return failure(editor.error());
    co_return (*editor)->apply(tool, reader);
}

} // namespace morvelin
