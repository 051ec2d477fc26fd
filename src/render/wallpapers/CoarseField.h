// A slow field worked out at few places of a wallpaper and read between them: many octaves of noise would cost too much
// at each pixel. Owned by a scene.
#pragma once

#include <vector>

#include "render/wallpapers/View.h"

namespace morvelin::wallpapers {

class CoarseField {
public:
    /// `valueAt(x, y)` must not change much over a hundredth of the output's height.
    template <class ValueAt>
    CoarseField(const View& view, const ValueAt& valueAt) : m_left(-view.halfWidth - kSpacing) {
        m_columns = static_cast<int>(2 * view.halfWidth / kSpacing) + 4;
        m_rows = static_cast<int>(1 / kSpacing) + 4;
        for (int row = 0; row < m_rows; ++row)
            for (int column = 0; column < m_columns; ++column)
                m_values.push_back(
                    valueAt(m_left + static_cast<float>(column) * kSpacing, static_cast<float>(row - 1) * kSpacing));
    }

    /// Beyond the output the field goes on as it ends.
    [[nodiscard]] float at(float x, float y) const {
        const float across = std::clamp((x - m_left) / kSpacing, 0.0F, static_cast<float>(m_columns) - 1.01F);
        const float down = std::clamp(y / kSpacing + 1, 0.0F, static_cast<float>(m_rows) - 1.01F);
        const int column = static_cast<int>(across);
        const int row = static_cast<int>(down);
        const float* upper = m_values.data() + row * m_columns + column;
        const float* lower = upper + m_columns;
        const float dx = across - static_cast<float>(column);
        const float dy = down - static_cast<float>(row);
        const float above = upper[0] + (upper[1] - upper[0]) * dx;
        const float below = lower[0] + (lower[1] - lower[0]) * dx;
        return above + (below - above) * dy;
    }

private:
    static constexpr float kSpacing = 1.0F / 240;

    float m_left;
    int m_columns = 0;
    int m_rows = 0;
    std::vector<float> m_values;
};

} // namespace morvelin::wallpapers
