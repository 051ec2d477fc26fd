// Checks images by decoding them with the same reader as movies.
#pragma once

#include "platform/ImageFile.h"
#include "platform/MovieReader.h"

namespace morvelin {

class FFmpegImageProbe final : public ImageFileProbe {
public:
    explicit FFmpegImageProbe(MovieReaderFactory& readers) : m_readers(readers) {}

    [[nodiscard]] std::optional<Image> probe(const std::filesystem::path& file) const override;

private:
    MovieReaderFactory& m_readers;
};

} // namespace morvelin
