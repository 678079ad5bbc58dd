// The built zelhost, run as a program of its own.
#ifndef ZELSENSORS_TESTS_HOST_PROGRAMRUN_H
#define ZELSENSORS_TESTS_HOST_PROGRAMRUN_H

#include <sys/types.h>

#include <string>
#include <vector>

struct ProgramEnd {
    std::string output;
    std::string errors;
    int exitCode = -1;  // 128 + the signal's number when a signal ended it
};

using Arguments = std::vector<std::string>;

// Where the program's standard output and standard error go, and variables for its environment ("NAME=value"), which
// otherwise is the test's without ZELCHIP_SCENARIO, NO_COLOR and TERM, and with LANG=C.UTF-8 as its only locale.
struct Surroundings {
    int output = -1;  // -1: closed
    int errors = -1;
    std::vector<std::string> environment;
    int input = -1;         // -1: that of the test
    bool controls = false;  // `input` is the controlling terminal of a session of its own
};

// Starts the program (ZELHOST when `program` is empty) with default signal handling; the process is the caller's to
// wait for. Throws std::system_error.
pid_t startProgram(const Arguments& arguments, const Surroundings& surroundings, const std::string& program = "");
// The exit code, as in ProgramEnd.
int waitForProgram(pid_t process);

// Runs it to its end, with output and errors collected apart.
ProgramEnd runProgram(const Arguments& arguments, const std::vector<std::string>& environment = {},
                      const std::string& program = "");

#endif
