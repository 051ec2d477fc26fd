// The tools that add, change and remove editorial cues: focus ovals, tapping hands and privacy masks.
#pragma once

#include "agent/MCPProjectEditor.h"

namespace morvelin::AnnotationTools {

ToolOutcome annotate(EditedProject& project, const ArgumentReader& arguments);
ToolOutcome update(EditedProject& project, const ArgumentReader& arguments);
ToolOutcome remove(EditedProject& project, const ArgumentReader& arguments);

} // namespace morvelin::AnnotationTools
