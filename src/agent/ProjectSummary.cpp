#include "agent/ProjectSummary.h"

#include "core/base/Parallel.h"
#include "core/base/Rounding.h"
#include "storage/BundleFiles.h"

namespace morvelin {

/// The part of a project's header that a list shows.
struct SummaryHeader {
    Date createdAt;
    Seconds originalDuration;
};

template <class Fields>
void describe(Fields& fields, Same<Fields, SummaryHeader>& header) {
    fields.required("createdAt", header.createdAt);
    fields.required("originalDuration", header.originalDuration);
}

std::optional<JSONValue> projectSummary(const ProjectsFolder::Entry& entry) {
    JSONValue summary{{"name", entry.bundleURL.stem().string()},
                      {"path", entry.bundleURL.string()},
                      {"modified", entry.modified.text()}};
    const auto header = ProjectBundle::readRecord<SummaryHeader>(entry.bundleURL / ProjectBundle::kCaptureFile);
    if (header) {
        summary["duration"] = roundedTo3Decimals(header->originalDuration);
        summary["created"] = header->createdAt.text();
    } else if (!ProjectBundle::isPresent(entry.bundleURL)) {
        return std::nullopt;
    }
    return summary;
}

JSONValue projectSummaries(const ProjectsFolder& library, std::size_t limit) {
    const std::vector<ProjectsFolder::Entry> entries = library.byModification();
    std::vector<std::optional<JSONValue>> read(std::min(limit, entries.size()));
    inParallel(read.size(), [&](std::size_t i) { read[i] = projectSummary(entries[i]); });
    JSONValue summaries = JSONValue::array();
    for (std::optional<JSONValue>& summary : read)
        if (summary) summaries.push_back(std::move(*summary));
    return summaries;
}

} // namespace morvelin
