// How a project's video looks: background, camera bubble, pointer, and the settings of the automatic zooms.
#pragma once

#include <optional>
#include <string>

#include "core/Geometry.h"
#include "core/Keyframes.h"
#include "core/base/JSON.h"

namespace morvelin {

enum class BackgroundType { Gradient, SolidColor, Wallpaper, Image };

constexpr auto rawValues(std::type_identity<BackgroundType>) {
    using enum BackgroundType;
    return std::to_array<std::pair<BackgroundType, std::string_view>>(
        {{Gradient, "gradient"}, {SolidColor, "solidColor"}, {Wallpaper, "wallpaper"}, {Image, "image"}});
}

/// What lies behind the video. All choices are kept when the type changes, so that switching back restores them.
struct Background {
    BackgroundType type = BackgroundType::Gradient;
    std::string gradientPresetID = "palette-dune";
    CodableColor solidColor{0, 0.478, 1, 1};
    std::string wallpaperName = "wallpaper-milkyway";
    std::optional<std::string> imageURL; ///< a file URL, used when `type` is `Image`

    bool operator==(const Background&) const = default;
};

template <class Fields>
void describe(Fields& fields, Same<Fields, Background>& background) {
    fields.required("type", background.type);
    fields.required("gradientPresetID", background.gradientPresetID);
    fields.required("solidColor", background.solidColor);
    fields.required("wallpaperName", background.wallpaperName);
    fields.optional("imageURL", background.imageURL);
}

/// Where the webcam's bubble lies over the video; it stays put while the screen zooms underneath.
struct CameraSettings {
    NormalizedRect rect;     ///< in the video frame's unit square
    double cornerRadius = 0; ///< fraction of the bubble's side, 0..0.5
    bool isMirrored = false;
    Seconds startOffset;

    bool operator==(const CameraSettings&) const = default;
};

template <class Fields>
void describe(Fields& fields, Same<Fields, CameraSettings>& camera) {
    fields.required("rect", camera.rect);
    fields.required("cornerRadius", camera.cornerRadius);
    fields.required("isMirrored", camera.isMirrored);
    fields.required("startOffset", camera.startOffset);
}

enum class CursorStyle {
    System,
    Ink,
    Paper,
    Amber,
    FrostedAmber,
    FrostedMono,
    Dusk,
    DuskSprite,
    AmberSprite,
    MonoSprite
};

constexpr auto rawValues(std::type_identity<CursorStyle>) {
    using enum CursorStyle;
    return std::to_array<std::pair<CursorStyle, std::string_view>>({{System, "system"},
                                                                    {Ink, "ink"},
                                                                    {Paper, "paper"},
                                                                    {Amber, "amber"},
                                                                    {FrostedAmber, "frostedAmber"},
                                                                    {FrostedMono, "frostedMono"},
                                                                    {Dusk, "dusk"},
                                                                    {DuskSprite, "duskSprite"},
                                                                    {AmberSprite, "amberSprite"},
                                                                    {MonoSprite, "monoSprite"}});
}

/// How the pointer is drawn in the finished video.
struct CursorSettings {
    bool isVisible = true;
    CursorStyle style = CursorStyle::System;
    double size = 1.5;
    double smoothing = 0.5; ///< 0..1

    bool operator==(const CursorSettings&) const = default;
};

/// A style that this program doesn't know, or that is no text, reads as the system's: a newer program's project still
/// opens. It is the only enumeration with that tolerance.
template <class Fields>
void describe(Fields& fields, Same<Fields, CursorSettings>& cursor) {
    fields.withDefault("isVisible", cursor.isVisible, true);
    if constexpr (Fields::kWrites) {
        fields.required("style", cursor.style);
    } else {
        JSONValue style;
        fields.withDefault("style", style, JSONValue());
        const auto known = fromJSON<CursorStyle>(style);
        cursor.style = known ? *known : CursorStyle::System;
    }
    fields.withDefault("size", cursor.size, 1.5);
    fields.withDefault("smoothing", cursor.smoothing, 0.5);
}

/// The parameters of the automatic zooms.
struct EditingSettings {
    Seconds zoomTransitionTime{1.0}; ///< length of a ramp, in and out
    Seconds clickAnticipation{0.4};  ///< how long before a click the zoom is settled
    ZoomTransitionType transitionCurve = ZoomTransitionType::Smooth;
    Seconds dezoomAfterInactivity{1.0}; ///< idle time after a group's last click before the zoom goes back out

    bool operator==(const EditingSettings&) const = default;
};

template <class Fields>
void describe(Fields& fields, Same<Fields, EditingSettings>& settings) {
    fields.required("zoomTransitionTime", settings.zoomTransitionTime);
    fields.required("clickAnticipation", settings.clickAnticipation);
    fields.required("transitionCurve", settings.transitionCurve);
    fields.required("dezoomAfterInactivity", settings.dezoomAfterInactivity);
}

} // namespace morvelin
