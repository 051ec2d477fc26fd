// A project's folder made a film: what of its files is read, and what becomes of those that are broken.
#include "render/ProjectFilm.h"

#include <fstream>

#include "render/FilmFixture.h"
#include "storage/TranscriptFile.h"

namespace morvelin {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

class ProjectFilmTest : public FilmFixture {
protected:
    Film film(const ProjectBundle::Contents& project, FilmStyle style = FilmStyle::OfProject) {
        m_lines.clear();
        auto movies = FilmMovies::open(project, m_readers, m_log);
        EXPECT_TRUE(movies);
        m_movies = std::move(*movies);
        auto film = makeFilm(project, m_movies, {kTestSize, kRecordingRate, style}, m_log);
        EXPECT_TRUE(film);
        return std::move(*film);
    }

    std::vector<std::string> m_lines;
    Log m_log = [this](std::string_view line) { m_lines.emplace_back(line); };
    FilmMovies m_movies;
};

TEST_F(ProjectFilmTest, CaptionsAreTheVersionsOrElseTheTranscripts) {
    record(60);
    auto project = plainProject({fragment(1, 2)});
    EXPECT_THAT(film(project).instruction->captionCues, IsEmpty());
    const TranscriptWord cutAway{SourceTime(0.2), SourceTime(0.5), "Gone", 1};
    const TranscriptWord spoken{SourceTime(1.2), SourceTime(1.5), "Here", 1};
    FounderSourceTranscript transcript{"test", "en", FixedClock().now(), {}};
    transcript.segments = {{cutAway.t, cutAway.endT, "Gone", 1, {cutAway}},
                           {spoken.t, spoken.endT, "Here", 1, {spoken}}};
    ASSERT_TRUE(ProjectBundle::writeTranscript(transcript, m_bundle));

    const auto cues = film(project).instruction->captionCues;
    ASSERT_THAT(cues, SizeIs(1));
    EXPECT_EQ(cues[0].text, "Here");
    EXPECT_NEAR(cues[0].t.value, 0.2, 1e-9) << "on the edit's clock";
    EXPECT_EQ(film(project).instruction->captionCues, cues) << "the same each time";
    EXPECT_THAT(film(project, FilmStyle::Plain).instruction->captionCues, IsEmpty());

    EditPayload& edit = project.versions[0].edit;
    edit.captions = CaptionTrack{};
    EXPECT_THAT(film(project).instruction->captionCues, IsEmpty()) << "the user has removed all lines";
    edit.captions.reset();
    edit.captionsEnabled = false;
    EXPECT_THAT(film(project).instruction->captionCues, IsEmpty());
}

TEST_F(ProjectFilmTest, ACameraThatCanNotBeReadCostsOnlyItsBubble) {
    record(60);
    std::filesystem::copy(m_bundle / "recording.mov", m_bundle / "camera.mov");
    auto project = plainProject({fragment(0, 2)});
    project.cameraURL = m_bundle / "camera.mov";
    project.versions[0].edit.camera = CameraSettings{{0.7, 0.7, 0.2, 0.2}, 0.5, false, 0.5_s};

    const auto numbersAt = [&](const Film& film, double t) {
        return framesAt(film, m_movies, EditTime(t)).value().numbers();
    };
    const Film whole = film(project);
    EXPECT_EQ(numbersAt(whole, 1), (FrameNumbers{30, 15})) << "it began half a second later";
    EXPECT_EQ(numbersAt(whole, 0.1), (FrameNumbers{3, 0})) << "and its first frame is held until then";
    project.versions[0].edit.cameraEnabled = false;
    EXPECT_EQ(numbersAt(film(project), 1), (FrameNumbers{30, -1}));

    project.versions[0].edit.cameraEnabled = true;
    std::ofstream(m_bundle / "camera.mov") << "no movie";
    const Film bare = film(project);
    EXPECT_FALSE(bare.showsCamera());
    EXPECT_EQ(numbersAt(bare, 1), (FrameNumbers{30, -1}));
    EXPECT_THAT(m_lines,
                ElementsAre("[FragmentCompositionBuilder] Could not lay out camera fragment: “camera.mov” is no "
                            "movie, or it is cut off before its index."));
}

} // namespace
} // namespace morvelin
