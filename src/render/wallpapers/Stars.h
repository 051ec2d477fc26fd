// Stars: points of light with colours of their own, kept by rows so that a row is lit by its own stars alone.
#pragma once

#include <cstdint>
#include <functional>
#include <span>
#include <vector>

#include "render/wallpapers/Light.h"
#include "render/wallpapers/View.h"

namespace morvelin::wallpapers {

class Stars {
public:
    struct Form {
        float perSquare = 1000; ///< how many in a square of the output's height, where they are densest
        float size = 0.0007F;   ///< radius of the glow of one
        float brightness = 1;   ///< of the brightest; most are far darker
        float rarity = 3;       ///< the higher, the fewer are bright
        std::uint32_t seed = 1;
    };
    /// How dense they stand at a place, 0..1.
    using Density = std::function<float(float x, float y)>;

    Stars(const View& view, const Form& form, const Density& density, const Palette& colors = ofTheSky());

    /// From cool orange to hot blue; most are near white.
    [[nodiscard]] static const Palette& ofTheSky();

    void shineOn(int row, std::span<Light> pixels) const;

private:
    struct Star {
        float x; ///< in pixels
        float y;
        float radius;
        Light light;
    };
    void add(const Star& star, int height);

    std::vector<std::vector<Star>> m_rows; ///< a star is in each row that it reaches
};

} // namespace morvelin::wallpapers
