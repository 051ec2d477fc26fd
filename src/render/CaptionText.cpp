#include "render/CaptionText.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <span>
#include <string>
#include <vector>

#include <hb-ot.h>
#include <pango/pangocairo.h>

#include "core/base/Text.h"
#include "render/Canvas.h"

namespace morvelin {

namespace {

/// The first that is installed; where it lacks a script, the system chooses.
constexpr const char* kFamilies = "Inter, Noto Sans, Open Sans, DejaVu Sans, sans-serif";
constexpr auto kWeight = PANGO_WEIGHT_SEMIBOLD;
/// Of the font's size: the same for every line, whichever fonts its scripts are set in.
constexpr double kLineHeight = 1.25;
/// In bytes; nobody reads more in the time that a caption shows.
constexpr std::size_t kLongestText = 2048;
/// Lines are made even to this many steps of the room's width.
constexpr int kWidthSteps = 64;

struct Unreference {
    void operator()(void* object) const { g_object_unref(object); }
};
struct FreeFont {
    void operator()(PangoFontDescription* font) const { pango_font_description_free(font); }
};
struct FreeMetrics {
    void operator()(PangoFontMetrics* metrics) const { pango_font_metrics_unref(metrics); }
};
struct FreeAttributes {
    void operator()(PangoAttrList* list) const { pango_attr_list_unref(list); }
};
struct FreeOptions {
    void operator()(cairo_font_options_t* options) const { cairo_font_options_destroy(options); }
};
using Context = std::unique_ptr<PangoContext, Unreference>;
using Attributes = std::unique_ptr<PangoAttrList, FreeAttributes>;

double pixels(int units) { return static_cast<double>(units) / PANGO_SCALE; }

int units(double pixels) {
    constexpr double kMost = std::numeric_limits<int>::max() / 2.0;
    return static_cast<int>(std::clamp(pixels * PANGO_SCALE, 0.0, kMost));
}

/// Letters keep their true shapes and places at any size, so that a caption looks the same in every resolution.
Context newContext(double fontSize) {
    Context context(pango_font_map_create_context(pango_cairo_font_map_get_default()));
    const std::unique_ptr<cairo_font_options_t, FreeOptions> options(cairo_font_options_create());
    cairo_font_options_set_antialias(options.get(), CAIRO_ANTIALIAS_GRAY);
    cairo_font_options_set_hint_style(options.get(), CAIRO_HINT_STYLE_NONE);
    cairo_font_options_set_hint_metrics(options.get(), CAIRO_HINT_METRICS_OFF);
    pango_cairo_context_set_font_options(context.get(), options.get());
    pango_context_set_round_glyph_positions(context.get(), FALSE);

    const std::unique_ptr<PangoFontDescription, FreeFont> font(pango_font_description_new());
    pango_font_description_set_family_static(font.get(), kFamilies);
    pango_font_description_set_weight(font.get(), kWeight);
    pango_font_description_set_absolute_size(font.get(), fontSize * PANGO_SCALE);
    pango_context_set_font_description(context.get(), font.get());
    return context;
}

/// A stretch of bytes of the text.
struct TextRange {
    std::size_t begin;
    std::size_t end;
};

std::vector<TextRange> wordRanges(const std::string& text) {
    std::vector<TextRange> words;
    for (std::size_t begin = 0; begin < text.size();) {
        const std::size_t end = std::min(text.find(' ', begin), text.size());
        if (begin < end) words.push_back({begin, end});
        begin = end + 1;
    }
    return words;
}

/// Where the last character of a stretch begins.
std::size_t lastCharacter(const std::string& text, const TextRange& range) {
    std::size_t at = range.end - 1;
    while (at > range.begin && (static_cast<unsigned char>(text[at]) & 0xc0) == 0x80) --at;
    return at;
}

/// Of a character, as its script runs.
enum class Edge { Leading, Trailing };

void add(PangoAttrList& list, PangoAttribute* attribute, const TextRange& range) {
    attribute->start_index = static_cast<guint>(range.begin);
    attribute->end_index = static_cast<guint>(range.end);
    pango_attr_list_insert(&list, attribute);
}

/// Where a line's letters stand below its upper edge.
double baselineOf(PangoContext* context, double lineHeight) {
    const std::unique_ptr<PangoFontMetrics, FreeMetrics> metrics(pango_context_get_metrics(context, nullptr, nullptr));
    const double ascent = pixels(pango_font_metrics_get_ascent(metrics.get()));
    const double descent = pixels(pango_font_metrics_get_descent(metrics.get()));
    return (lineHeight - ascent - descent) / 2 + ascent;
}

bool hasColorGlyphs(PangoFont* font) {
    hb_face_t* face = hb_font_get_face(pango_font_get_hb_font(font));
    return hb_ot_color_has_png(face) != 0 || hb_ot_color_has_layers(face) != 0;
}

/// Outlines are filled where they lie: glyphs drawn as such would jump to whole pixels. Colour glyphs are pictures, and
/// have no outline to fill.
void drawRun(cairo_t* canvas, const PangoLayoutRun& run, double x, double y) {
    PangoFont* font = run.item->analysis.font;
    if (font == nullptr) return; // the system has none at all
    cairo_move_to(canvas, x, y);
    if (hasColorGlyphs(font)) {
        pango_cairo_show_glyph_string(canvas, font, run.glyphs);
    } else {
        pango_cairo_glyph_string_path(canvas, font, run.glyphs);
        cairo_fill(canvas);
    }
}

} // namespace

struct CaptionText::Layout {
    Layout(const std::string& wanted, double fontSize, const TextRoom& room);

