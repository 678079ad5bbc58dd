#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <exception>
#include <iostream>
#include <optional>
#include <sstream>

#include "cli/CommandLine.h"
#include "cli/Failure.h"
#include "cli/Locations.h"
#include "cli/Run.h"
#include "text/Output.h"

namespace {

int runProgram(int count, char** arguments) {
    host::Options options;
    std::ostringstream output;
    const std::optional<int> ended = host::readCommandLine(count, arguments, options, output, std::cerr);
    if (!ended) return host::run(options, host::installTree(host::programDirectory()));
    host::Output(STDOUT_FILENO).write(output.str());
    return *ended;
}

int runReported(int count, char** arguments) {
    try {
        return runProgram(count, arguments);
    } catch (const host::ReaderGone&) {
        return host::ExitCode::BrokenPipe;
    } catch (const host::OutputError& failure) {
        std::fprintf(stderr, "zelhost: %s\n", failure.what());
        return host::ExitCode::NotWritten;
    } catch (const host::UsageError& failure) {
        std::fprintf(stderr, "zelhost: %s\n", failure.what());
        return host::ExitCode::WrongUsage;
    } catch (const std::exception& failure) {
        std::fprintf(stderr, "zelhost: %s\n", failure.what());
        return host::ExitCode::AnsweredError;
    }
}

// As every program ends whose reader goes away, and as others do where SIGPIPE was ignored from the start.
int endWithoutReader(bool isSignalIgnored) {
    if (isSignalIgnored) {
        std::fprintf(stderr, "zelhost: the output cannot be written: %s\n", std::strerror(EPIPE));
        return host::ExitCode::NotWritten;
    }
    std::signal(SIGPIPE, SIG_DFL);
    std::raise(SIGPIPE);
    return host::ExitCode::BrokenPipe;  // where the signal is blocked
}

}  // namespace

int main(int count, char** arguments) {
    // Not before the provider has been cleaned up.
    const bool isIgnored = std::signal(SIGPIPE, SIG_IGN) == SIG_IGN;
    const int exitCode = runReported(count, arguments);
    return exitCode == host::ExitCode::BrokenPipe ? endWithoutReader(isIgnored) : exitCode;
}
