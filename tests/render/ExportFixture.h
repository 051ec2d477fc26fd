// An export engine on a real disk, with a project to export.
#pragma once

#include "render/ExportEngine.h"
#include "render/FilmFixture.h"
#include "storage/TranscriptFile.h"

namespace morvelin {

class ExportFixture : public FilmFixture {
protected:
    Result<ExportedFiles, ExportError> run(const ProjectBundle::Contents& project, const ExportRequest& request = {},
                                           const ExportEngine::ProgressHandler& progress = {},
                                           const std::stop_token& stop = {}) {
        ExportEngine engine({m_readers, m_soundReaders, m_writers, m_activity, m_ids, m_clock,
                             [this](std::string_view line) { m_log.emplace_back(line); }, m_folder.path() / "home",
                             "1.2.3", m_sidecars, m_threads});
        return engine.exportProject(project, request, progress, stop);
    }

    ExportRequest to(const char* name) {
        ExportRequest request;
        request.output = m_out / name;
        return request;
    }

    void say(std::vector<TranscriptWord> words) {
        const FounderSourceTranscript transcript{"test", "en", {}, FounderSourceTranscript::segmentsFrom(words)};
        ASSERT_TRUE(ProjectBundle::writeTranscript(transcript, m_bundle));
    }

    void SetUp() override { std::filesystem::create_directories(m_out); }

    std::filesystem::path m_out = m_folder.path() / "out";
    FixedClock m_clock;
    ExportActivity m_activity;
    std::vector<std::string> m_log;
    SidecarChoice m_sidecars = SidecarChoice::Written;
    int m_threads = 2; ///< that render
};

} // namespace morvelin