    /// By themselves lines would also end after a hyphen or a slash.
    void keepWordsWhole(std::span<const TextRange> except = {});
    void breakWideWords();
    void makeLinesEven();
    void limitLines(int most);
    [[nodiscard]] int lineCount() const { return pango_layout_get_line_count(layout.get()); }
    [[nodiscard]] PangoLayoutLine* line(int i) const { return pango_layout_get_line_readonly(layout.get(), i); }
    [[nodiscard]] TextRange lineRange(int i) const;
    [[nodiscard]] double lineWidth(int i) const;
    [[nodiscard]] double width() const;
    [[nodiscard]] double placeInLine(int i, std::size_t byte, Edge edge) const;
    void addCells(int line, std::vector<WordCell>& cells) const;

    std::string text;
    std::vector<TextRange> words;
    double roomWidth;
    double lineHeight;
    Context context;
    double baseline;
    std::unique_ptr<PangoLayout, Unreference> layout;
};

CaptionText::Layout::Layout(const std::string& wanted, double fontSize, const TextRoom& room)
    : text(cutAtCharacter(wanted, kLongestText)),
      words(wordRanges(text)),
      roomWidth(std::max(room.width, fontSize)),
      lineHeight(fontSize * kLineHeight),
      context(newContext(fontSize)),
      baseline(baselineOf(context.get(), lineHeight)),
      layout(pango_layout_new(context.get())) {
    pango_layout_set_text(layout.get(), text.data(), static_cast<int>(text.size()));
    pango_layout_set_wrap(layout.get(), PANGO_WRAP_WORD_CHAR);
    pango_layout_set_width(layout.get(), units(roomWidth));
    keepWordsWhole();
    if (width() > roomWidth) breakWideWords();
    const int most = std::max(1, static_cast<int>(std::min(room.height / lineHeight, 1000.0)));
    if (lineCount() > most)
        limitLines(most);
    else
        makeLinesEven();
}

void CaptionText::Layout::keepWordsWhole(std::span<const TextRange> except) {
    const Attributes attributes(pango_attr_list_new());
    for (const TextRange& word : words) {
        const auto holdsWord = [&](const TextRange& line) { return line.begin <= word.begin && word.begin < line.end; };
        if (std::ranges::none_of(except, holdsWord)) add(*attributes, pango_attr_allow_breaks_new(FALSE), word);
    }
    add(*attributes, pango_attr_insert_hyphens_new(FALSE), {0, text.size()});
    pango_layout_set_attributes(layout.get(), attributes.get());
}

/// A word wider than the room stands in a line of its own by now; it may end wherever its script allows, or else
/// anywhere.
void CaptionText::Layout::breakWideWords() {
    std::vector<TextRange> wide;
    for (int i = 0; i < lineCount(); ++i)
        if (lineWidth(i) > roomWidth) wide.push_back(lineRange(i));
    keepWordsWhole(wide);
}

/// As narrow as the same number of lines allows: no last word alone in a line.
void CaptionText::Layout::makeLinesEven() {
    const int lines = lineCount();
    if (lines == 1) return;
    int narrowest = kWidthSteps / (lines + 1);
    int fitting = kWidthSteps;
    while (fitting - narrowest > 1) {
        const int tried = (narrowest + fitting) / 2;
        const double width = roomWidth * tried / kWidthSteps;
        pango_layout_set_width(layout.get(), units(width));
        (lineCount() <= lines && this->width() <= width ? fitting : narrowest) = tried;
    }
    pango_layout_set_width(layout.get(), units(roomWidth * fitting / kWidthSteps));
}

void CaptionText::Layout::limitLines(int most) {
    pango_layout_set_height(layout.get(), -most);
    pango_layout_set_ellipsize(layout.get(), PANGO_ELLIPSIZE_END);
}

TextRange CaptionText::Layout::lineRange(int i) const {
    const auto begin = static_cast<std::size_t>(line(i)->start_index);
    return {begin, begin + static_cast<std::size_t>(line(i)->length)};
}

double CaptionText::Layout::lineWidth(int i) const {
    PangoRectangle extents;
    pango_layout_line_get_extents(line(i), nullptr, &extents);
    return pixels(extents.width);
}

double CaptionText::Layout::width() const {
    double width = 0;
    for (int i = 0; i < lineCount(); ++i) width = std::max(width, lineWidth(i));
    return width;
}

double CaptionText::Layout::placeInLine(int i, std::size_t byte, Edge edge) const {
    int x = 0;
    pango_layout_line_index_to_x(line(i), static_cast<int>(byte), edge == Edge::Trailing, &x);
    return pixels(x);
}

/// From left to right as the words stand, which a script that runs the other way turns around.
void CaptionText::Layout::addCells(int i, std::vector<WordCell>& cells) const {
    constexpr double kEndless = std::numeric_limits<double>::infinity();
    const TextRange range = lineRange(i);
    const double start = (width() - lineWidth(i)) / 2;
    const double top = i == 0 ? -kEndless : i * lineHeight;
    const double bottom = i == lineCount() - 1 ? kEndless : (i + 1) * lineHeight;
    std::vector<WordCell> row;
    for (std::size_t w = 0; w < words.size(); ++w) {
        const TextRange part{std::max(words[w].begin, range.begin), std::min(words[w].end, range.end)};
        if (part.begin >= part.end) continue;
        const double from = start + placeInLine(i, part.begin, Edge::Leading);
        const double to = start + placeInLine(i, lastCharacter(text, part), Edge::Trailing);
        row.push_back({w, std::min(from, to), top, std::max(from, to), bottom});
    }
    if (row.empty()) return;
    std::ranges::sort(row, {}, &WordCell::left);
    row.front().left = -kEndless;
    for (std::size_t w = 0; w + 1 < row.size(); ++w)
        row[w].right = row[w + 1].left = std::max(row[w].left, (row[w].right + row[w + 1].left) / 2);
    row.back().right = kEndless;
    cells.insert(cells.end(), row.begin(), row.end());
}

CaptionText::CaptionText(const std::string& text, double fontSize, const TextRoom& room)
    : m_layout(std::make_unique<Layout>(text, fontSize, room)) {}
CaptionText::CaptionText(CaptionText&&) noexcept = default;
CaptionText& CaptionText::operator=(CaptionText&&) noexcept = default;
CaptionText::~CaptionText() = default;

double CaptionText::width() const { return m_layout->width(); }

double CaptionText::height() const { return m_layout->lineCount() * m_layout->lineHeight; }

std::vector<WordCell> CaptionText::wordCells() const {
    std::vector<WordCell> cells;
    for (int i = 0; i < m_layout->lineCount(); ++i) m_layout->addCells(i, cells);
    return cells;
}

Image CaptionText::drawn(const PixelBox& box, double left, double top) const {
    const Canvas canvas(box, Canvas::Curves::Quick);
    cairo_set_source_rgb(canvas.context(), 1, 1, 1);
    const double middle = left + width() / 2;
    for (int i = 0; i < m_layout->lineCount(); ++i) {
        double x = middle - m_layout->lineWidth(i) / 2;
        const double y = top + i * m_layout->lineHeight + m_layout->baseline;
        for (const GSList* at = m_layout->line(i)->runs; at != nullptr; at = at->next) {
            const auto& run = *static_cast<const PangoLayoutRun*>(at->data);
            drawRun(canvas.context(), run, x, y);
            x += pixels(pango_glyph_string_get_width(run.glyphs));
        }
    }
    return canvas.image();
}

} // namespace morvelin
