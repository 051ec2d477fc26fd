// The named operation "is this an image": asked before a picture of the user's is taken into a project.
#pragma once

#include <filesystem>
#include <optional>
#include <string>

#include "platform/Picture.h"

namespace morvelin {

class ImageFileProbe {
public:
    virtual ~ImageFileProbe() = default;

    /// Decodes the whole image; gives its size in pixels and the extension that goes with its form. Nothing for what is
    /// no image, is damaged, is of a form that this machine can't read, or is larger than 64 MiB, 2^25 pixels (2^27 of
    /// a JPEG) or 32767 pixels a side.
    struct Image {
        PixelSize size;
        std::string extension; ///< with its dot
    };
    [[nodiscard]] virtual std::optional<Image> probe(const std::filesystem::path& file) const = 0;
};

} // namespace morvelin
