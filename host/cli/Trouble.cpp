#include "cli/Trouble.h"

#include <utility>

namespace host {

Trouble::Trouble(Report report) : m_report(std::move(report)) {}

void Trouble::now(const std::string& text) {
    if (text == m_last) return;
    m_last = text;
    m_report(text);
}

}  // namespace host
