// One function for each wallpaper, or for each family of them; what each shows stands in a file of its own.
#pragma once

#include <memory>

#include "render/wallpapers/View.h"
#include "render/wallpapers/Wallpaper.h"

namespace morvelin::wallpapers {

enum class Mood { Dark, Light };
enum class Poster { Ember, Violet, Indigo };

using Painting = std::unique_ptr<const Wallpaper>;

[[nodiscard]] Painting milkyWay(const View& view);
[[nodiscard]] Painting prism(const View& view);
[[nodiscard]] Painting dusk(const View& view);
[[nodiscard]] Painting wave(const View& view);
[[nodiscard]] Painting coast(const View& view);
[[nodiscard]] Painting satin(const View& view);
[[nodiscard]] Painting emberNight(const View& view);
[[nodiscard]] Painting grainPoster(const View& view, Poster poster);
[[nodiscard]] Painting nebula(const View& view);
[[nodiscard]] Painting cosmos(const View& view);
[[nodiscard]] Painting mountains(const View& view);
[[nodiscard]] Painting dunes(const View& view, Mood mood);
[[nodiscard]] Painting valley(const View& view, Mood mood);
[[nodiscard]] Painting petals(const View& view, Mood mood);
[[nodiscard]] Painting bridge(const View& view, Mood mood);
[[nodiscard]] Painting spectrum(const View& view);
[[nodiscard]] Painting auroraGlow(const View& view);

} // namespace morvelin::wallpapers
