#include "storage/CursorTrackFile.h"

#include <charconv>
#include <cmath>
#include <iterator>

#include <fmt/compile.h>
#include <simdjson.h>

namespace morvelin::ProjectBundle {

namespace {

namespace ondemand = simdjson::ondemand;

/// The parser's index of a slice stays in the processor's cache, and its memory doesn't grow with the file.
constexpr std::size_t kSliceBytes = 256 * 1024;
/// What a sample at least takes in a file; only a guess for the list's first size.
constexpr std::size_t kSampleBytes = 64;

/// Reads the plain form that programs write, and gives up on anything else: an unknown key, an escape, a null, a fault.
/// Then the codec has the last word, so this reader may refuse too much but never accept too much.
class PlainReader {
public:
    explicit PlainReader(std::string& text) : m_text(text) {
        m_text.reserve(m_text.size() + simdjson::SIMDJSON_PADDING);
    }

    bool read() {
        m_events.reserve(m_text.size() / kSampleBytes);
        bool isRead = true;
        for (std::size_t begin = 0; isRead && begin != kEnd;) {
            const std::size_t cut = commaBetweenSamples(begin + kSliceBytes);
            isRead = readSlice(begin, cut);
            begin = cut;
        }
        return isRead;
    }

    std::vector<CursorEvent> takeEvents() { return std::move(m_events); }

private:
    static constexpr unsigned kHasTimestamp = 1, kHasX = 2, kHasY = 4, kHasEvent = 8, kHasAll = 15;
    static constexpr std::size_t kEnd = std::string::npos;

    /// The next place where one sample ends and another begins. In a text that this reader accepts no string can look
    /// like that; in any other a wrong cut makes the slice's reading fail.
    std::size_t commaBetweenSamples(std::size_t from) const {
        const std::size_t brace = m_text.find("},", from);
        return brace == kEnd ? kEnd : brace + 1;
    }

    /// Reads what lies between two commas: it becomes a list of its own for that time.
    bool readSlice(std::size_t begin, std::size_t cut) {
        if (begin > 0) m_text[begin] = '[';
        if (cut != kEnd) m_text[cut] = ']';
        const bool isRead = readList(begin, cut == kEnd ? m_text.size() : cut + 1);
        if (begin > 0) m_text[begin] = ',';
        if (cut != kEnd) m_text[cut] = ',';
        return isRead;
    }

    bool readList(std::size_t begin, std::size_t end) {
        const std::size_t before = m_events.size();
        ondemand::document document;
        ondemand::array samples;
        if (m_parser.iterate(m_text.data() + begin, end - begin, m_text.capacity() - begin).get(document)) return false;
        if (document.get_array().get(samples)) return false;
        for (auto each : samples) {
            ondemand::object fields;
            if (each.get_object().get(fields) || !readSample(fields, m_events.emplace_back())) return false;
        }
        const bool isAtEnd = document.current_location().error() == simdjson::OUT_OF_BOUNDS;
        // An empty list is fine as a whole file, but between two commas it is a fault.
        const bool isWholeFile = begin == 0 && end == m_text.size();
        return isAtEnd && (isWholeFile || m_events.size() > before);
    }

    static bool readSample(ondemand::object& fields, CursorEvent& sample) {
        unsigned found = 0;
        for (auto each : fields) {
            ondemand::field field;
            if (std::move(each).get(field) || !readField(field, sample, found)) return false;
        }
        return found == kHasAll;
    }

