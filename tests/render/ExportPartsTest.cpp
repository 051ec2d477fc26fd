#include "render/FilmRenderer.h"

#include "render/FilmFixture.h"
#include "render/FilmInstruction.h"

namespace morvelin {
namespace {

class ExportPartsTest : public FilmFixture {
protected:
    Film film(const ProjectBundle::Contents& project) {
        const EditPayload& edit = project.versions[0].edit;
        const MovieProperties movie = open(project.recordingURL)->properties();
        return {FragmentCompositionBuilder::build(movie, edit.fragments).value(),
                makeInstruction(
                    {edit, project.cursorEvents, nullptr, movie.size, kTestSize, FilmStyle::OfProject, {}, nullptr}),
                kRecordingRate};
    }

    /// The pictures of one part, rendered by a reader and a compositor of its own.
    std::vector<Picture> render(const Film& wanted, FilmPart part) {
        std::vector<Picture> pictures;
        const auto reader = open(m_bundle / "recording.mov");
        Compositor compositor(wanted.instruction, Subsampling::Quarter);
        const auto keep = [&](std::int64_t, const ComposedFrame& frame) -> Result<void, ExportError> {
            pictures.push_back(copyOf(frame.picture));
            return {};
        };
        EXPECT_TRUE(renderPart(wanted, part, {*reader, nullptr, {}}, compositor, keep, {}));
        return pictures;
    }

    static Picture copyOf(const Picture& picture) {
        Picture copy(picture.size(), picture.subsampling());
        for (int index = 0; index < 3; ++index)
            for (int y = 0; y < picture.plane(index).height; ++y)
                std::copy_n(picture.plane(index).row(y), picture.plane(index).width, copy.plane(index).row(y));
        return copy;
    }
};

TEST_F(ExportPartsTest, PartsSideBySideGiveTheFilm) {
    record(60);
    auto project = plainProject({fragment(0, 1.2), fragment(1.5, 2, 0.5, 1)});
    project.versions[0].edit.padding = 0.1;
    project.versions[0].edit.clickAnimationsEnabled = true;
    project.cursorEvents = {{SourceTime(0.9), 0.5, 0.5, CursorEventType::MouseDown, MouseButton::Left, 2}};
    const Film wanted = film(project);
    ASSERT_EQ(wanted.frameCount(), 66);

    const std::vector<Picture> whole = render(wanted, {0, 66});
    std::vector<Picture> parts = render(wanted, {0, 29});
    for (Picture& picture : render(wanted, {29, 66})) parts.push_back(std::move(picture));
    ASSERT_EQ(parts.size(), whole.size());
    for (std::size_t i = 0; i < whole.size(); ++i) EXPECT_TRUE(areEqual(parts[i], whole[i])) << "frame " << i;
}

TEST_F(ExportPartsTest, AStillStretchTellsTheEncoderThatNothingChanged) {
    record({0, 1}, 2);
    const Film wanted = film(plainProject({fragment(0, 2)}));
    const auto reader = open(m_bundle / "recording.mov");
    Compositor compositor(wanted.instruction, Subsampling::Quarter);
    std::vector<std::int64_t> changes;
    const auto note = [&](std::int64_t number, const ComposedFrame& frame) -> Result<void, ExportError> {
        if (!frame.changed.empty()) changes.push_back(number);
        return {};
    };
    ASSERT_TRUE(renderPart(wanted, {0, wanted.frameCount()}, {*reader, nullptr, {}}, compositor, note, {}));
    EXPECT_THAT(changes, testing::ElementsAre(0, 30));
}

TEST_F(ExportPartsTest, AnErrorOfTheSinkEndsTheRendering) {
    record(30);
    const Film wanted = film(plainProject({fragment(0, 1)}));
    const auto reader = open(m_bundle / "recording.mov");
    Compositor compositor(wanted.instruction, Subsampling::Quarter);
    std::int64_t last = -1;
    const auto refuse = [&](std::int64_t number, const ComposedFrame&) -> Result<void, ExportError> {
        last = number;
        if (number == 7) return failure(ExportError{ExportError::Kind::DiskFull, {}, {}});
        return {};
    };
    const auto rendered = renderPart(wanted, {0, 30}, {*reader, nullptr, {}}, compositor, refuse, {});
    ASSERT_FALSE(rendered);
    EXPECT_EQ(rendered.error().kind, ExportError::Kind::DiskFull);
    EXPECT_EQ(last, 7);
}

TEST(ExportFrames, AFilmHasWholeFramesOnly) {
    struct Case {
        double duration, rate;
        std::int64_t frames;
    };
    for (const Case& c : {Case{1, 30, 30},
                          {58.783333, 60, 3527},
                          {1.01, 30, 31},
                          {0.002, 30, 1},
                          {0, 30, 0},
                          {1.001, 30000 / 1001.0, 30}}) {
        Film film;
        film.composition = EditComposition(
            {{EditTime(0), EditTime(c.duration), SourceTime(0), SourceTime(c.duration), 1}});
        film.frameRate = c.rate;
        EXPECT_EQ(film.frameCount(), c.frames) << c.duration << " s at " << c.rate;
    }
}

} // namespace
} // namespace morvelin
