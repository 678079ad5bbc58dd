// Runs a piece of a test in a process of its own, where state that lives as long as a process (the log's sink, a loaded
// library) starts anew.
#ifndef ZELSENSORS_TESTS_FRESHPROCESS_H
#define ZELSENSORS_TESTS_FRESHPROCESS_H

#include <functional>
#include <string>

struct ProcessOutcome {
    std::string standardOutput;
    std::string standardError;
    int exitCode = -1;  // 128 + the signal's number when a signal ended it
};

// Forks, runs the body in the child with its output captured, and ends the child by exit() (so leaks are checked under
// the address sanitizer). A GoogleTest failure in the child makes its exit code non-zero and is part of the output.
ProcessOutcome runInFreshProcess(const std::function<void()>& body);

#endif
