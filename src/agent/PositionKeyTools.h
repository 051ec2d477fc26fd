// The tools that edit single keys of the position track.
#pragma once

#include "agent/MCPProjectEditor.h"

namespace morvelin::PositionKeyTools {

ToolOutcome add(EditedProject& project, const ArgumentReader& arguments);
ToolOutcome update(EditedProject& project, const ArgumentReader& arguments);
ToolOutcome remove(EditedProject& project, const ArgumentReader& arguments);

} // namespace morvelin::PositionKeyTools
