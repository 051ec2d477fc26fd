// Light as wallpapers mix it: linear, so that what glows adds up, and haze lies over what is behind it, as in the world.
#pragma once

#include <algorithm>
#include <initializer_list>
#include <string_view>
#include <vector>

namespace morvelin::wallpapers {

/// Linear light of the sRGB primaries; 1 is a screen's white.
struct Light {
    float red = 0;
    float green = 0;
    float blue = 0;

    friend Light operator+(Light x, Light y) { return {x.red + y.red, x.green + y.green, x.blue + y.blue}; }
    friend Light operator*(Light x, Light y) { return {x.red * y.red, x.green * y.green, x.blue * y.blue}; }
    friend Light operator*(Light x, float factor) { return {x.red * factor, x.green * factor, x.blue * factor}; }
    Light& operator+=(Light other) { return *this = *this + other; }
};

[[nodiscard]] inline Light mixed(Light from, Light to, float share) { return from * (1 - share) + to * share; }

/// Of six hexadecimal digits.
[[nodiscard]] Light lightOf(std::string_view hex);

/// With sRGB's transfer curve applied, 0..1; light outside of 0..1 is cut off.
[[nodiscard]] float coded(float light);

/// Bright light bends towards white instead of breaking off: what is below half stays as it is.
[[nodiscard]] Light softened(Light light);

/// Colours along a line from 0 to 1, mixed in a perceptual space and without a crease where they meet.
class Palette {
public:
    struct Stop {
        float place;
        std::string_view hex;
    };
    Palette(std::initializer_list<Stop> stops);

    /// Places outside of 0..1 give the ends.
    [[nodiscard]] Light at(float place) const {
        const float scaled = std::clamp(place, 0.0F, 1.0F) * (kEntries - 1);
        const auto entry = std::min(static_cast<std::size_t>(scaled), kEntries - 2);
        return mixed(m_entries[entry], m_entries[entry + 1], scaled - static_cast<float>(entry));
    }

private:
    static constexpr std::size_t kEntries = 1024;

    std::vector<Light> m_entries;
};

} // namespace morvelin::wallpapers
