#include "capture/TakeJournal.h"

#include <algorithm>

#include <fcntl.h>
#include <fmt/format.h>

#include "core/base/Base64.h"
#include "media/PNG.h"
#include "storage/BundleFiles.h"

namespace morvelin {

namespace {

constexpr const char* kEvent = "event";
constexpr const char* kArea = "area";
constexpr const char* kShape = "shape";
constexpr const char* kImage = "png";
constexpr const char* kChange = "change";
constexpr const char* kCamera = "camera";

/// The captured area's size.
struct Area {
    double width = 0;
    double height = 0;
};

template <class Fields>
void describe(Fields& fields, Same<Fields, Area>& area) {
    fields.required("width", area.width);
    fields.required("height", area.height);
}

template <class Record>
JSONValue lineOf(const char* key, const Record& record) {
    JSONValue line = JSONValue::object();
    line[key] = toJSON(record);
    return line;
}

/// Gathers a journal's lines into what a project holds.
class JournalReader {
public:
    void read(std::string_view line) {
        const auto entry = parseJSON(line);
        if (!entry || !entry->is_object()) return;
        if (const auto event = field<CursorEvent>(*entry, kEvent)) m_take.cursorEvents.push_back(*event);
        if (const auto change = field<CursorShapeTrack::Change>(*entry, kChange)) m_track.changes.push_back(*change);
        if (const auto shape = field<CursorShapeTrack::Shape>(*entry, kShape)) {
            m_track.shapes.push_back(*shape);
            if (const auto png = field<std::string>(*entry, kImage)) m_images[shape->id] = bytesOfBase64(*png);
        }
        if (const auto camera = field<CameraSettings>(*entry, kCamera)) m_take.camera = camera;
        if (const auto area = field<Area>(*entry, kArea)) {
            m_track.captureWidth = area->width;
            m_track.captureHeight = area->height;
        }
    }

    JournalledTake finish() {
        // A press is told a moment later than the place of the pointer after it.
        std::ranges::stable_sort(m_take.cursorEvents, {}, &CursorEvent::timestamp);
        if (m_track.captureWidth > 0) m_take.cursorShapes = {std::move(m_track), std::move(m_images)};
        return std::move(m_take);
    }

private:
    template <class T>
    static std::optional<T> field(const JSONValue& entry, const char* key) {
        const auto found = entry.find(key);
        if (found == entry.end()) return std::nullopt;
        auto value = fromJSON<T>(*found);
        if (!value) return std::nullopt;
        return std::move(*value);
    }

    JournalledTake m_take;
    CursorShapeTrack m_track;
    std::map<std::int64_t, std::string> m_images;
};

} // namespace

Result<TakeJournal, FileError> TakeJournal::create(const TakeFolder& folder, const TakeHeader& header, Log log) {
    const std::string text = writeJSON(toJSON(header), JSONStyle::Pretty);
    if (auto written = writeFileAtomically(folder.header(), text); !written) return passOn(std::move(written));
    OwnedDescriptor file(::open(folder.journal().c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_APPEND | O_CLOEXEC, 0666));
    if (!file.isOpen()) return failure(FileError{FileError::Operation::Write, folder.journal(), errno});
    return TakeJournal(std::move(file), std::move(log));
}

void TakeJournal::addArea(double width, double height) { append(lineOf(kArea, Area{width, height})); }
void TakeJournal::add(const CursorEvent& event) { append(lineOf(kEvent, event)); }
void TakeJournal::add(const CursorShapeTrack::Change& change) { append(lineOf(kChange, change)); }
void TakeJournal::add(const CameraSettings& camera) { append(lineOf(kCamera, camera)); }

void TakeJournal::add(const CursorShapeTrack::Shape& shape, const Image& image) {
    JSONValue line = JSONValue::object();
    line[kShape] = toJSON(shape);
    if (const auto png = encodePNG(image))
        line[kImage] = base64({reinterpret_cast<const char*>(png->data()), png->size()});
    append(line);
}

void TakeJournal::append(const JSONValue& line) {
    const std::string text = writeJSON(line, JSONStyle::Compact) + '\n';
    if (writeAll(m_file.get(), text)) {
        m_size += static_cast<std::int64_t>(text.size());
        return;
    }
    const int code = errno;
    // What follows must not join a half line.
    (void)!::ftruncate(m_file.get(), m_size);
    if (!std::exchange(m_hasFailed, true))
        m_log(fmt::format("[Morvelin] Could not write the take's journal: {}", std::strerror(code)));
}

JournalledTake readJournal(const TakeFolder& folder) {
    JournalReader reader;
    const auto text = readFile(folder.journal());
    std::string_view rest = text ? std::string_view(*text) : std::string_view();
    for (std::size_t end = rest.find('\n'); end != std::string_view::npos; end = rest.find('\n')) {
        reader.read(rest.substr(0, end));
        rest.remove_prefix(end + 1);
    }
    JournalledTake take = reader.finish();
    if (auto header = ProjectBundle::readRecord<TakeHeader>(folder.header())) take.header = std::move(*header);
    return take;
}

} // namespace morvelin
