#include "storage/CursorShapeFiles.h"

#include <fmt/format.h>

#include "storage/BundleFiles.h"

namespace morvelin::ProjectBundle {

namespace fs = std::filesystem;

namespace {

fs::path imageFile(const fs::path& bundleURL, std::int64_t id) {
    return bundleURL / kCursorsFolder / fmt::format("{}.png", id);
}

} // namespace

Result<void, BundleError> writeCursorShapes(const CursorShapeFiles& shapes, const fs::path& bundleURL, const Log& log) {
    if (auto made = createFolder(bundleURL / kCursorsFolder); !made) return passOn(std::move(made));
    for (const auto& [id, png] : shapes.images) {
        const auto written = writeFileAtomically(imageFile(bundleURL, id), png);
        if (!written) log("[ProjectBundle] Could not store a cursor shape: " + written.error().description());
    }
    return writeRecord(shapes.track, bundleURL / kCursorShapesFile);
}

std::optional<CursorShapeFiles> readCursorShapes(const fs::path& bundleURL) {
    auto track = readRecord<CursorShapeTrack>(bundleURL / kCursorShapesFile);
    if (!track) return std::nullopt;
    CursorShapeFiles shapes{std::move(*track), {}};
    for (const CursorShapeTrack::Shape& shape : shapes.track.shapes)
        if (auto png = readFile(imageFile(bundleURL, shape.id))) shapes.images.emplace(shape.id, std::move(*png));
    return shapes;
}

} // namespace morvelin::ProjectBundle
