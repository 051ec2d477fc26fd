#include "agent/StyleDescription.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include <fmt/format.h>

#include "core/base/PercentEncoding.h"
#include "core/base/Rounding.h"

namespace morvelin {

namespace {

int byteOf(double component) { return static_cast<int>(std::lround(std::clamp(component, 0.0, 1.0) * 255)); }

std::string hexadecimal(const CodableColor& color) {
    return fmt::format("#{:02X}{:02X}{:02X}", byteOf(color.red), byteOf(color.green), byteOf(color.blue));
}

JSONValue describeBackground(const Background& background) {
    switch (background.type) {
    case BackgroundType::Gradient: return {{"type", "gradient"}, {"name", background.gradientPresetID}};
    case BackgroundType::Wallpaper: return {{"type", "wallpaper"}, {"name", background.wallpaperName}};
    case BackgroundType::SolidColor: return {{"type", "color"}, {"color", hexadecimal(background.solidColor)}};
    case BackgroundType::Image:
        return {{"type", "image"}, {"path", pathOfFileURL(background.imageURL.value_or("")).string()}};
    }
    std::unreachable();
}

} // namespace

JSONValue describeStyle(const EditPayload& edit, CursorOrigin cursorOrigin) {
    JSONValue style{{"background", describeBackground(edit.background)},
                    {"padding", roundedTo3Decimals(edit.padding)},
                    {"corner_radius", roundedTo3Decimals(edit.cornerRadius)},
                    {"shadow", roundedTo3Decimals(edit.shadowIntensity)},
                    {"captions", edit.captionsEnabled},
                    {"caption_size", roundedTo3Decimals(edit.captionSize)},
                    {"click_animations", edit.clickAnimationsEnabled},
                    {"camera", edit.cameraEnabled},
                    {"tap_tap_style", std::string(json::rawValue(edit.tapTapStyle.value_or(TapTapStyle::Pointer)))},
                    {"tap_tap_size", roundedTo3Decimals(edit.tapTapScale.value_or(1))},
                    {"cursor_drawn", cursorOrigin == CursorOrigin::Drawn}};
    if (cursorOrigin == CursorOrigin::Drawn) {
        const CursorSettings cursor = edit.cursor.value_or(CursorSettings());
        style["cursor"] = cursor.isVisible;
        style["cursor_style"] = std::string(json::rawValue(cursor.style));
        style["cursor_size"] = roundedTo3Decimals(cursor.size);
        style["cursor_smoothing"] = roundedTo3Decimals(cursor.smoothing);
    }
    return style;
}

JSONValue describeCamera(const EditPayload& edit) {
    JSONValue camera{{"visible", edit.cameraEnabled}};
    if (edit.camera) {
        camera["x"] = roundedTo3Decimals(edit.camera->rect.x);
        camera["y"] = roundedTo3Decimals(edit.camera->rect.y);
        camera["size"] = roundedTo3Decimals(edit.camera->rect.width);
        camera["corner_radius"] = roundedTo3Decimals(edit.camera->cornerRadius);
        camera["mirrored"] = edit.camera->isMirrored;
    }
    return camera;
}

} // namespace morvelin
