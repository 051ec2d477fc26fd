// The sun or the moon of a scene: a disc with a glow around it.
#pragma once

#include "render/wallpapers/View.h"

namespace morvelin::wallpapers {

struct Disc {
    float x = 0;
    float y = 0;
    float radius = 0;
    Light color;
    Light glow;      ///< at the disc's edge
    float reach = 1; ///< over which the glow fades

    [[nodiscard]] float distance(float px, float py) const { return std::hypot(px - x, py - y); }
    /// No star stands before the moon.
    [[nodiscard]] bool hides(float px, float py) const { return distance(px, py) < 1.15F * radius; }

    [[nodiscard]] Light over(Light sky, float px, float py) const {
        constexpr float kSoftness = 0.0015F;
        const float away = distance(px, py);
        const float seen = 0.93F * (1 - rise(radius - kSoftness, radius + kSoftness, away));
        return mixed(sky + glow * std::exp(-away / reach), color, seen);
    }
};

} // namespace morvelin::wallpapers
