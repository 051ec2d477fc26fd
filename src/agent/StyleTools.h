// The tools that dress the video: background, frame, captions, pointer, and the webcam's bubble.
#pragma once

#include "agent/MCPProjectEditor.h"
#include "platform/ImageFile.h"
#include "platform/MovieReader.h"

namespace morvelin {

class StyleTools {
public:
    StyleTools(const ImageFileProbe& images, MovieReaderFactory& movies, std::filesystem::path home)
        : m_images(images),
          m_movies(movies),
          m_home(std::move(home)) {}

    [[nodiscard]] ToolOutcome setStyle(EditedProject& project, const ArgumentReader& arguments) const;
    [[nodiscard]] ToolOutcome setCamera(EditedProject& project, const ArgumentReader& arguments) const;

private:
    Result<void, std::string> takeBackgroundImage(EditedProject& project, const std::filesystem::path& path) const;
    [[nodiscard]] double aspectRatio(const std::filesystem::path& bundleURL) const;

    const ImageFileProbe& m_images;
    MovieReaderFactory& m_movies;
    std::filesystem::path m_home;
};

} // namespace morvelin
