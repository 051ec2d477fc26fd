#include "agent/StyleTools.h"

#include <algorithm>

#include "agent/EditArguments.h"
#include "agent/HeadlessEditError.h"
#include "agent/StyleDescription.h"
#include "core/CameraPlacement.h"
#include "core/base/PercentEncoding.h"
#include "render/BackgroundPresets.h"
#include "storage/BundleFiles.h"
#include "storage/ProjectsFolder.h"

namespace morvelin {

namespace {

namespace fs = std::filesystem;

constexpr double kUsualAspectRatio = 1.7777777777777777;
constexpr double kCameraSize = 0.2;
constexpr double kCameraCornerRadius = 0.1;

/// Everything that `set_style` may change but the background's picture; what is absent keeps its value.
struct StyleChange {
    std::optional<Background> background;
    bool hasNoBackground = false;
    std::optional<double> padding, cornerRadius, shadowIntensity, captionSize, tapTapScale, cursorSize, cursorSmoothing;
    std::optional<TapTapStyle> tapTapStyle;
    std::optional<CursorStyle> cursorStyle;
};

Result<void, std::string> readNumbers(StyleChange& change, const ArgumentReader& arguments) {
    struct Range {
        const char* name;
        double low;
        double high;
        std::optional<double>& value;
    };
    for (const Range& range : {Range{"padding", 0, 0.4, change.padding},
                               {"corner_radius", 0, 0.04, change.cornerRadius},
                               {"shadow", 0, 1, change.shadowIntensity},
                               {"caption_size", 0.5, 1.5, change.captionSize},
                               {"tap_tap_size", 0.5, 2, change.tapTapScale},
                               {"cursor_size", 0.5, 3, change.cursorSize},
                               {"cursor_smoothing", 0, 1, change.cursorSmoothing}}) {
        const auto value = rangedNumber(arguments, range.name, range.low, range.high);
        if (!value) return failure(value.error());
        range.value = *value;
    }
    return {};
}

Result<StyleChange, std::string> readChange(const EditPayload& edit, const ArgumentReader& arguments) {
    StyleChange change;
    if (const auto read = readNumbers(change, arguments); !read) return failure(read.error());
    if (const auto name = arguments.text("background")) {
        change.background = BackgroundPresets::named(*name, edit.background);
        if (!change.background) return refusal(HeadlessEditError(HeadlessEditError::UnknownBackground{*name}));
        change.hasNoBackground = *name == BackgroundPresets::kNone;
    }
    if (const auto name = arguments.text("tap_tap_style")) {
        change.tapTapStyle = json::fromRawValue<TapTapStyle>(*name);
        if (!change.tapTapStyle) return refusal(HeadlessEditError(HeadlessEditError::UnknownTapTapStyle{*name}));
    }
    const auto cursorStyle = choiceArgument<CursorStyle>(arguments, "cursor_style");
    if (!cursorStyle) return failure(cursorStyle.error());
    change.cursorStyle = *cursorStyle;
    return change;
}

/// Settings that are the defaults exactly are not stored.
std::optional<CursorSettings> changedCursor(const EditPayload& edit, const StyleChange& change,
                                            const ArgumentReader& arguments) {
    CursorSettings cursor = edit.cursor.value_or(CursorSettings());
    cursor.isVisible = arguments.flag("cursor", cursor.isVisible);
    cursor.style = change.cursorStyle.value_or(cursor.style);
    cursor.size = change.cursorSize.value_or(cursor.size);
    cursor.smoothing = change.cursorSmoothing.value_or(cursor.smoothing);
    return cursor == CursorSettings() ? std::nullopt : std::optional(cursor);
}

void apply(EditPayload& edit, const StyleChange& change, const ArgumentReader& arguments) {
    if (change.background) edit.background = *change.background;
    if (change.hasNoBackground) edit.padding = 0;
    edit.padding = change.padding.value_or(edit.padding);
    edit.cornerRadius = change.cornerRadius.value_or(edit.cornerRadius);
    edit.shadowIntensity = change.shadowIntensity.value_or(edit.shadowIntensity);
    edit.captionSize = change.captionSize.value_or(edit.captionSize);
    if (change.tapTapScale) edit.tapTapScale = change.tapTapScale;
    if (change.tapTapStyle) edit.tapTapStyle = change.tapTapStyle;
    edit.captionsEnabled = arguments.flag("captions", edit.captionsEnabled);
    edit.clickAnimationsEnabled = arguments.flag("click_animations", edit.clickAnimationsEnabled);
    edit.cameraEnabled = arguments.flag("camera", edit.cameraEnabled);
    edit.cursor = changedCursor(edit, change, arguments);
}

CameraSettings defaultCamera(double aspectRatio) {
    CameraSettings camera;
    camera.rect = parked(CameraAnchor::BottomRight, aspectRatio, kCameraSize);
    camera.cornerRadius = kCameraCornerRadius;
    camera.isMirrored = true;
    return camera;
}

/// A bubble higher than the frame would be cut: it is made as wide as fits.
double fittingWidth(double width, double aspectRatio) { return std::min(width, 1 / std::max(aspectRatio, 1e-3)); }

} // namespace

ToolOutcome StyleTools::setStyle(EditedProject& project, const ArgumentReader& arguments) const {
    const auto change = readChange(project.edit, arguments);
    if (!change) return failure(change.error());
    apply(project.edit, *change, arguments);
    if (const auto path = arguments.text("background_image"))
        if (const auto taken = takeBackgroundImage(project, *path); !taken) return failure(taken.error());
    return describeStyle(project.edit, project.isCursorDrawn ? CursorOrigin::Drawn : CursorOrigin::Recorded);
}

/// The picture goes into the bundle under a name of its own: an earlier version may still show an earlier one.
Result<void, std::string> StyleTools::takeBackgroundImage(EditedProject& project, const std::string& path) const {
    const fs::path source = expandingTilde(path, m_home);
    const auto image = m_images.probe(source);
    if (!image) return refusal(HeadlessEditError(HeadlessEditError::BackgroundImageUnreadable{path}));
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
    const double width = fittingWidth(size->value_or(camera.rect.width), aspect);
    const auto x = arguments.number("x");
    const auto y = arguments.number("y");
    // A parked bubble stays parked when only its size changes.
    const auto spot = *anchor ? *anchor : (x || y ? std::nullopt : parkingSpot(camera.rect, aspect));
    if (spot)
        camera.rect = parked(*spot, aspect, width);
    else
        camera.rect = {x.value_or(camera.rect.x), y.value_or(camera.rect.y), width, width * aspect};
    camera.rect = keptInside(camera.rect);
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
