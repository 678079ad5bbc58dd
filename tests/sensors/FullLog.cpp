#include "FullLog.h"

#include <gtest/gtest.h>

#include "FakeDrives.h"
#include "FreshProcess.h"
#include "OpenDescriptors.h"
#include "Sandbox.h"

std::string runWithFullLog(const std::function<void()>& body) {
    sandbox::writeLogConfiguration("Level=4\n");
    const ProcessOutcome outcome = runInFreshProcess([&body] {
        drives::clear();
        body();
        drives::verifyAllMet();
        EXPECT_EQ(openDescriptors("/dev/nvme"), 0U) << "a drive was left open";
    });
    EXPECT_EQ(outcome.exitCode, 0) << outcome.standardError;
    return outcome.standardError;
}
