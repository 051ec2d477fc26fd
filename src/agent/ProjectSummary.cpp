#include "agent/ProjectSummary.h"

#include "core/base/Parallel.h"
#include "core/base/Rounding.h"
#include "storage/BundleFiles.h"
#include "storage/HeaderText.h"

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

namespace {

/// Nothing when the bundle has gone since it was listed.
std::optional<JSONValue> summaryOf(const ProjectsFolder::Entry& entry, const ProjectsFolder& library) {
    if (!entry.header && !ProjectBundle::isPresent(library.bundleURL(entry))) return std::nullopt;

    JSONValue summary = JSONValue::object();
    summary["name"] = entry.name();
    summary["path"] = library.path().native() + '/' + entry.bundleName;
    summary["modified"] = entry.modified.text();
    if (!entry.header) return summary;
    if (const auto header = ProjectBundle::decodeHeader<SummaryHeader>(*entry.header)) {
        summary["duration"] = roundedTo3Decimals(header->originalDuration);
        summary["created"] = header->createdAt.text();
    }
    return summary;
}

} // namespace

JSONValue projectSummaries(const ProjectsFolder& library, std::size_t limit) {
    const std::vector<ProjectsFolder::Entry> entries = library.byModification(limit);
    std::vector<std::optional<JSONValue>> read(std::min(limit, entries.size()));
    inParallel(read.size(), [&](std::size_t i) { read[i] = summaryOf(entries[i], library); });
    JSONValue summaries = JSONValue::array();
    for (std::optional<JSONValue>& summary : read)
        if (summary) summaries.push_back(std::move(*summary));
    return summaries;
}

} // namespace morvelin
