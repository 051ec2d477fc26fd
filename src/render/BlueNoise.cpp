#include "render/BlueNoise.h"

#include <algorithm>
#include <cmath>

namespace morvelin {

namespace {

constexpr int kSide = BlueNoise::kSide;
constexpr int kCount = kSide * kSide;
/// How wide a point spreads its influence, in samples: the value of the void-and-cluster method.
constexpr double kSpread = 1.9;
constexpr int kReach = 8;

using Field = std::array<float, kCount>;

std::size_t wrapped(int x, int y) { return static_cast<std::size_t>((y & (kSide - 1)) * kSide + (x & (kSide - 1))); }

/// A start without any pattern, far weaker than a point's influence.
Field unevenField() {
    Field field;
    std::uint32_t state = 0x2545F491U;
    for (float& value : field) {
        state = state * 1664525U + 1013904223U;
        value = static_cast<float>(state >> 8) * 1e-10F;
    }
    return field;
}

void spreadFrom(std::size_t place, Field& field) {
    const int x = static_cast<int>(place) % kSide;
    const int y = static_cast<int>(place) / kSide;
    for (int dy = -kReach; dy <= kReach; ++dy)
        for (int dx = -kReach; dx <= kReach; ++dx)
            field[wrapped(x + dx, y + dy)] += static_cast<float>(
                std::exp(-(dx * dx + dy * dy) / (2 * kSpread * kSpread)));
    field[place] += 1e6F;
}

} // namespace

/// Each next rank goes into the largest void left by the ranks before it (R. Ulichney, "The void-and-cluster method
/// for dither array generation", 1993).
BlueNoise::BlueNoise() {
    Field field = unevenField();
    for (int rank = 0; rank < kCount; ++rank) {
        const auto place = static_cast<std::size_t>(std::min_element(field.begin(), field.end()) - field.begin());
        m_ranks[place] = static_cast<std::uint16_t>(rank);
        spreadFrom(place, field);
    }
    for (int y = 0; y < kSide; ++y)
        for (int x = 0; x < kSide + 16; ++x)
            m_thresholds[static_cast<std::size_t>(y)][static_cast<std::size_t>(x)] = static_cast<std::uint8_t>(
                rank(x, y) * (1 << kDeepBits) / kCount);
}

const BlueNoise& BlueNoise::tile() {
    static const BlueNoise tile;
    return tile;
}

} // namespace morvelin
