#include "agent/LineCutter.h"

#include <utility>

namespace morvelin {

void LineCutter::append(std::string_view bytes) {
    m_buffer.erase(0, m_begin);
    m_scanned -= m_begin;
    m_begin = 0;
    m_buffer.append(bytes);
}

std::optional<std::string> LineCutter::next() {
    while (!m_isOverLimit) {
        const std::size_t end = m_buffer.find('\n', m_scanned);
        const bool isWhole = end != std::string::npos;
        m_scanned = isWhole ? end + 1 : m_buffer.size();
        const std::size_t length = (isWhole ? end : m_buffer.size()) - m_begin;
        m_isOverLimit = length > m_limit;
        if (m_isOverLimit || !isWhole) return std::nullopt;
        const std::size_t begin = std::exchange(m_begin, m_scanned);
        if (length > 0) return m_buffer.substr(begin, length);
    }
    return std::nullopt;
}

} // namespace morvelin
