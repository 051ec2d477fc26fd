// What a take writes down as it goes, so that it can be made a project after a crash. Owned by the take.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "capture/CursorShapeRecorder.h"
#include "capture/TakeFolder.h"
#include "core/CursorEvent.h"
#include "core/ProjectVersion.h"
#include "core/base/Date.h"
#include "core/base/Log.h"
#include "core/base/OwnedDescriptor.h"
#include "platform/Picture.h"
#include "storage/CursorShapeFiles.h"

namespace morvelin {

/// What is known of a take before its first frame (`take.json`).
struct TakeHeader {
    std::int64_t version = 1;
    std::string name; ///< of the project
    Date createdAt;
    RecordingKind kind = RecordingKind::Screen;
    std::string source; ///< what is recorded, for a person who finds the folder
};

template <class Fields>
void describe(Fields& fields, Same<Fields, TakeHeader>& header) {
    fields.required("version", header.version);
    fields.required("name", header.name);
    fields.required("createdAt", header.createdAt);
    fields.required("kind", header.kind);
    fields.withDefault("source", header.source, "");
}

/// One line of JSON for each thing, written as it comes (`journal.jsonl`). On the main thread. A line that can't be
/// written is left out: the take goes on, and what the disk can't hold would be lost anyway.
class TakeJournal {
public:
    /// Writes the header, whole, before anything else of the take.
    static Result<TakeJournal, FileError> create(const TakeFolder& folder, const TakeHeader& header, Log log);

    /// The captured area's size in points.
    void addArea(double width, double height);
    void add(const CursorEvent& event);
    void add(const CursorShapeTrack::Shape& shape, const Image& image);
    void add(const CursorShapeTrack::Change& change);
    /// How the camera's bubble lies, and when its movie began.
    void add(const CameraSettings& camera);

private:
    TakeJournal(OwnedDescriptor file, Log log) : m_file(std::move(file)), m_log(std::move(log)) {}
    void append(const JSONValue& line);

    OwnedDescriptor m_file;
    Log m_log;
    std::int64_t m_size = 0; ///< of the whole lines
    bool m_hasFailed = false;
};

/// What a journal holds of an unfinished take.
struct JournalledTake {
    std::optional<TakeHeader> header;
    std::vector<CursorEvent> cursorEvents; ///< in time order
    std::optional<ProjectBundle::CursorShapeFiles> cursorShapes;
    std::optional<CameraSettings> camera;
};

/// A half-written last line, and lines that can't be read, are passed over.
[[nodiscard]] JournalledTake readJournal(const TakeFolder& folder);

} // namespace morvelin
