// The history window: filters, days, and what happens to a project that is opened or deleted from it.

#include <gmock/gmock.h>

#include "core/base/SimulatedEventLoop.h"
#include "storage/BundleOnDisk.h"
#include "storage/RecordingHistoryViewModel.h"

namespace morvelin {
namespace {

namespace fs = std::filesystem;
using namespace RecordingHistory;
using testing::ElementsAre;

Date date(const char* text) { return Date::parse(text).value(); }

/// Berlin's spring of 2026: UTC+1, and UTC+2 from March 29 at 01:00 UTC.
class Berlin final : public TimeZone {
public:
    [[nodiscard]] std::chrono::seconds offsetAt(Date at) const override {
        return std::chrono::hours(at < date("2026-03-29T01:00:00Z") ? 1 : 2);
    }
};

/// A place where midnight of May 2 is left out, and that of May 9 comes twice.
class MidnightChange final : public TimeZone {
public:
    [[nodiscard]] std::chrono::seconds offsetAt(Date at) const override {
        return std::chrono::hours(at >= date("2026-05-02T00:00:00Z") && at < date("2026-05-09T00:00:00Z") ? 1 : 0);
    }
};

TEST(TimeZoneTest, DaysBeginAtTheirFirstMoment) {
    const Berlin berlin;
    const MidnightChange changing;
    EXPECT_EQ(berlin.startOfDay(date("2026-03-28T23:30:00Z")).text(), "2026-03-28T23:00:00Z");
    EXPECT_EQ(berlin.startOfDay(date("2026-03-29T21:59:59Z")).text(), "2026-03-28T23:00:00Z") << "a day of 23 hours";
    EXPECT_EQ(berlin.startOfDay(date("2026-03-29T22:00:00Z")).text(), "2026-03-29T22:00:00Z");
    EXPECT_EQ(changing.startOfDay(date("2026-05-02T12:00:00Z")).text(), "2026-05-02T00:00:00Z") << "at one o'clock";
    EXPECT_EQ(changing.startOfDay(date("2026-05-09T12:00:00Z")).text(), "2026-05-08T23:00:00Z");
    EXPECT_EQ(dayText(berlin.dayOf(date("2026-11-20T23:30:00Z"))), "Nov 21, 2026");
    EXPECT_EQ(SystemTimeZone().startOfDay(SystemTimeZone().startOfDay(date("2026-05-05T12:00:00Z"))),
              SystemTimeZone().startOfDay(date("2026-05-05T12:00:00Z")));
}

RecentProject project(const char* title, const char* createdAt, std::optional<RecordingKind> kind = {}) {
    return {std::string("/") + title, title, date(createdAt), kind};
}

std::vector<std::string> titles(const std::vector<Section>& sections) {
    std::vector<std::string> all;
    for (const Section& section : sections) {
        if (section.title) all.push_back("# " + *section.title);
        for (const RecentProject& each : section.projects) all.push_back(each.title);
    }
    return all;
}

TEST(RecordingHistoryFilter, CountsDaysInTheUsersTimeZone) {
    const Berlin zone;
    const std::vector projects{project("now", "2026-04-02T09:00:00Z"),    project("midnight", "2026-04-01T22:00:00Z"),
                               project("late", "2026-04-01T21:59:59Z"),   project("week", "2026-03-25T23:00:00Z"),
                               project("8 days", "2026-03-25T22:59:59Z"), project("month", "2026-03-02T23:00:00Z"),
                               project("31 days", "2026-03-02T22:59:59Z")};
    Filter filter;
    filter.referenceDate = date("2026-04-02T10:00:00Z");
    const auto shown = [&](DateFilter dates) {
        filter.dateFilter = dates;
        return titles(sections(projects, filter, Layout::All, zone)).size();
    };
    EXPECT_EQ(shown(DateFilter::All), 7u);
    EXPECT_EQ(shown(DateFilter::Today), 2u);
    EXPECT_EQ(shown(DateFilter::Week), 4u) << "the clocks changed in between";
    EXPECT_EQ(shown(DateFilter::Month), 6u);
    filter.startDate = date("2026-03-25T22:59:59Z");
    filter.endDate = date("2026-04-01T10:00:00Z");
    filter.dateFilter = DateFilter::Custom;
    EXPECT_THAT(titles(sections(projects, filter, Layout::All, zone)), ElementsAre("late", "week", "8 days"));
}

TEST(RecordingHistoryFilter, SearchesTitlesAndKinds) {
    const std::vector projects{project("Über uns", "2026-04-02T09:00:00Z", RecordingKind::Agent),
                               project("U\u0308bung", "2026-04-02T09:00:00Z"),
                               project("STRASSE", "2026-04-02T09:00:00Z", RecordingKind::Screen)};
    Filter filter;
    const auto search = [&](const char* text) {
        filter.search = text;
        return titles(sections(projects, filter, Layout::All, Berlin()));
    };
    EXPECT_EQ(search(" \n").size(), 3u);
    EXPECT_THAT(search(" üb "), ElementsAre("Über uns", "U\u0308bung")) << "composed or not, it is one letter";
    EXPECT_THAT(search("straße"), ElementsAre("STRASSE"));
    EXPECT_THAT(search("ub"), ElementsAre());
    filter.kindFilter = RecordingKind::Agent;
    EXPECT_THAT(search(""), ElementsAre("Über uns"));
}

TEST(RecordingHistorySections, AreDaysWithTheNewestFirst) {
    const std::vector projects{project("c", "2026-04-02T09:00:00Z"), project("b", "2026-04-01T22:30:00Z"),
                               project("a", "2026-04-01T21:30:00Z")};
    EXPECT_THAT(titles(sections(projects, {}, Layout::Chronological, Berlin())),
                ElementsAre("# Apr 2, 2026", "c", "b", "# Apr 1, 2026", "a"));
    EXPECT_EQ(sections(projects, {}, Layout::Chronological, Berlin())[1].id, date("2026-03-31T22:00:00Z"));
    EXPECT_TRUE(sections({}, {}, Layout::All, Berlin()).empty());
}

class HistoryViewModelTest : public ProjectBundle::BundleOnDisk {
protected:
    HistoryViewModelTest() { EXPECT_TRUE(ProjectBundle::writeCapture(header({}), m_url)); }

