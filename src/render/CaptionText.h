// A caption's lines of text: broken between words, measured and drawn. The one place where Pango is called; used by the
// caption's layer.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "platform/Picture.h"

namespace morvelin {

/// The room that a text has, in output pixels.
struct TextRoom {
    double width = 0;
    double height = 0;
};

/// The part of the plane that belongs to a word, in pixels from the text's upper left corner. Cells meet in the middle
/// of blanks and between lines, and the outer ones reach out without end: every place lies in one.
struct WordCell {
    std::size_t word = 0; ///< counted in the text's order
    double left = 0;
    double top = 0;
    double right = 0;
    double bottom = 0;
};

/// Lines of nearly equal length, as few as the room's width allows, centred below each other. Only a word that is wider
/// than the room is broken; a text that is higher ends in an ellipsis.
class CaptionText {
public:
    /// `text` is words with single blanks between them, at least one.
    CaptionText(const std::string& text, double fontSize, const TextRoom& room);
    CaptionText(CaptionText&&) noexcept;
    CaptionText& operator=(CaptionText&&) noexcept;
    ~CaptionText();

    [[nodiscard]] double width() const;
    [[nodiscard]] double height() const;
    [[nodiscard]] std::vector<WordCell> wordCells() const;

    /// White, with its upper left corner at a place of the output, as far as it lies in `box`.
    [[nodiscard]] Image drawn(const PixelBox& box, double left, double top) const;

private:
    struct Layout;
    std::unique_ptr<Layout> m_layout;
};

} // namespace morvelin
