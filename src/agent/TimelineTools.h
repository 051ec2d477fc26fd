// The tools that cut, trim and retime the edit.
#pragma once

#include "agent/MCPProjectEditor.h"

namespace morvelin::TimelineTools {

ToolOutcome cut(EditedProject& project, const ArgumentReader& arguments);
ToolOutcome trim(EditedProject& project, const ArgumentReader& arguments);
ToolOutcome setSpeed(EditedProject& project, const ArgumentReader& arguments);

} // namespace morvelin::TimelineTools
