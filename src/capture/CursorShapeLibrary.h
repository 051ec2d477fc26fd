// The pointer's recorded shapes of a project, read once. Shared by an editor's or an export's threads; never changes.
#pragma once

#include <filesystem>
#include <map>
#include <memory>

#include "core/CursorEvent.h"
#include "platform/Picture.h"

namespace morvelin {

class CursorShapeLibrary {
public:
    CursorShapeLibrary(CursorShapeTrack track, std::map<std::int64_t, std::shared_ptr<const Image>> images);

    /// Null where the project has no recorded shapes, or none that can be read.
    [[nodiscard]] static std::shared_ptr<const CursorShapeLibrary> load(const std::filesystem::path& bundleURL);

    [[nodiscard]] const CursorShapeTrack& track() const { return m_track; }

    /// The shape that shows at `t`; null where none is known.
    [[nodiscard]] const CursorShapeTrack::Shape* shape(SourceTime t) const;
    /// The image of a shape; null where its file is missing or broken.
    [[nodiscard]] std::shared_ptr<const Image> image(std::int64_t shapeID) const;

private:
    CursorShapeTrack m_track;
    std::map<std::int64_t, std::shared_ptr<const Image>> m_images;
};

} // namespace morvelin
