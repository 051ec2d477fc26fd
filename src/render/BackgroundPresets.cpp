#include "render/BackgroundPresets.h"

#include <algorithm>
#include <charconv>

#include "core/base/Text.h"

namespace morvelin::BackgroundPresets {

namespace {

using enum Rendering;

constexpr GradientPreset kGradients[] = {
    {"palette-morv", {"FFD02F", "FF9E00", "FF6900"}, "Morv", Brand},
    {"palette-heatwave", {"FFD02F", "FF6900", "E93973"}, "Heatwave", Brand},
    {"palette-ember", {"FFB020", "D95423", "21121B"}, "Ember", Brand},
    {"palette-solar-flare", {"FF9E00", "EF507A", "6B35D5"}, "Solar flare", Brand},
    {"palette-electric-iris", {"B18AFF", "7650E8", "3444C7"}, "Electric iris", Brand},
    {"palette-lagoon", {"63F0CD", "15BDC8", "2466CD"}, "Lagoon", Brand},
    {"palette-cobalt", {"64D9FF", "3875EE", "3436AD"}, "Cobalt", Brand},
    {"palette-orchid", {"FF89BE", "D947BA", "723AD1"}, "Orchid", Brand},
    {"palette-tangerine", {"FFE19B", "FF9D52", "F05A58"}, "Tangerine", Brand},
    {"palette-verdant", {"D4ED75", "69C489", "198D81"}, "Verdant", Brand},
    {"palette-dune", {"F6E9CA", "DEBD97", "B78B86"}, "Dune", Brand},
    {"palette-moonrise", {"C4C5EA", "949CCD", "656BA0"}, "Moonrise", Brand},
    {"amber", {"FFC65C", "F08A24"}, "Amber", Legacy},
    {"morv-warm", {"FFB648", "FF6B4A", "C93A6E"}, "Morv warm", Legacy},
    {"sonoma-1", {"F7C9A0", "D98BA6", "6F6CC4"}, "Sonoma", Legacy},
    {"midnight", {"2B3A67", "1B2145", "0B0D1E"}, "Midnight", Legacy},
    {"aurora", {"7CF2C0", "3FA9D9", "5B3FB5"}, "Aurora", Legacy},
    {"sakura", {"FFE3EC", "FFB3C9", "E886AE"}, "Sakura", Legacy},
    {"ocean", {"7FE3F0", "2E9BD6", "1B4B96"}, "Ocean", Legacy},
    {"forest", {"B9DE8A", "4F9E6B", "1F5A4C"}, "Forest", Legacy},
    {"candy", {"FFD1A8", "FF8FB8", "A48BF2"}, "Candy", Legacy},
    {"macos-15", {"8FD0FF", "7B8BF0", "E58FC8"}, "Fifteen", Legacy},
    {"mesh-nebula", {"16103A", "3A1F7A", "E2559B", "5A7BF0", "F7A35C"}, "Nebula", Legacy},
    {"mesh-glacier", {"DDF3FA", "8CC6E4", "FFFFFF", "4C8FC4"}, "Glacier", Legacy},
    {"mesh-terra", {"E9C79B", "B5694A", "F4E3C4", "7A3B32", "D99A5B"}, "Terra", Legacy},
    {"noir-crimson", {"0C0709", "3B0A18", "C4213F"}, "Noir crimson", Soft},
    {"navy-ember", {"0A1330", "232A63", "A83A6C", "FF7E45"}, "Navy ember", Soft},
    {"crimson-navy", {"4A0A22", "5A1B66", "3457D5"}, "Crimson navy", Soft},
};

constexpr WallpaperPreset kWallpapers[] = {
    {"default", {"0EA5E9", "3B82F6", "8B5CF6"}},
    {"sunset", {"F43F5E", "F59E0B", "FDE68A"}},
    {"forest", {"10B981", "3B82F6", "1E3A8A"}},
    {"monochrome", {"1E293B", "334155", "64748B"}},
};

constexpr std::string_view kWallpaperIDs[] = {"wallpaper-milkyway",
                                              "wallpaper-prism",
                                              "wallpaper-dusk",
                                              "wallpaper-wave",
                                              "wallpaper-coast",
                                              "wallpaper-violet-teal",
                                              "wallpaper-ember-night",
                                              "wallpaper-grain-ember",
                                              "wallpaper-grain-violet",
                                              "wallpaper-grain-indigo",
                                              "wallpaper-nebula",
                                              "wallpaper-cosmos",
                                              "wallpaper-mountains",
                                              "wallpaper-dune-dark",
                                              "wallpaper-dune-light",
                                              "wallpaper-valley-dark",
                                              "wallpaper-valley-light",
                                              "wallpaper-petal-dark",
                                              "wallpaper-petal-light",
                                              "wallpaper-golden-gate-dark",
                                              "wallpaper-golden-gate-light",
                                              "wallpaper-spectrum",
                                              "wallpaper-aurora-glow"};

constexpr SolidPreset kSolids[] = {
    {"White", "FFFFFF"}, {"Paper", "F6F1E7"},  {"Sand", "DEC9A8"},     {"Honey", "F0A63A"}, {"Coral", "F0665A"},
    {"Rose", "E2558C"},  {"Violet", "7A5AE0"}, {"Cobalt", "2F5BEA"},   {"Sky", "5AB4F0"},   {"Lagoon", "1FA8A8"},
    {"Moss", "2F8A57"},  {"Slate", "64748B"},  {"Graphite", "2A2F3A"}, {"Ink", "12141C"},   {"Black", "000000"}};

/// The preset with that id, or with the other one, which is in the table.
template <class Preset>
const Preset& found(std::span<const Preset> presets, std::string_view id, std::string_view otherwise) {
    const auto match = std::ranges::find(presets, id, &Preset::id);
    return match != presets.end() ? *match : *std::ranges::find(presets, otherwise, &Preset::id);
}

/// Of six hexadecimal digits.
std::optional<CodableColor> colorOf(std::string_view digits) {
    unsigned value = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), value, 16);
    if (digits.size() != 6 || error != std::errc() || end != digits.data() + 6) return std::nullopt;
    return CodableColor{(value >> 16) / 255.0, (value >> 8 & 255) / 255.0, (value & 255) / 255.0, 1};
}

} // namespace

