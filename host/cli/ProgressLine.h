// How far something is that takes its time, for whoever sits before a terminal.
#ifndef ZELSENSORS_CLI_PROGRESSLINE_H
#define ZELSENSORS_CLI_PROGRESSLINE_H

#include <array>
#include <atomic>
#include <csignal>
#include <string>

#include "text/Output.h"

namespace host {

// One line, written over again, which the end takes away, also the end by a signal: while it lives, the signals that
// end a process at a terminal take the line away first, so that the shell's prompt begins its own. One at a time.
// Nothing where the output is no terminal.
class ProgressLine {
  public:
    // The output must outlive this object.
    explicit ProgressLine(Output& output);
    ~ProgressLine();
    ProgressLine(const ProgressLine&) = delete;
    ProgressLine& operator=(const ProgressLine&) = delete;

    // Fit for a terminal. One that has gone changes nothing.
    void show(const std::string& text);

    // Takes the line away where whoever shows it does not return. From any thread; the process is to end then.
    void abandon() const noexcept;

  private:
    static constexpr std::array ENDING{SIGINT, SIGTERM, SIGHUP, SIGQUIT};

    Output& m_output;
    std::atomic<bool> m_isShown;
    bool m_isCaught = false;
    std::array<struct sigaction, ENDING.size()> m_before{};
};

}  // namespace host

#endif
