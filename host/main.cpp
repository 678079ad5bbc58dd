#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <exception>
#include <iostream>
#include <optional>
#include <sstream>

#include "CommandLine.h"
#include "Failure.h"
#include "Locations.h"
#include "Output.h"
#include "Run.h"

namespace {

int runProgram(int count, char** arguments) {
    host::Options options;
    std::ostringstream output;
    const std::optional<int> ended = host::readCommandLine(count, arguments, options, output, std::cerr);
    if (!ended) return host::run(options, host::ownTree(host::programFolder()));
    host::Output(STDOUT_FILENO).write(output.str());
    return *ended;
}

}  // namespace

int main(int count, char** arguments) {
    // A reader that has gone away is an output that cannot be written, and is told as such.
    std::signal(SIGPIPE, SIG_IGN);
    try {
        return runProgram(count, arguments);
    } catch (const host::UsageError& failure) {
        std::fprintf(stderr, "zelhost: %s\n", failure.what());
        return host::kWrongUsage;
    } catch (const std::exception& failure) {
        std::fprintf(stderr, "zelhost: %s\n", failure.what());
        return host::kAnsweredError;
    }
}
