// Ranges of mountains one behind the other, in the haze of an early morning.

#include "render/wallpapers/Noise.h"
#include "render/wallpapers/Ridge.h"
#include "render/wallpapers/Scenes.h"

namespace morvelin::wallpapers {

namespace {

constexpr int kRanges = 7;

/// 0 for the range furthest away, 1 for the nearest.
float nearness(int range) { return static_cast<float>(range) / (kRanges - 1); }

class Mountains final : public Wallpaper {
public:
    explicit Mountains(const View& view) : m_view(view), m_sunX(view.across(0.30F)) {
        for (int range = 0; range < kRanges; ++range) m_ranges.push_back(outline(view, range));
    }

    void paintRow(int row, std::span<Light> pixels) const override {
        const float y = m_view.y(row);
        for (std::size_t column = 0; column < pixels.size(); ++column) {
            const float x = m_view.x(static_cast<int>(column));
            Light light = skyAt(x, y);
            for (int range = 0; range < kRanges; ++range) {
                const Ridge& ridge = m_ranges[static_cast<std::size_t>(range)];
                const float covered = ridge.coverage(column, y);
                if (covered > 0) light = mixed(light, slopeAt(range, x, y, y - ridge.smoothTop(column)), covered);
            }
            pixels[column] = light;
        }
    }

private:
    static Ridge outline(const View& view, int range) {
        const float near = nearness(range);
        const auto seed = static_cast<std::uint32_t>(110 + range);
        const Fractal peaks({.frequency = 1.15F + 0.25F * near, .octaves = 7, .gain = 0.46F, .seed = seed}, view.pixel);
        const float base = 0.47F + 0.46F * std::pow(near, 1.15F);
        const float reach = 0.22F - 0.05F * near;
        return {view, [&](float x) {
                    const float shifted = x + 3.7F * static_cast<float>(range);
                    const float crests = peaks.crestsAt(shifted, 0.37F * static_cast<float>(range));
                    return base - reach * (crests - 0.62F) * 1.5F;
                }};
    }

    [[nodiscard]] Light skyAt(float x, float y) const {
        const float toSun = std::hypot(x - m_sunX, y - 0.29F);
        const Light sky = m_sky.at(y / 0.62F);
        const float disc = 1 - rise(0.046F, 0.049F, toSun);
        const float glow = 0.45F * std::exp(-toSun / 0.14F) + 0.30F * std::exp(-toSun / 0.5F);
        return mixed(mixed(sky, m_sun, glow), m_disc, 0.9F * disc);
    }

    /// Mist gathers at the foot of a range, so that the next one stands out.
    [[nodiscard]] Light slopeAt(int range, float x, float y, float depth) const {
        const float near = nearness(range);
        const float mist = rise(-0.02F, 0.20F, depth) * 0.62F * (1 - near);
        const float toSun = std::hypot(x - m_sunX, y - 0.29F);
        const Light haze = mixed(m_haze, m_warmHaze, std::exp(-toSun / 0.5F));
        return mixed(m_rock.at(near), haze, mist);
    }

    View m_view;
    float m_sunX;
    std::vector<Ridge> m_ranges;
    Palette m_sky{{0, "5E86C0"}, {0.3F, "9DBBDC"}, {0.58F, "DDD3DC"}, {0.8F, "FBD3C0"}, {1, "FFE3C8"}};
    Palette m_rock{{0, "A9B7CC"},    {0.2F, "8299B8"},  {0.45F, "55749A"},
                   {0.7F, "2F4F72"}, {0.88F, "173049"}, {1, "0C1D2E"}};
    Light m_haze = lightOf("C3D0DE");
    Light m_warmHaze = lightOf("FADFCB");
    Light m_sun = lightOf("FFE2BE");
    Light m_disc = lightOf("FFF8EA");
};

} // namespace

Painting mountains(const View& view) { return std::make_unique<Mountains>(view); }

} // namespace morvelin::wallpapers
