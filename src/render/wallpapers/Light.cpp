#include "render/wallpapers/Light.h"

#include <array>
#include <cmath>

#include "render/ColorMath.h"

namespace morvelin::wallpapers {

namespace {

/// How far the mix of two stops reaches into their neighbours, as a share of the palette.
constexpr double kCrease = 0.05;

float linear(double value) {
    return static_cast<float>(value <= 0.04045 ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4));
}

Light lightOf(const Rgb& color) { return {linear(color.red), linear(color.green), linear(color.blue)}; }

/// The curve by the root of the light: there it is so smooth that straight lines between entries tell it.
class CodingTable {
public:
    CodingTable() {
        for (std::size_t i = 0; i < m_values.size(); ++i) {
            const double light = std::pow(static_cast<double>(i) / kLast, 2);
            m_values[i] = static_cast<float>(light <= 0.0031308 ? light * 12.92
                                                                : 1.055 * std::pow(light, 1 / 2.4) - 0.055);
        }
    }
    [[nodiscard]] float at(float light) const {
        const float place = std::sqrt(std::clamp(light, 0.0F, 1.0F)) * kLast;
        const auto entry = std::min(static_cast<std::size_t>(place), static_cast<std::size_t>(kLast - 1));
        return std::lerp(m_values[entry], m_values[entry + 1], place - static_cast<float>(entry));
    }

private:
    static constexpr int kLast = 4096;

    std::array<float, kLast + 1> m_values{};
};

Oklab alongStops(std::span<const Palette::Stop> stops, float place) {
    const auto lab = [](const Palette::Stop& stop) { return oklabFromRgb(rgbFromHex(stop.hex)); };
    std::size_t next = 0;
    while (next < stops.size() && stops[next].place < place) ++next;
    if (next == 0) return lab(stops.front());
    if (next == stops.size()) return lab(stops.back());
    const Palette::Stop& before = stops[next - 1];
    return mixed(lab(before), lab(stops[next]), (place - before.place) / (stops[next].place - before.place));
}

/// A running mean; past its ends a row goes on as it ended.
std::vector<Oklab> blurred(const std::vector<Oklab>& row, int reach) {
    std::vector<Oklab> out(row.size());
    const int last = static_cast<int>(row.size()) - 1;
    const auto at = [&](int i) { return row[static_cast<std::size_t>(std::clamp(i, 0, last))]; };
    Oklab sum;
    for (int i = -reach; i <= reach; ++i) sum = sum + at(i);
    for (int i = 0; i <= last; ++i) {
        out[static_cast<std::size_t>(i)] = sum * (1.0 / (2 * reach + 1));
        sum = sum + at(i + reach + 1) + at(i - reach) * -1;
    }
    return out;
}

} // namespace

Light lightOf(std::string_view hex) { return lightOf(rgbFromHex(hex)); }

float coded(float light) {
    static const CodingTable table;
    return table.at(light);
}

Light softened(Light light) {
    const auto bent = [](float value) {
        return value <= 0.5F ? value : 1 - 0.25F / (value); // meets the straight line with the same slope
    };
    return {bent(light.red), bent(light.green), bent(light.blue)};
}

Palette::Palette(std::initializer_list<Stop> stops) {
    std::vector<Oklab> row;
    for (std::size_t i = 0; i < kEntries; ++i) row.push_back(alongStops(stops, static_cast<float>(i) / (kEntries - 1)));
    const auto reach = static_cast<int>(kCrease * kEntries);
    for (const Oklab& color : blurred(blurred(blurred(row, reach), reach), reach))
        m_entries.push_back(lightOf(rgbFromOklab(color)));
}

} // namespace morvelin::wallpapers
