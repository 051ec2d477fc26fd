// An image and its halves, so that a small copy of a large image is not made from all of its pixels each time. Owned by
// what draws it again and again.
#pragma once

#include <memory>
#include <vector>

#include "platform/Picture.h"

namespace morvelin {

class ImageLevels {
public:
    /// The smallest level of an image that still has more than two pixels for each of an image `height` high. Levels
    /// show the very same as the image: it is halved only where its sides are even. Valid until the next call.
    [[nodiscard]] const Image& fit(const std::shared_ptr<const Image>& image, double height);

private:
    std::shared_ptr<const Image> m_image;
    std::vector<Image> m_halves;
};

} // namespace morvelin