    static bool readField(ondemand::field& field, CursorEvent& sample, unsigned& found) {
        const ondemand::raw_json_string key = field.key();
        ondemand::value& value = field.value();
        if (key.unsafe_is_equal("timestamp")) {
            found |= kHasTimestamp;
            return readNumber(value, sample.timestamp.value);
        }
        if (key.unsafe_is_equal("x")) {
            found |= kHasX;
            return readNumber(value, sample.x);
        }
        if (key.unsafe_is_equal("y")) {
            found |= kHasY;
            return readNumber(value, sample.y);
        }
        if (key.unsafe_is_equal("event")) {
            found |= kHasEvent;
            return readRawValue(value, sample.event);
        }
        if (key.unsafe_is_equal("button")) return readRawValue(value, sample.button.emplace());
        if (key.unsafe_is_equal("clickCount")) return !value.get_int64().get(sample.clickCount.emplace());
        return false;
    }

    /// Not by simdjson's own `get_double`: that of version 3.0 is slower, and wrong past 19 digits.
    static bool readNumber(ondemand::value& value, double& number) {
        const std::string_view token = withoutSpaceBehind(value.raw_json_token());
        if (!beginsAsJSONNumber(token)) return false;
        const auto [end, error] = std::from_chars(token.data(), token.data() + token.size(), number);
        return error == std::errc{} && end == token.data() + token.size();
    }

    static std::string_view withoutSpaceBehind(std::string_view token) {
        const std::size_t last = token.find_last_not_of(" \t\r\n");
        return token.substr(0, last == kEnd ? 0 : last + 1);
    }

    /// JSON is stricter than C++ where a number begins: digits before the point and behind it, and no 0 before others.
    static bool beginsAsJSONNumber(std::string_view token) {
        const auto isDigit = [&](std::size_t at) { return at < token.size() && token[at] >= '0' && token[at] <= '9'; };
        std::size_t at = token.starts_with('-') ? 1 : 0;
        if (!isDigit(at) || (token[at] == '0' && isDigit(at + 1))) return false;
        while (isDigit(at)) ++at;
        return at == token.size() || token[at] != '.' || isDigit(at + 1);
    }

    template <json::Enumeration E>
    static bool readRawValue(ondemand::value& value, E& result) {
        ondemand::raw_json_string text;
        if (value.get_raw_json_string().get(text)) return false;
        for (const auto& [each, raw] : rawValues(std::type_identity<E>{})) {
            if (!text.unsafe_is_equal(raw)) continue;
            result = each;
            return true;
        }
        return false;
    }

    std::string& m_text;
    ondemand::parser m_parser;
    std::vector<CursorEvent> m_events;
};

bool isFinite(const CursorEvent& sample) {
    return std::isfinite(sample.timestamp.value) && std::isfinite(sample.x) && std::isfinite(sample.y);
}

/// The shortest text that reads back as the same number, as the codec writes it.
void append(std::string& out, double number) { fmt::format_to(std::back_inserter(out), FMT_COMPILE("{}"), number); }

void append(std::string& out, const CursorEvent& sample) {
    out += '{';
    if (sample.button) ((out += R"("button":")") += json::rawValue(*sample.button)) += R"(",)";
    if (sample.clickCount)
        fmt::format_to(std::back_inserter(out), FMT_COMPILE(R"("clickCount":{},)"), *sample.clickCount);
    ((out += R"("event":")") += json::rawValue(sample.event)) += R"(","timestamp":)";
    append(out, sample.timestamp.value);
    append(out += R"(,"x":)", sample.x);
    append(out += R"(,"y":)", sample.y);
    out += '}';
}

} // namespace

Result<std::vector<CursorEvent>, JSONError> decodeCursorEvents(std::string text) {
    PlainReader reader(text);
    if (reader.read()) return reader.takeEvents();
    return decode<std::vector<CursorEvent>>(text);
}

std::string encodeCursorEvents(std::span<const CursorEvent> events) {
    constexpr std::size_t kUsualSampleBytes = 100;
    std::string out;
    out.reserve(events.size() * kUsualSampleBytes + 2);
    out += '[';
    for (const CursorEvent& sample : events) {
        if (!isFinite(sample)) continue;
        if (out.size() > 1) out += ',';
        append(out, sample);
    }
    out += ']';
    return out;
}

} // namespace morvelin::ProjectBundle
