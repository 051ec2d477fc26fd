#include "storage/RecordingHistory.h"

#include <algorithm>
#include <functional>
#include <map>

#include "core/base/Text.h"

namespace morvelin::RecordingHistory {

namespace {

namespace chrono = std::chrono;

/// [from, until)
struct DateRange {
    std::optional<Date> from;
    std::optional<Date> until;

    bool contains(Date date) const { return (!from || date >= *from) && (!until || date < *until); }
};

/// Days back are days of the calendar, so that they begin at midnight also across a change of the clocks.
DateRange rangeOf(const Filter& filter, const TimeZone& zone) {
    const auto daysBack = [&](int count) {
        return DateRange{zone.startOf(zone.dayOf(filter.referenceDate) - chrono::days(count)), {}};
    };
    switch (filter.dateFilter) {
    case DateFilter::All: return {};
    case DateFilter::Today: return daysBack(0);
    case DateFilter::Week: return daysBack(7);
    case DateFilter::Month: return daysBack(30);
    case DateFilter::Custom: return {filter.startDate, zone.startOf(zone.dayOf(filter.endDate) + chrono::days(1))};
    }
    return {};
}

std::vector<RecentProject> filtered(std::span<const RecentProject> projects, const Filter& filter,
                                    const TimeZone& zone) {
    const DateRange range = rangeOf(filter, zone);
    const std::string search = caseFolded(trimmed(filter.search));
    std::vector<RecentProject> left;
    std::ranges::copy_if(projects, std::back_inserter(left), [&](const RecentProject& project) {
        return (!filter.kindFilter || project.kind == filter.kindFilter) && range.contains(project.createdAt) &&
               (search.empty() || caseFolded(project.title).contains(search));
    });
    return left;
}

std::vector<Section> byDay(std::vector<RecentProject> projects, const TimeZone& zone) {
    std::map<chrono::local_days, Section, std::greater<>> days;
    for (RecentProject& project : projects) {
        const chrono::local_days day = zone.dayOf(project.createdAt);
        Section& section = days[day];
        if (!section.title) section = {zone.startOf(day), dayText(day), {}};
        section.projects.push_back(std::move(project));
    }
    std::vector<Section> sections;
    for (auto& [day, section] : days) sections.push_back(std::move(section));
    return sections;
}

} // namespace

std::string_view label(Layout layout) {
    switch (layout) {
    case Layout::All: return "All recordings";
    case Layout::Chronological: return "Chronological";
    }
    return {};
}

std::string_view label(DateFilter filter) {
    switch (filter) {
    case DateFilter::All: return "Any time";
    case DateFilter::Today: return "Today";
    case DateFilter::Week: return "Last 7 days";
    case DateFilter::Month: return "Last 30 days";
    case DateFilter::Custom: return "Custom range";
    }
    return {};
}

std::vector<Section> sections(std::span<const RecentProject> projects, const Filter& filter, Layout layout,
                              const TimeZone& zone) {
    std::vector<RecentProject> left = filtered(projects, filter, zone);
    if (left.empty()) return {};
    switch (layout) {
    case Layout::All: return {Section{{}, {}, std::move(left)}};
    case Layout::Chronological: return byDay(std::move(left), zone);
    }
    return {};
}

} // namespace morvelin::RecordingHistory
