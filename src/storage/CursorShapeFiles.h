// The pointer's recorded shapes in a project's folder: their time line, and one PNG for each.
#pragma once

#include <filesystem>
#include <map>
#include <optional>
#include <string>

#include "core/CursorEvent.h"
#include "core/base/Log.h"
#include "core/base/Result.h"
#include "storage/BundleError.h"

namespace morvelin::ProjectBundle {

/// The shapes of a take as files hold them.
struct CursorShapeFiles {
    CursorShapeTrack track;
    std::map<std::int64_t, std::string> images; ///< PNG bytes by shape id; a shape may have none
};

/// Writes `cursors/<id>.png` and then `cursorShapes.json`. An image that can't be written is logged and left out.
Result<void, BundleError> writeCursorShapes(const CursorShapeFiles& shapes, const std::filesystem::path& bundleURL,
                                            const Log& log);

/// Nothing where the time line is missing or isn't as expected; the pointer is then drawn from its style alone.
[[nodiscard]] std::optional<CursorShapeFiles> readCursorShapes(const std::filesystem::path& bundleURL);

} // namespace morvelin::ProjectBundle
