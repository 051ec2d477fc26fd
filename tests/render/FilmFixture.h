// A real recording whose frames carry their numbers, in a project on a real disk.
#pragma once

#include <gmock/gmock.h>

#include "base/TemporaryFolder.h"
#include "core/base/Date.h"
#include "media/FFmpegMovieReader.h"
#include "media/FFmpegMovieWriter.h"
#include "media/FFmpegSoundReader.h"
#include "media/TestPictures.h"
#include "storage/ProjectBundle.h"

namespace morvelin {

struct FixedClock final : WallClock {
    [[nodiscard]] Date now() const override { return Date::fromUnixSeconds(1'700'000'000); }
    [[nodiscard]] HostTime uptime() const override { return HostTime(0); }
};

/// Which frame of the recording shows when, at steady 30 frames a second.
constexpr double kRecordingRate = 30;

class FilmFixture : public testing::Test {
protected:
    FilmFixture() { std::filesystem::create_directories(m_bundle); }

    /// Writes the recording: frame `i` starts at `times[i]` and carries the number `i`.
    void record(const std::vector<double>& times, double end) {
        auto writer = m_writers.create({.path = m_bundle / "recording.mov",
                                        .container = MovieSettings::Container::FragmentedQuickTime,
                                        .pace = MovieSettings::Pace::RealTime,
                                        .size = kTestSize,
                                        .frameRate = kRecordingRate,
                                        .bitRate = 4'000'000});
        ASSERT_TRUE(writer);
        Picture picture = detailedPicture(kTestSize);
        for (std::size_t i = 0; i < times.size(); ++i) {
            const std::vector<PixelBox> boxes = drawNumber(picture, static_cast<int>(i));
            ASSERT_TRUE((*writer)->append(picture, Seconds(times[i]), i == 0 ? std::vector{whole(picture)} : boxes));
        }
        ASSERT_TRUE((*writer)->finish(Seconds(end)));
    }

    /// A steady recording of so many frames.
    void record(int frames) {
        std::vector<double> times;
        for (int i = 0; i < frames; ++i) times.push_back(i / kRecordingRate);
        record(times, frames / kRecordingRate);
    }

    /// The project, with an edit that shows the recording and nothing else.
    ProjectBundle::Contents plainProject(const std::vector<VideoFragment>& fragments) {
        ProjectBundle::Contents project;
        project.recordingURL = m_bundle / "recording.mov";
        project.versions.push_back({m_ids.next(), "Version 1", false, {}, {}, {}});
        project.currentVersionID = project.versions[0].id;
        EditPayload& edit = project.versions[0].edit;
        edit.fragments = fragments;
        edit.padding = 0;
        edit.cornerRadius = 0;
        edit.shadowIntensity = 0;
        return project;
    }

    VideoFragment fragment(double start, double end, double speed = 1, std::int64_t order = 0) {
        return {m_ids.next(), SourceTime(start), SourceTime(end), speed, order, {}};
    }

    std::unique_ptr<MovieReader> open(const std::filesystem::path& movie) {
        auto reader = m_readers.open(movie);
        EXPECT_TRUE(reader) << (reader ? "" : reader.error().description());
        return reader ? std::move(*reader) : nullptr;
    }

    TemporaryFolder m_folder;
    std::filesystem::path m_bundle = m_folder.path() / "Take.morvelin";
    SeededIdSource m_ids{7};
    FFmpegMovieReaderFactory m_readers;
    FFmpegSoundReaderFactory m_soundReaders{{}};
    FFmpegMovieWriterFactory m_writers{{.threads = 2}};
};

} // namespace morvelin
