#include "agent/StyleChange.h"

#include "agent/CommandTable.h"
#include "agent/EditArguments.h"
#include "agent/HeadlessEditError.h"
#include "render/BackgroundPresets.h"

namespace morvelin {

namespace {

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

void readFlags(StyleChange& change, const ArgumentReader& arguments) {
    change.captionsEnabled = givenFlag(arguments, "captions");
    change.clickAnimationsEnabled = givenFlag(arguments, "click_animations");
    change.cameraEnabled = givenFlag(arguments, "camera");
    change.cursorVisible = givenFlag(arguments, "cursor");
}

/// Settings that are the defaults exactly are not stored.
std::optional<CursorSettings> changedCursor(const std::optional<CursorSettings>& present, const StyleChange& change) {
    CursorSettings cursor = present.value_or(CursorSettings());
    cursor.isVisible = change.cursorVisible.value_or(cursor.isVisible);
    cursor.style = change.cursorStyle.value_or(cursor.style);
    cursor.size = change.cursorSize.value_or(cursor.size);
    cursor.smoothing = change.cursorSmoothing.value_or(cursor.smoothing);
    return cursor == CursorSettings() ? std::nullopt : std::optional(cursor);
}

} // namespace

Result<StyleChange, std::string> styleChange(const ArgumentReader& arguments) {
    StyleChange change;
    if (const auto read = readNumbers(change, arguments); !read) return failure(read.error());
    readFlags(change, arguments);
    change.backgroundPreset = arguments.text("background");
    if (const auto path = arguments.text("background_image")) change.backgroundImage = *path;
    if (const auto name = arguments.text("tap_tap_style")) {
        change.tapTapStyle = json::fromRawValue<TapTapStyle>(*name);
        if (!change.tapTapStyle) return refusal(HeadlessEditError(HeadlessEditError::UnknownTapTapStyle{*name}));
    }
    const auto cursorStyle = choiceArgument<CursorStyle>(arguments, "cursor_style");
    if (!cursorStyle) return failure(cursorStyle.error());
    change.cursorStyle = *cursorStyle;
    return change;
}

Result<EditPayload, std::string> withStyle(EditPayload edit, const StyleChange& change) {
    if (const auto& name = change.backgroundPreset) {
        const auto background = BackgroundPresets::named(*name, edit.background);
        if (!background) return refusal(HeadlessEditError(HeadlessEditError::UnknownBackground{*name}));
        edit.background = *background;
        if (*name == BackgroundPresets::kNone) edit.padding = 0;
    }
    edit.padding = change.padding.value_or(edit.padding);
    edit.cornerRadius = change.cornerRadius.value_or(edit.cornerRadius);
    edit.shadowIntensity = change.shadowIntensity.value_or(edit.shadowIntensity);
    edit.captionsEnabled = change.captionsEnabled.value_or(edit.captionsEnabled);
    edit.captionSize = change.captionSize.value_or(edit.captionSize);
    edit.clickAnimationsEnabled = change.clickAnimationsEnabled.value_or(edit.clickAnimationsEnabled);
    edit.cameraEnabled = change.cameraEnabled.value_or(edit.cameraEnabled);
    if (change.tapTapStyle) edit.tapTapStyle = change.tapTapStyle;
    if (change.tapTapScale) edit.tapTapScale = change.tapTapScale;
    edit.cursor = changedCursor(edit.cursor, change);
    return edit;
}

} // namespace morvelin
