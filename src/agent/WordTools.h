// The tools about what is said: narration lines, the transcript, subtitle files, and which spoken take is heard.
#pragma once

#include "agent/MCPProjectEditor.h"
#include "narration/VersionSound.h"
#include "platform/MovieReader.h"
#include "speech/NarrationCaptions.h"

namespace morvelin {

class WordTools {
public:
    WordTools(MovieReaderFactory& movies, std::filesystem::path home, std::filesystem::path exports)
        : m_movies(movies),
          m_home(std::move(home)),
          m_exports(std::move(exports)) {}

    [[nodiscard]] ToolOutcome narrate(EditedProject& project, const ArgumentReader& arguments) const;
    [[nodiscard]] ToolOutcome clearNarration(EditedProject& project, const ArgumentReader& arguments) const;
    [[nodiscard]] ToolOutcome editTranscript(EditedProject& project, const ArgumentReader& arguments) const;
    [[nodiscard]] ToolOutcome exportCaptions(EditedProject& project, const ArgumentReader& arguments) const;
    [[nodiscard]] ToolOutcome transcriptionStatus(EditedProject& project, const ArgumentReader& arguments) const;
    [[nodiscard]] ToolOutcome useNarrationTake(EditedProject& project, const ArgumentReader& arguments) const;

private:
    [[nodiscard]] VersionSound soundOf(const EditedProject& project) const;

    MovieReaderFactory& m_movies;
    std::filesystem::path m_home;
    std::filesystem::path m_exports;
};

} // namespace morvelin
