// For what depends on the log's one sink, which lives as long as its process.
#ifndef ZELSENSORS_TESTS_LOG_RUNANEW_H
#define ZELSENSORS_TESTS_LOG_RUNANEW_H

#include <gtest/gtest.h>

#include <functional>
#include <string>

#include "FreshProcess.h"

// Runs the body in a process whose log has no sink yet, which must end well and say nothing on standard error. Gives
// its standard output.
inline std::string runAnew(const std::function<void()>& body) {
    const ProcessOutcome outcome = runInFreshProcess(body);
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(outcome.standardError, "");
    return outcome.standardOutput;
}

#endif
