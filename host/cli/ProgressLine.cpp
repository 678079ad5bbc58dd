#include "cli/ProgressLine.h"

#include "text/Utf8.h"

namespace host {

void ProgressLine::show(const std::string& text) {
    if (!m_isShown) return;
    const std::size_t columns = columnsOf(text);
    const std::size_t left = m_columns > columns ? m_columns - columns : 0;
    m_columns = columns;
    try {
        m_output.write('\r' + text + std::string(left, ' ') + (text.empty() ? "\r" : ""));
    } catch (const OutputError&) {
        m_isShown = false;
    }
}

}  // namespace host
