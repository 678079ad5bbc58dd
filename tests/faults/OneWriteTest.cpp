// How often the log's sink calls write, by the kernel's count. Not for a program under a sanitizer, whose run time
// makes such calls of its own.
#include <gtest/gtest.h>

#include <fstream>
#include <string>

#include "FreshProcess.h"
#include "LogHandler.h"
#include "OpenHandler.h"
#include "Sandbox.h"

namespace {

// Write calls made by this thread, or -1 where the kernel does not count them.
long writeCalls() {
    std::ifstream counts("/proc/thread-self/io");
    for (std::string name, number; counts >> name >> number;) {
        if (name == "syscw:") return std::stol(number);
    }
    return -1;
}

TEST(LogWritesTest, LineOfAnyLengthIsOneWrite) {
    REQUIRE_SANDBOX();
    if (writeCalls() < 0) GTEST_SKIP() << "the kernel does not count write calls (CONFIG_TASK_IO_ACCOUNTING)";
    sandbox::writeLogConfiguration("MaxLength=-1\n");
    const ProcessOutcome outcome = runInFreshProcess([] {
        OpenHandler handler;
        for (const std::size_t length : {40U, 4095U, 4096U, 4097U, 10000U, 1000000U}) {
            const long before = writeCalls();
            handler.write(std::string(length - 1, 'x') + '\n');
            EXPECT_EQ(writeCalls(), before + 1) << length;
        }
    });
    EXPECT_EQ(outcome.exitCode, 0) << outcome.standardOutput << outcome.standardError;
    EXPECT_EQ(sandbox::readLog().size(), 40U + 4095U + 4096U + 4097U + 10000U + 1000000U);
}

}  // namespace
