// Checks images by decoding them, as they will be when they are drawn.
#pragma once

#include "platform/ImageFile.h"

namespace morvelin {

class FFmpegImageProbe final : public ImageFileProbe {
public:
    [[nodiscard]] std::optional<Image> probe(const std::filesystem::path& file) const override;
};

} // namespace morvelin
