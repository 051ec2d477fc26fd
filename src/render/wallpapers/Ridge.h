// The outline of what stands before the sky: hills, dunes, waves. It has one height at each column.
#pragma once

#include <vector>

#include "render/wallpapers/View.h"

namespace morvelin::wallpapers {

class Ridge {
public:
    /// `topAt(x)` gives the outline's y.
    template <class TopAt>
    Ridge(const View& view, const TopAt& topAt) : m_pixel(view.pixel) {
        const int beside = 2 * smoothReach();
        std::vector<float> tops;
        for (int column = -beside; column < view.size.width + beside; ++column) tops.push_back(topAt(view.x(column)));
        m_tops.assign(tops.begin() + beside, tops.end() - beside);
        m_smoothTops = runningMean(runningMean(tops));
    }

    [[nodiscard]] float top(std::size_t column) const { return m_tops[column]; }
    /// The outline without its peaks: mist lies more evenly than rock.
    [[nodiscard]] float smoothTop(std::size_t column) const { return m_smoothTops[column]; }
    /// How much of the pixel lies below the outline.
    [[nodiscard]] float coverage(std::size_t column, float y) const;

private:
    [[nodiscard]] int smoothReach() const { return std::max(1, static_cast<int>(0.07F / m_pixel)); }
    /// Of the columns within reach; those that lack some are left out.
    [[nodiscard]] std::vector<float> runningMean(const std::vector<float>& tops) const;

    float m_pixel;
    std::vector<float> m_tops;
    std::vector<float> m_smoothTops;
};

} // namespace morvelin::wallpapers
