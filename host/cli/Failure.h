// How the program ends, and the failure of its own that decides it.
#ifndef ZELSENSORS_CLI_FAILURE_H
#define ZELSENSORS_CLI_FAILURE_H

#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace host {

enum ExitCode : int {
    Fine = 0,
    AnsweredError = 1,  // the provider's answer was an error or against the schema; also want of memory and the like
    WrongUsage = 2,     // also a schema that cannot be read
    NotLoaded = 3,      // the provider or the chip library could not be loaded (broker::LoadError)
    NotAnswered = 3,    // the server gave no usable answer (ServerError)
    NotWritten = 4,     // our output could not be written (OutputError)
    BrokenPipe = 141,   // what a shell shows for an end by SIGPIPE, which is how the program ends then
};

// The command line asks for something that cannot be.
class UsageError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

// A file that cannot be used: a line for each of its mistakes.
class Mistakes : public UsageError {
  public:
    explicit Mistakes(std::vector<std::string> lines) : UsageError(lines.front()), m_lines(std::move(lines)) {}
    const std::vector<std::string>& lines() const { return m_lines; }

  private:
    std::vector<std::string> m_lines;
};

}  // namespace host

#endif
