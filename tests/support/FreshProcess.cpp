#include "FreshProcess.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <system_error>

#include "MemoryFile.h"

namespace {

// Takes the place of GoogleTest's own printer, which writes to standard output: that is the body's.
class FailuresToStandardError : public testing::EmptyTestEventListener {
    void OnTestPartResult(const testing::TestPartResult& part) override {
        if (part.failed())
            std::cerr << (part.file_name() != nullptr ? part.file_name() : "unknown file") << ":" << part.line_number()
                      << ": Failure\n"
                      << part.message() << std::endl;
    }
};

bool runBody(const std::function<void()>& body) {
    const testing::TestResult& result = *testing::UnitTest::GetInstance()->current_test_info()->result();
    const int partsBefore = result.total_part_count();
    try {
        body();
    } catch (const std::exception& error) {
        ADD_FAILURE() << "exception: " << error.what();
    } catch (...) {
        ADD_FAILURE() << "exception of an unknown type";
    }
    for (int i = partsBefore; i < result.total_part_count(); ++i)
        if (result.GetTestPartResult(i).failed()) return false;
    return true;
}

[[noreturn]] void becomeChild(const std::function<void()>& body, int output, int error) {
    dup2(output, STDOUT_FILENO);
    dup2(error, STDERR_FILENO);
    testing::TestEventListeners& listeners = testing::UnitTest::GetInstance()->listeners();
    delete listeners.Release(listeners.default_result_printer());
    listeners.Append(new FailuresToStandardError);
    const bool passed = runBody(body);
    std::cout.flush();
    std::exit(passed ? EXIT_SUCCESS : EXIT_FAILURE);
}

int waitForEnd(pid_t child) {
    int status = 0;
    while (waitpid(child, &status, 0) < 0)
        if (errno != EINTR) throw std::system_error(errno, std::generic_category(), "waitpid");
    return WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status);
}

}  // namespace

ProcessOutcome runInFreshProcess(const std::function<void()>& body) {
    const int output = makeMemoryFile();
    const int error = makeMemoryFile();
    std::cout.flush();
    std::fflush(nullptr);
    const pid_t child = fork();
    if (child < 0) throw std::system_error(errno, std::generic_category(), "fork");
    if (child == 0) becomeChild(body, output, error);
    ProcessOutcome outcome;
    outcome.exitCode = waitForEnd(child);
    outcome.standardOutput = takeContents(output);
    outcome.standardError = takeContents(error);
    close(output);
    close(error);
    return outcome;
}
