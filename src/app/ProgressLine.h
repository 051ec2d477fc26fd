// The one live line of a long command on a terminal; on anything else it stays silent.
#pragma once

#include <string>
#include <string_view>

#include "core/base/Time.h"

namespace morvelin {

/// Standard error's live line. Cleared when it goes, so that results stand alone.
class ProgressLine {
public:
    ProgressLine();
    ProgressLine(const ProgressLine&) = delete;
    ProgressLine& operator=(const ProgressLine&) = delete;
    ~ProgressLine();

    /// Replaces the line's text.
    void show(std::string_view text);
    void clear();

private:
    bool m_isTerminal;
    bool m_isShown = false;
};

/// "━━━━━━━╌╌╌": a bar of `width` cells, `fraction` 0..1.
[[nodiscard]] std::string progressBar(double fraction, int width);

/// "1:05", "0:09", "1:02:03".
[[nodiscard]] std::string clockText(Seconds length);

} // namespace morvelin
