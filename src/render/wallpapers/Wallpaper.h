// The wallpapers: pictures of our own that code paints, the same in every run, at any size and shape of output.
#pragma once

#include <memory>
#include <span>
#include <string_view>

#include "platform/Picture.h"
#include "render/wallpapers/Light.h"

namespace morvelin::wallpapers {

/// A picture of which each row can be painted by itself, on any thread.
class Wallpaper {
public:
    virtual ~Wallpaper() = default;

    /// Sets all pixels of a row of the output.
    virtual void paintRow(int row, std::span<Light> pixels) const = 0;
};

/// The wallpaper with that id, made for an output of that size; nothing for an unknown id.
[[nodiscard]] std::unique_ptr<const Wallpaper> makeWallpaper(std::string_view id, PixelSize output);

} // namespace morvelin::wallpapers
