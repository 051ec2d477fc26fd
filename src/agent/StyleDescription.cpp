#include "agent/StyleDescription.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include <fmt/format.h>

#include "core/base/Rounding.h"
#include "storage/BackgroundImage.h"

namespace morvelin {

namespace {

int byteOf(double component) { return static_cast<int>(std::lround(std::clamp(component, 0.0, 1.0) * 255)); }

std::string hexadecimal(const CodableColor& color) {
    return fmt::format("#{:02X}{:02X}{:02X}", byteOf(color.red), byteOf(color.green), byteOf(color.blue));
}

JSONValue describeBackground(const Background& background, const std::filesystem::path& bundleURL) {
    switch (background.type) {
    case BackgroundType::Gradient: return {{"type", "gradient"}, {"name", background.gradientPresetID}};
    case BackgroundType::Wallpaper: return {{"type", "wallpaper"}, {"name", background.wallpaperName}};
    case BackgroundType::SolidColor: return {{"type", "color"}, {"color", hexadecimal(background.solidColor)}};
    case BackgroundType::Image:
        return {{"type", "image"},
                {"path", backgroundImagePath(bundleURL, background).value_or(std::filesystem::path()).string()}};
    }
    std::unreachable();
}

Project projectWith(const EditPayload& edit, const std::filesystem::path& bundleURL) {
    Project project;
    project.bundleURL = bundleURL;
    project.apply(edit);
    return project;
}

} // namespace

JSONValue describeStyle(const EditPayload& edit, CursorOrigin cursorOrigin, const std::filesystem::path& bundleURL) {
    return describeStyle(projectWith(edit, bundleURL), cursorOrigin);
}

JSONValue describeStyle(const Project& project, CursorOrigin cursorOrigin) {
    JSONValue style{{"background", describeBackground(project.background, project.bundleURL)},
                    {"padding", roundedTo3Decimals(project.padding)},
                    {"corner_radius", roundedTo3Decimals(project.cornerRadius)},
                    {"shadow", roundedTo3Decimals(project.shadowIntensity)},
                    {"captions", project.captionsEnabled},
                    {"caption_size", roundedTo3Decimals(project.captionSize)},
                    {"click_animations", project.clickAnimationsEnabled},
                    {"camera", project.cameraEnabled},
                    {"tap_tap_style", std::string(json::rawValue(project.tapTapStyle))},
                    {"tap_tap_size", roundedTo3Decimals(project.tapTapScale)},
                    {"cursor_drawn", cursorOrigin == CursorOrigin::Drawn}};
    if (cursorOrigin == CursorOrigin::Drawn) {
        const CursorSettings& cursor = project.cursor;
        style["cursor"] = cursor.isVisible;
        style["cursor_style"] = std::string(json::rawValue(cursor.style));
        style["cursor_size"] = roundedTo3Decimals(cursor.size);
        style["cursor_smoothing"] = roundedTo3Decimals(cursor.smoothing);
    }
    return style;
}

JSONValue describeCamera(const EditPayload& edit) { return describeCamera(projectWith(edit, {})); }

JSONValue describeCamera(const Project& project) {
    JSONValue camera{{"visible", project.cameraEnabled}};
    if (project.camera) {
        camera["x"] = roundedTo3Decimals(project.camera->rect.x);
        camera["y"] = roundedTo3Decimals(project.camera->rect.y);
        camera["size"] = roundedTo3Decimals(project.camera->rect.width);
        camera["corner_radius"] = roundedTo3Decimals(project.camera->cornerRadius);
        camera["mirrored"] = project.camera->isMirrored;
    }
    return camera;
}

} // namespace morvelin
