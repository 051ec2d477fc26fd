// Which recordings the history shows and how it groups them: pure functions over the list of projects.
#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "core/base/TimeZone.h"
#include "storage/RecentProjectsStore.h"

namespace morvelin::RecordingHistory {

enum class Layout { All, Chronological };
enum class DateFilter { All, Today, Week, Month, Custom };

[[nodiscard]] std::string_view label(Layout layout);
[[nodiscard]] std::string_view label(DateFilter filter);

/// A recording is shown when it passes all of these.
struct Filter {
    DateFilter dateFilter = DateFilter::All;
    std::optional<RecordingKind> kindFilter; ///< absent means all
    std::string search;                      ///< part of the title, in any case; white space at the ends doesn't count
    Date startDate;                          ///< of a custom range
    Date endDate;                            ///< of a custom range: its whole day belongs to it
    Date referenceDate;                      ///< what "today" is
};

struct Section {
    Date id;                          ///< start of its day
    std::optional<std::string> title; ///< the day
    std::vector<RecentProject> projects;
};

/// What is left of the projects, newest day first; nothing left, no section.
[[nodiscard]] std::vector<Section> sections(std::span<const RecentProject> projects, const Filter& filter,
                                            Layout layout, const TimeZone& zone);

} // namespace morvelin::RecordingHistory
