#include "render/StillPicture.h"

#include <algorithm>
#include <cmath>

#include "media/ColorConversion.h"
#include "render/FramePlan.h"
#include "render/VideoLayer.h"

namespace morvelin {

PixelSize sizeWithin(PixelSize size, int longEdge) {
    const int longer = std::max(size.width, size.height);
    if (longer <= longEdge) return size;
    const double scale = static_cast<double>(longEdge) / longer;
    const auto side = [&](int length) { return std::max(1, static_cast<int>(std::lround(length * scale))); };
    return {side(size.width), side(size.height)};
}

Picture resized(const Picture& picture, PixelSize size) {
    FramePlan plan;
    plan.stage.frameRect = {0, 0, static_cast<double>(size.width), static_cast<double>(size.height)};
    plan.stage.showsPicture = true;
    Picture scaled(size, Subsampling::None);
    VideoLayer layer(size, Subsampling::None);
    layer.prepare(plan, picture);
    layer.draw(picture, {0, 0, size.width, size.height}, scaled);
    return scaled;
}

Image imageOf(const Picture& picture, PixelSize size) {
    return picture.size() == size ? imageOf(picture) : imageOf(resized(picture, size));
}

} // namespace morvelin
