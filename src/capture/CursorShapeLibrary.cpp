#include "capture/CursorShapeLibrary.h"

#include <algorithm>

#include "media/PNG.h"
#include "storage/CursorShapeFiles.h"

namespace morvelin {

namespace {

std::span<const std::uint8_t> bytesOf(const std::string& text) {
    return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

} // namespace

CursorShapeLibrary::CursorShapeLibrary(CursorShapeTrack track,
                                       std::map<std::int64_t, std::shared_ptr<const Image>> images)
    : m_track(std::move(track)),
      m_images(std::move(images)) {
    // The take wrote them in order; a file that a person has touched might not be.
    std::ranges::stable_sort(m_track.changes, {}, [](const CursorShapeTrack::Change& change) { return change.t; });
}

std::shared_ptr<const CursorShapeLibrary> CursorShapeLibrary::load(const std::filesystem::path& bundleURL) {
    auto files = ProjectBundle::readCursorShapes(bundleURL);
    if (!files) return nullptr;
    std::map<std::int64_t, std::shared_ptr<const Image>> images;
    for (const auto& [id, png] : files->images)
        if (auto image = decodePNG(bytesOf(png))) images.emplace(id, std::make_shared<const Image>(std::move(*image)));
    return std::make_shared<const CursorShapeLibrary>(std::move(files->track), std::move(images));
}

const CursorShapeTrack::Shape* CursorShapeLibrary::shape(SourceTime t) const {
    const auto next = std::ranges::upper_bound(m_track.changes, t, {},
                                               [](const CursorShapeTrack::Change& change) { return change.t; });
    if (next == m_track.changes.begin()) return nullptr;
    const auto id = std::prev(next)->shape;
    const auto found = std::ranges::find_if(m_track.shapes, [&](const auto& shape) { return shape.id == id; });
    return found == m_track.shapes.end() ? nullptr : &*found;
}

std::shared_ptr<const Image> CursorShapeLibrary::image(std::int64_t shapeID) const {
    const auto found = m_images.find(shapeID);
    return found == m_images.end() ? nullptr : found->second;
}

} // namespace morvelin
