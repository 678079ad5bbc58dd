#include "cli/ProgressLine.h"

#include <unistd.h>

#include <algorithm>

#include "text/Utf8.h"

namespace host {
namespace {

// What the handler needs: it may use nothing that is not safe in a signal handler.
int s_output = -1;
std::atomic<std::size_t> s_columns{0};  // of what may stand on the terminal
static_assert(std::atomic<std::size_t>::is_always_lock_free);

void takeLineAway() {
    std::array<char, 256> blanks{};
    const std::size_t columns = std::min(s_columns.load(), blanks.size() - 2);
    blanks.fill(' ');
    blanks.front() = blanks.at(columns + 1) = '\r';
    const ssize_t written = columns > 0 ? write(s_output, blanks.data(), columns + 2) : 0;
    static_cast<void>(written);
}

extern "C" void endWithoutLine(int signal) {
    takeLineAway();
    raise(signal);  // it comes when this handler has returned, and then ends the process
}

}  // namespace

ProgressLine::ProgressLine(Output& output) : m_output(output), m_isShown(output.isTerminal()) {
    if (!m_isShown) return;
    s_output = output.descriptor();
    s_columns = 0;
    struct sigaction action {};
    action.sa_handler = endWithoutLine;
    action.sa_flags = static_cast<int>(SA_RESETHAND);
    for (std::size_t i = 0; i < ENDING.size(); ++i) {
        sigaction(ENDING.at(i), nullptr, &m_before.at(i));
        if (m_before.at(i).sa_handler == SIG_DFL) sigaction(ENDING.at(i), &action, nullptr);
    }
    m_isCaught = true;
}

ProgressLine::~ProgressLine() {
    show("");
    if (!m_isCaught) return;
    for (std::size_t i = 0; i < ENDING.size(); ++i) sigaction(ENDING.at(i), &m_before.at(i), nullptr);
}

void ProgressLine::show(const std::string& text) {
    const std::size_t before = s_columns;
    if (!m_isShown || (before == 0 && text.empty())) return;
    const std::size_t columns = columnsOf(text);
    const std::size_t left = before > columns ? before - columns : 0;
    s_columns = std::max(before, columns);
    try {
        m_output.write('\r' + text + std::string(left, ' ') + (text.empty() ? "\r" : ""));
    } catch (const OutputError&) {
        m_isShown = false;
    }
    s_columns = columns;
}

void ProgressLine::abandon() const noexcept {
    if (m_isShown) takeLineAway();
}

}  // namespace host
