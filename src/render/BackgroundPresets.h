// The built-in backgrounds by name: gradients with their colours, and what stands in for a picture that can't be read.
#pragma once

#include <array>
#include <initializer_list>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "core/Style.h"

namespace morvelin::BackgroundPresets {

/// Colours as six hexadecimal digits each.
class HexColors {
public:
    constexpr HexColors(std::initializer_list<std::string_view> colors) {
        for (const std::string_view color : colors) m_colors[m_count++] = color;
    }
    [[nodiscard]] constexpr std::size_t size() const { return m_count; }
    [[nodiscard]] constexpr std::string_view operator[](std::size_t index) const { return m_colors[index]; }

private:
    std::array<std::string_view, 6> m_colors;
    std::size_t m_count = 0;
};

/// How a gradient's colours become a picture.
enum class Rendering {
    Legacy, ///< straight from one corner to the other
    Brand,  ///< pools of light that flow into each other
    Soft    ///< a glow that rises out of the dark
};

struct GradientPreset {
    std::string_view id;
    HexColors hexColors;
    std::string_view name;
    Rendering rendering = Rendering::Legacy;
};

struct WallpaperPreset {
    std::string_view id;
    HexColors hexColors;
};

struct SolidPreset {
    std::string_view name;
    std::string_view hex; ///< six digits
};

/// The name of having no background at all.
inline constexpr std::string_view kNone = "none";

[[nodiscard]] std::span<const GradientPreset> gradients();
/// An unknown id gives "palette-dune".
[[nodiscard]] const GradientPreset& gradient(std::string_view id);
/// The colours in place of a wallpaper or picture. An unknown id gives "default".
[[nodiscard]] const WallpaperPreset& wallpaper(std::string_view id);
/// The ids of the pictures to choose from, as projects hold them.
[[nodiscard]] std::span<const std::string_view> wallpaperIDs();
[[nodiscard]] std::span<const SolidPreset> solids();

/// Every name that chooses a background: gradients and wallpapers by id, plain colours by name, and `kNone`.
[[nodiscard]] std::vector<std::string> names();

/// The background of that name, also by a gradient's display name, or of a colour as `#RRGGBB`; `base` gives what the
/// name does not set. Case doesn't matter. Nothing where nothing has that name.
[[nodiscard]] std::optional<Background> named(std::string_view name, Background base);

} // namespace morvelin::BackgroundPresets
