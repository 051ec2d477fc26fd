#include "render/wallpapers/Noise.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace morvelin::wallpapers {

namespace {

struct Direction {
    float x;
    float y;
};

/// Sixteen directions, none along an axis, where noise on a grid shows its grid.
constexpr std::array<Direction, 16> kDirections = {{{0.981F, 0.195F},
                                                    {0.831F, 0.556F},
                                                    {0.556F, 0.831F},
                                                    {0.195F, 0.981F},
                                                    {-0.195F, 0.981F},
                                                    {-0.556F, 0.831F},
                                                    {-0.831F, 0.556F},
                                                    {-0.981F, 0.195F},
                                                    {-0.981F, -0.195F},
                                                    {-0.831F, -0.556F},
                                                    {-0.556F, -0.831F},
                                                    {-0.195F, -0.981F},
                                                    {0.195F, -0.981F},
                                                    {0.556F, -0.831F},
                                                    {0.831F, -0.556F},
                                                    {0.981F, -0.195F}}};

/// Brings the noise's usual range to ±1.
constexpr float kReach = 1.55F;
/// Each octave is turned against the one before and not quite twice as fine, so that their grids never meet.
constexpr float kFiner = 2.03F;
constexpr float kTurnX = 0.8F;
constexpr float kTurnY = 0.6F;

int floorOf(float value) {
    const int whole = static_cast<int>(value);
    return static_cast<float>(whole) > value ? whole - 1 : whole;
}

float slopeAt(int x, int y, std::uint32_t seed, float dx, float dy) {
    const Direction& direction = kDirections[hashOf(x, y, seed) & 15];
    return direction.x * dx + direction.y * dy;
}

float eased(float t) { return t * t * t * (t * (t * 6 - 15) + 10); }

float between(float from, float to, float share) { return from + (to - from) * share; }

} // namespace

float noise(float x, float y, std::uint32_t seed) {
    const int cellX = floorOf(x);
    const int cellY = floorOf(y);
    const float dx = x - static_cast<float>(cellX);
    const float dy = y - static_cast<float>(cellY);
    const float across = eased(dx);
    const float upper = between(slopeAt(cellX, cellY, seed, dx, dy), slopeAt(cellX + 1, cellY, seed, dx - 1, dy),
                                across);
    const float lower = between(slopeAt(cellX, cellY + 1, seed, dx, dy - 1),
                                slopeAt(cellX + 1, cellY + 1, seed, dx - 1, dy - 1), across);
    return kReach * between(upper, lower, eased(dy));
}

Fractal::Fractal(const Form& form, float pixel) : m_form(form), m_octaves(0) {
    float strength = 1;
    float total = 0;
    float frequency = form.frequency;
    for (int octave = 0; octave < form.octaves; ++octave) {
        total += strength;
        strength *= form.gain;
        if (frequency * pixel < 0.7F) m_octaves = octave + 1;
        frequency *= kFiner;
    }
    m_scale = 1 / total;
}

template <class Bend>
float Fractal::sum(float x, float y, const Bend& bend) const {
    float px = x * m_form.frequency;
    float py = y * m_form.frequency;
    float strength = m_scale;
    float value = 0;
    for (int octave = 0; octave < m_octaves; ++octave) {
        value += strength * bend(noise(px, py, m_form.seed + static_cast<std::uint32_t>(octave)));
        const float turned = kTurnX * px - kTurnY * py;
        py = kFiner * (kTurnY * px + kTurnX * py);
        px = kFiner * turned;
        strength *= m_form.gain;
    }
    return value;
}

float Fractal::at(float x, float y) const {
    return 1.5F * sum(x, y, [](float value) { return value; });
}

float Fractal::crestsAt(float x, float y) const {
    return sum(x, y, [](float value) { return std::max(0.0F, 1 - std::abs(value)); });
}

} // namespace morvelin::wallpapers