std::span<const GradientPreset> gradients() { return kGradients; }

const GradientPreset& gradient(std::string_view id) { return found(gradients(), id, "palette-dune"); }

const WallpaperPreset& wallpaper(std::string_view id) {
    return found(std::span<const WallpaperPreset>(kWallpapers), id, "default");
}

std::span<const std::string_view> wallpaperIDs() { return kWallpaperIDs; }

std::span<const SolidPreset> solids() { return kSolids; }

std::optional<Background> named(std::string_view name, Background base) {
    const auto isCalled = [wanted = caseFolded(trimmed(name))](std::string_view each) {
        return caseFolded(each) == wanted;
    };
    const auto gradientWith = [&](std::string_view GradientPreset::*what) {
        return std::ranges::find_if(kGradients, isCalled, what);
    };
    const auto inGradient = [&](const GradientPreset* preset) {
        base.type = BackgroundType::Gradient;
        base.gradientPresetID = preset->id;
        return base;
    };
    const auto inColor = [&](CodableColor color) {
        base.type = BackgroundType::SolidColor;
        base.solidColor = color;
        return base;
    };
    if (isCalled(kNone)) return inColor({0, 0, 0, 1});
    if (const auto preset = gradientWith(&GradientPreset::id); preset != std::end(kGradients))
        return inGradient(preset);
    if (const auto id = std::ranges::find_if(kWallpaperIDs, isCalled); id != std::end(kWallpaperIDs)) {
        base.type = BackgroundType::Wallpaper;
        base.wallpaperName = *id;
        return base;
    }
    if (const auto solid = std::ranges::find_if(kSolids, isCalled, &SolidPreset::name); solid != std::end(kSolids))
        return inColor(*colorOf(solid->hex));
    if (const auto preset = gradientWith(&GradientPreset::name); preset != std::end(kGradients))
        return inGradient(preset);
    const std::string text = trimmed(name);
    const auto color = text.starts_with('#') ? colorOf(std::string_view(text).substr(1)) : std::nullopt;
    return color ? std::optional(inColor(*color)) : std::nullopt;
}

std::vector<std::string> names() {
    std::vector<std::string> all;
    for (const GradientPreset& preset : gradients()) all.emplace_back(preset.id);
    for (const std::string_view id : wallpaperIDs()) all.emplace_back(id);
    for (const SolidPreset& preset : solids()) all.emplace_back(preset.name);
    all.emplace_back(kNone);
    return all;
}

} // namespace morvelin::BackgroundPresets