    Task<std::optional<std::string>> openSlowly(fs::path url) {
        m_events.push_back("open " + url.stem().string());
        co_await m_loop.sleep(1_s);
        co_return m_failure;
    }
    RecordingHistoryViewModel::Actions actions() {
        return {[this](fs::path url) { return openSlowly(std::move(url)); },
                [this](const fs::path& url) { m_events.push_back("close " + url.stem().string()); },
                [this](const fs::path& url) {
                    m_events.push_back("remove " + url.stem().string());
                    if (!m_failure) fs::remove_all(url);
                    return m_failure;
                }};
    }

    SimulatedEventLoop m_loop;
    FixedTimeZone m_zone{std::chrono::hours(5)};
    std::optional<std::string> m_failure;
    std::vector<std::string> m_events;
    RecordingHistoryViewModel::Surroundings m_surroundings{m_loop, m_ids, m_clock, m_zone};
};

TEST_F(HistoryViewModelTest, OpensOneProjectAtATime) {
    RecordingHistoryViewModel history(m_surroundings, RecentProjectsStore(m_folder.path()), actions());
    EXPECT_EQ(history.filter().startDate.text(), "2026-11-20T19:00:00Z");
    EXPECT_EQ(history.filter().endDate, m_clock.date);
    history.load();
    m_loop.advance(0_s);
    const RecentProject take = history.sections().at(0).projects.at(0);
    history.open(take);
    history.open(take);
    EXPECT_EQ(history.openingProject(), m_url);
    m_failure = "It can't be opened.";
    m_loop.advance(1_s);
    EXPECT_FALSE(history.openingProject());
    EXPECT_EQ(history.openingError(), "It can't be opened.");
    EXPECT_THAT(m_events, ElementsAre("open Take"));

    history.open(take);
    EXPECT_FALSE(history.openingError());
    m_loop.advance(1_s);
}

TEST_F(HistoryViewModelTest, ClosesTheEditorBeforeItDeletesAndReadsTheListAnew) {
    RecordingHistoryViewModel history(m_surroundings, RecentProjectsStore(m_folder.path()), actions());
    history.load();
    m_loop.advance(0_s);
    const RecentProject take = history.projects().at(0);
    m_failure = "The Trash is full.";
    history.deleteProject(take);
    m_loop.advance(0_s);
    EXPECT_EQ(history.deletionError(), "The Trash is full.");
    EXPECT_EQ(history.projects().size(), 1u);
    m_failure.reset();
    history.deleteProject(take);
    m_loop.advance(0_s);
    EXPECT_FALSE(history.deletionError());
    EXPECT_TRUE(history.sections().empty());
    EXPECT_THAT(m_events, ElementsAre("close Take", "remove Take", "close Take", "remove Take"));
}

TEST_F(HistoryViewModelTest, AnOpeningMayOutliveTheWindow) {
    {
        RecordingHistoryViewModel history(m_surroundings, RecentProjectsStore(m_folder.path()), actions());
        history.open({m_url, "Take", {}, {}});
        history.deleteProject({m_folder.path() / "none", "", {}, {}});
    }
    m_loop.advance(1_s);
    EXPECT_EQ(m_events.size(), 3u);
}

} // namespace
} // namespace morvelin
