// Chance that is the same in every run: hashes, and the smooth noise of which clouds, sand and rock are made.
#pragma once

#include <cstdint>

namespace morvelin::wallpapers {

/// A number without a pattern for each cell of a grid.
[[nodiscard]] inline std::uint32_t hashOf(int x, int y, std::uint32_t seed) {
    std::uint32_t h = static_cast<std::uint32_t>(x) * 0x9E3779B1U ^
                      (static_cast<std::uint32_t>(y) * 0x85EBCA77U + seed * 0xC2B2AE3DU);
    h = (h ^ h >> 15) * 0x2C1B3C6DU;
    h = (h ^ h >> 12) * 0x297A2D39U;
    return h ^ h >> 15;
}

/// 0 up to but not including 1.
[[nodiscard]] inline float chance(int x, int y, std::uint32_t seed) {
    return static_cast<float>(hashOf(x, y, seed) >> 8) * 0x1p-24F;
}

/// Smooth noise around 0, seldom beyond ±1, whose hills are about a unit wide.
[[nodiscard]] float noise(float x, float y, std::uint32_t seed);

/// Noise in octaves, each twice as fine as the one before and `gain` times as strong.
class Fractal {
public:
    struct Form {
        float frequency = 1; ///< hills of the first octave per unit
        int octaves = 5;
        float gain = 0.5F;
        std::uint32_t seed = 1;
    };
    /// Octaves finer than `pixel` are left out: they would only flicker from size to size.
    Fractal(const Form& form, float pixel);

    /// Around 0, seldom beyond ±1.
    [[nodiscard]] float at(float x, float y) const;
    /// 0..1, with sharp crests at 1.
    [[nodiscard]] float crestsAt(float x, float y) const;

private:
    template <class Bend>
    [[nodiscard]] float sum(float x, float y, const Bend& bend) const;

    Form m_form;
    int m_octaves;
    float m_scale = 1; ///< of the sum, as if all octaves were there
};

} // namespace morvelin::wallpapers
