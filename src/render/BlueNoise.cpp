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

/// Influence of the points so far on every place, and the least of each row, so that the least of all is found fast.
class Field {
public:
    Field() {
        // A start without any pattern, far weaker than a point's influence.
        std::uint32_t state = 0x2545F491U;
        for (float& value : m_values) {
            state = state * 1664525U + 1013904223U;
            value = static_cast<float>(state >> 8) * 1e-10F;
        }
        for (int y = 0; y < kSide; ++y) findLeast(y);
        for (int dy = -kReach; dy <= kReach; ++dy)
            for (int dx = -kReach; dx <= kReach; ++dx)
                m_influence[index(dx + kReach, dy + kReach)] = static_cast<float>(
                    std::exp(-(dx * dx + dy * dy) / (2 * kSpread * kSpread)));
    }

    /// The place with the least influence, which gets a point.
    std::size_t fillVoid() {
        const auto least = [&](std::size_t x) { return m_values[x]; };
        const std::size_t place = *std::ranges::min_element(m_leastOfRow, {}, least);
        const int x = static_cast<int>(place) % kSide;
        const int y = static_cast<int>(place) / kSide;
        m_values[place] = 1e6F; // taken
        for (int dy = -kReach; dy <= kReach; ++dy) {
            for (int dx = -kReach; dx <= kReach; ++dx)
                m_values[index(x + dx, y + dy)] += m_influence[index(dx + kReach, dy + kReach)];
            findLeast((y + dy) & (kSide - 1));
        }
        return place;
    }

private:
    static std::size_t index(int x, int y) {
        return static_cast<std::size_t>((y & (kSide - 1)) * kSide + (x & (kSide - 1)));
    }
    void findLeast(int y) {
        const auto row = m_values.begin() + y * kSide;
        m_leastOfRow[static_cast<std::size_t>(y)] = static_cast<std::size_t>(std::min_element(row, row + kSide) -
                                                                             m_values.begin());
    }

    std::array<float, kCount> m_values;
    std::array<std::size_t, kSide> m_leastOfRow{};
    std::array<float, kCount> m_influence{};
};

} // namespace

/// Each next rank goes into the largest void left by the ranks before it (R. Ulichney, "The void-and-cluster method
/// for dither array generation", 1993).
BlueNoise::BlueNoise() {
    Field field;
    for (int rank = 0; rank < kCount; ++rank) m_ranks[field.fillVoid()] = static_cast<std::uint16_t>(rank);
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
