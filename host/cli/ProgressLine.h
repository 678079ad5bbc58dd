// How far something is that takes its time, for whoever sits before a terminal.
#ifndef ZELSENSORS_CLI_PROGRESSLINE_H
#define ZELSENSORS_CLI_PROGRESSLINE_H

#include <cstddef>
#include <string>

#include "text/Output.h"

namespace host {

// One line, written over again, which the end takes away. Nothing where the output is no terminal.
class ProgressLine {
  public:
    // The output must outlive this object.
    explicit ProgressLine(Output& output) : m_output(output), m_isShown(output.isTerminal()) {}
    ~ProgressLine() { show(""); }
    ProgressLine(const ProgressLine&) = delete;
    ProgressLine& operator=(const ProgressLine&) = delete;

    // Fit for a terminal. One that has gone changes nothing.
    void show(const std::string& text);

  private:
    Output& m_output;
    bool m_isShown;
    std::size_t m_columns = 0;
};

}  // namespace host

#endif
