#include "agent/StyleTools.h"

#include <algorithm>

#include "agent/EditArguments.h"
#include "agent/HeadlessEditError.h"
#include "agent/StyleChange.h"
#include "agent/StyleDescription.h"
#include "core/CameraPlacement.h"
#include "core/base/PercentEncoding.h"
#include "storage/BundleFiles.h"
#include "storage/ProjectsFolder.h"

namespace morvelin {

namespace {

namespace fs = std::filesystem;

constexpr double kUsualAspectRatio = 1.7777777777777777;
constexpr double kCameraSize = 0.2;
constexpr double kCameraCornerRadius = 0.1;

CameraSettings defaultCamera(double aspectRatio) {
    CameraSettings camera;
    camera.rect = parked(CameraAnchor::BottomRight, aspectRatio, kCameraSize);
    camera.cornerRadius = kCameraCornerRadius;
    camera.isMirrored = true;
    return camera;
}

/// A bubble higher than the frame would be cut: it is made as wide as fits.
double fittingWidth(double width, double aspectRatio) { return std::min(width, 1 / std::max(aspectRatio, 1e-3)); }

/// Where the bubble is asked to be.
struct Placement {
    std::optional<CameraAnchor> anchor;
    std::optional<double> size, x, y;
};

/// Without a wish the bubble stays as it is, also one whose shape isn't the video's.
NormalizedRect placed(NormalizedRect bubble, const Placement& wish, double aspectRatio) {
    const double width = fittingWidth(wish.size.value_or(bubble.width), aspectRatio);
    if (wish.anchor) return parked(*wish.anchor, aspectRatio, width);
    if (wish.size) {
        // A parked bubble stays parked when only its size changes.
        const auto spot = wish.x || wish.y ? std::nullopt : parkingSpot(bubble, aspectRatio);
        if (spot) return parked(*spot, aspectRatio, width);
        bubble.width = width;
        bubble.height = width * aspectRatio;
    }
    bubble.x = wish.x.value_or(bubble.x);
    bubble.y = wish.y.value_or(bubble.y);
    return bubble;
}

} // namespace

ToolOutcome StyleTools::setStyle(EditedProject& project, const ArgumentReader& arguments) const {
    const auto change = styleChange(arguments);
    if (!change) return failure(change.error());
    auto styled = withStyle(project.edit, *change);
    if (!styled) return failure(styled.error());
    project.edit = std::move(*styled);
    if (change->backgroundImage)
        if (const auto taken = takeBackgroundImage(project, *change->backgroundImage); !taken)
            return failure(taken.error());
    return describeStyle(project.edit, project.isCursorDrawn ? CursorOrigin::Drawn : CursorOrigin::Recorded,
                         project.bundleURL);
}

/// The picture goes into the bundle under a name of its own: an earlier version may still show an earlier one.
Result<void, std::string> StyleTools::takeBackgroundImage(EditedProject& project, const fs::path& path) const {
    const fs::path source = expandingTilde(path.string(), m_home);
    const auto image = m_images.probe(source);
    if (!image) return refusal(HeadlessEditError(HeadlessEditError::BackgroundImageUnreadable{path.string()}));
    const fs::path copy = project.bundleURL / ("background-" + project.services.ids.next().text() + image->extension);
    const auto content = readFile(source);
    if (!content) return refusal(content.error());
    if (const auto written = writeFileAtomically(copy, *content); !written) return refusal(written.error());
    project.undoes.emplace_back([copy] { (void)removeFile(copy); });
    project.edit.background.type = BackgroundType::Image;
    project.edit.background.imageURL = fileURL(copy);
    return {};
}

ToolOutcome StyleTools::setCamera(EditedProject& project, const ArgumentReader& arguments) const {
    if (!project.hasCamera) return refusal(HeadlessEditError(HeadlessEditError::NoCamera{}));
    const auto anchor = choiceArgument<CameraAnchor>(arguments, "anchor");
    if (!anchor) return failure(anchor.error());
    const auto size = rangedNumber(arguments, "size", 0.08, 0.5);
    if (!size) return failure(size.error());
    const auto cornerRadius = rangedNumber(arguments, "corner_radius", 0, 0.5);
    if (!cornerRadius) return failure(cornerRadius.error());

    const double aspect = aspectRatio(project.bundleURL);
    CameraSettings camera = project.edit.camera.value_or(defaultCamera(aspect));
    const Placement wish{*anchor, *size, arguments.number("x"), arguments.number("y")};
    camera.rect = keptInside(placed(camera.rect, wish, aspect));
    camera.cornerRadius = cornerRadius->value_or(camera.cornerRadius);
    camera.isMirrored = arguments.flag("mirrored", camera.isMirrored);
    project.edit.camera = camera;
    project.edit.cameraEnabled = arguments.flag("visible", project.edit.cameraEnabled);
    return describeCamera(project.edit);
}

double StyleTools::aspectRatio(const fs::path& bundleURL) const {
    const auto movie = m_movies.open(bundleURL / ProjectBundle::kRecordingFile);
    if (!movie) return kUsualAspectRatio;
    const PixelSize size = (*movie)->properties().size;
    return size.height > 0 ? static_cast<double>(size.width) / size.height : kUsualAspectRatio;
}

} // namespace morvelin
