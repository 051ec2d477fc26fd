// A whole export shows, at any moment, what a still of that moment shows: two roads that share no frame.

#include <random>

#include "media/ColorConversion.h"
#include "media/PNG.h"
#include "render/ExportFixture.h"
#include "render/ProjectFrameReader.h"

namespace morvelin {
namespace {

using ExportAgainstStills = ExportFixture;

double meanDifference(const Image& a, const Image& b) {
    if (a.size != b.size) return 255;
    double sum = 0;
    for (std::size_t i = 0; i < a.pixels.size(); ++i) sum += std::abs(int{a.pixels[i]} - int{b.pixels[i]});
    return sum / (0.75 * static_cast<double>(a.pixels.size())); // alpha is equal
}

TEST_F(ExportAgainstStills, AtTwoHundredRandomMoments) {
    record(420);
    auto project = plainProject({fragment(0, 4), fragment(5, 9, 2, 1), fragment(9.5, 14, 0.75, 2)});
    EditPayload& edit = project.versions[0].edit;
    edit.padding = 0.08;
    edit.cornerRadius = 0.04;
    edit.shadowIntensity = 0.5;
    edit.background.type = BackgroundType::SolidColor;
    edit.background.solidColor = {0.2, 0.4, 0.7, 1};
    const auto zoom = [this](double start, double factor) {
        return ZoomKeyframe{m_ids.next(), EditTime(start), 0.7_s, factor, ZoomTransitionType::Smooth, false};
    };
    edit.zoomKeyframes = {zoom(0, 1), zoom(1.5, 1.8), zoom(3.7, 1), zoom(7.6, 2.2), zoom(10, 1)};
    edit.maskKeyframes = {{m_ids.next(), EditTime(1), EditTime(5), {0.1, 0.1, 0.3, 0.2}, 9}};
    edit.focusKeyframes = {{m_ids.next(), EditTime(2), EditTime(6), {0.5, 0.4, 0.3, 0.3}, 0.4_s, {}, {}}};
    edit.tapTapKeyframes = {{m_ids.next(), EditTime(6.5), EditTime(9), 0.6, 0.5, 0.2, {}}};
    for (int i = 0; i < 420; ++i)
        project.cursorEvents.push_back({SourceTime(i / 30.0), 0.3 + 0.4 * ((i / 60) % 2), 0.2 + 0.001 * i,
                                        i % 50 == 20   ? CursorEventType::MouseDown
                                        : i % 50 == 24 ? CursorEventType::MouseUp
                                                       : CursorEventType::Move,
                                        MouseButton::Left, 1});
    ASSERT_TRUE(run(project, to("Film.mp4")));

    const auto film = open(m_out / "Film.mp4");
    ProjectFrameReader stills(m_readers, {});
    stills.show(std::make_shared<const ProjectBundle::Contents>(project));
    std::mt19937 random(11);
    const double length = film->properties().end.value;
    EXPECT_NEAR(length, 12, 1.0 / 30);
    double sum = 0;
    for (int i = 0; i < 200; ++i) {
        const double at = std::uniform_real_distribution(0.0, 11.99)(random);
        const auto still = stills.readRendered(EditTime(at), 1536);
        ASSERT_TRUE(still) << at;
        const auto frame = film->frameAt(SourceTime(at));
        ASSERT_TRUE(frame) << at;
        const double difference = meanDifference(imageOf(*frame->picture), decodePNG(still->pngData).value());
        EXPECT_LT(difference, 4) << "at " << at << ": what the encoder may lose at most while all moves";
        sum += difference;
    }
    EXPECT_LT(sum / 200, 2.6);
}

} // namespace
} // namespace morvelin
