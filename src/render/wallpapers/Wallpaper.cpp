#include "render/wallpapers/Wallpaper.h"

#include "render/wallpapers/Scenes.h"

namespace morvelin::wallpapers {

namespace {

struct Named {
    std::string_view id;
    Painting (*paint)(const View&);
};

template <auto Scene, auto Choice>
Painting chosen(const View& view) {
    return Scene(view, Choice);
}

constexpr Named kScenes[] = {{"wallpaper-milkyway", milkyWay},
                             {"wallpaper-prism", prism},
                             {"wallpaper-dusk", dusk},
                             {"wallpaper-wave", wave},
                             {"wallpaper-coast", coast},
                             {"wallpaper-violet-teal", satin},
                             {"wallpaper-ember-night", emberNight},
                             {"wallpaper-grain-ember", chosen<grainPoster, Poster::Ember>},
                             {"wallpaper-grain-violet", chosen<grainPoster, Poster::Violet>},
                             {"wallpaper-grain-indigo", chosen<grainPoster, Poster::Indigo>},
                             {"wallpaper-nebula", nebula},
                             {"wallpaper-cosmos", cosmos},
                             {"wallpaper-mountains", mountains},
                             {"wallpaper-dune-dark", chosen<dunes, Mood::Dark>},
                             {"wallpaper-dune-light", chosen<dunes, Mood::Light>},
                             {"wallpaper-valley-dark", chosen<valley, Mood::Dark>},
                             {"wallpaper-valley-light", chosen<valley, Mood::Light>},
                             {"wallpaper-petal-dark", chosen<petals, Mood::Dark>},
                             {"wallpaper-petal-light", chosen<petals, Mood::Light>},
                             {"wallpaper-golden-gate-dark", chosen<bridge, Mood::Dark>},
                             {"wallpaper-golden-gate-light", chosen<bridge, Mood::Light>},
                             {"wallpaper-spectrum", spectrum},
                             {"wallpaper-aurora-glow", auroraGlow}};

} // namespace

Painting makeWallpaper(std::string_view id, PixelSize output) {
    const auto* scene = std::ranges::find(kScenes, id, &Named::id);
    return scene != std::end(kScenes) ? scene->paint(View(output)) : nullptr;
}

} // namespace morvelin::wallpapers
