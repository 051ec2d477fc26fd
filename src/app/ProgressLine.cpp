#include "app/ProgressLine.h"

#include <cmath>
#include <cstdio>

#include <unistd.h>

#include <fmt/core.h>

namespace morvelin {

ProgressLine::ProgressLine() : m_isTerminal(::isatty(STDERR_FILENO) == 1) {}

ProgressLine::~ProgressLine() { clear(); }

void ProgressLine::show(std::string_view text) {
    if (!m_isTerminal) return;
    fmt::print(stderr, "\r\x1b[K{}", text);
    std::fflush(stderr);
    m_isShown = true;
}

void ProgressLine::clear() {
    if (!m_isShown) return;
    fmt::print(stderr, "\r\x1b[K");
    std::fflush(stderr);
    m_isShown = false;
}

std::string progressBar(double fraction, int width) {
    const int filled = static_cast<int>(std::lround(std::clamp(fraction, 0.0, 1.0) * width));
    std::string bar;
    for (int cell = 0; cell < width; ++cell) bar += cell < filled ? "━" : "╌";
    return bar;
}

std::string clockText(Seconds length) {
    const long total = std::lround(std::floor(std::max(length.value, 0.0)));
    const long hours = total / 3600;
    const long minutes = total / 60 % 60;
    if (hours > 0) return fmt::format("{}:{:02}:{:02}", hours, minutes, total % 60);
    return fmt::format("{}:{:02}", minutes, total % 60);
}

} // namespace morvelin
