// Small tracks for the timeline's tests, written down or random.
#pragma once

#include <cmath>
#include <random>

#include "core/CursorEvent.h"
#include "core/Keyframes.h"
#include "core/VideoFragment.h"

namespace morvelin::test {

inline CursorEvent moveAt(double t, double x, double y) {
    return {SourceTime(t), x, y, CursorEventType::Move, std::nullopt, std::nullopt};
}

inline CursorEvent pressAt(double t, double x = 0.5, double y = 0.5) {
    return {SourceTime(t), x, y, CursorEventType::MouseDown, MouseButton::Left, 1};
}

/// Its id tells keys of different start or factor apart.
inline ZoomKeyframe zoomKey(double start, double transition, double factor,
                            ZoomTransitionType type = ZoomTransitionType::Smooth) {
    const UUID id{{static_cast<std::uint8_t>(start * 10), static_cast<std::uint8_t>(factor * 80)}};
    return {id, EditTime(start), Seconds(transition), factor, type, false};
}

inline PositionKeyframe positionKey(double time, double x, double y) {
    PositionKeyframe key;
    key.time = EditTime(time);
    key.centerX = key.targetX = x;
    key.centerY = key.targetY = y;
    return key;
}

inline VideoFragment fragment(std::int64_t order, double start, double end, double speed = 1) {
    return {UUID{}, SourceTime(start), SourceTime(end), speed, order, std::nullopt};
}

/// Numbers that repeat from run to run.
class Random {
public:
    explicit Random(std::uint64_t seed) : m_engine(seed) {}

    double number(double low, double high) { return std::uniform_real_distribution(low, high)(m_engine); }
    int count(int low, int high) { return std::uniform_int_distribution(low, high)(m_engine); }
    bool once(int in) { return count(1, in) == 1; }
    /// A multiple of 0.1, so that equal and exactly touching times are common.
    double tenth(double low, double high) { return std::round(number(low, high) * 10) / 10; }
    std::mt19937_64& engine() { return m_engine; }

private:
    std::mt19937_64 m_engine;
};

/// Ramps that may overlap, start together or have no length, in no order.
inline std::vector<ZoomKeyframe> randomZooms(Random& random, int most) {
    std::vector<ZoomKeyframe> zooms;
    for (int i = random.count(0, most); i > 0; --i)
        zooms.push_back(zoomKey(random.tenth(0, 20), random.once(5) ? 0 : random.tenth(0, 3),
                                random.once(3) ? 1 : random.number(1, 3),
                                random.once(2) ? ZoomTransitionType::Linear : ZoomTransitionType::Smooth));
    return zooms;
}

} // namespace morvelin::test
