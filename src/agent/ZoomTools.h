// The tools that edit the zoom track: ramps, the seams between them, and the automatic timeline.
#pragma once

#include "agent/MCPProjectEditor.h"

namespace morvelin::ZoomTools {

ToolOutcome set(EditedProject& project, const ArgumentReader& arguments);
ToolOutcome update(EditedProject& project, const ArgumentReader& arguments);
ToolOutcome remove(EditedProject& project, const ArgumentReader& arguments);
ToolOutcome rollSeam(EditedProject& project, const ArgumentReader& arguments);
ToolOutcome rebuildPositionKeys(EditedProject& project, const ArgumentReader& arguments);
ToolOutcome setAutoTimeline(EditedProject& project, const ArgumentReader& arguments);

} // namespace morvelin::ZoomTools
