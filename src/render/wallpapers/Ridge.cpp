#include "render/wallpapers/Ridge.h"

namespace morvelin::wallpapers {

namespace {

/// Pixels above and below an outline within which steepness may leave a pixel partly covered.
constexpr float kReach = 12;

} // namespace

float Ridge::coverage(std::size_t column, float y) const {
    const float depth = (y - m_tops[column]) / m_pixel;
    if (depth <= -kReach) return 0;
    if (depth >= kReach) return 1;
    const std::size_t next = column + 1 < m_tops.size() ? column + 1 : column;
    const std::size_t before = column > 0 ? column - 1 : column;
    const float steepness = (m_tops[next] - m_tops[before]) / (2 * m_pixel);
    return std::clamp(depth / std::sqrt(1 + steepness * steepness) + 0.5F, 0.0F, 1.0F);
}

std::vector<float> Ridge::runningMean(const std::vector<float>& tops) const {
    const auto width = static_cast<std::size_t>(2 * smoothReach() + 1);
    std::vector<float> means;
    double sum = 0;
    for (std::size_t i = 0; i < tops.size(); ++i) {
        sum += tops[i];
        if (i + 1 < width) continue;
        means.push_back(static_cast<float>(sum / static_cast<double>(width)));
        sum -= tops[i + 1 - width];
    }
    return means;
}

} // namespace morvelin::wallpapers
