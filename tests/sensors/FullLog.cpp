#include "FullLog.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "FakeDrives.h"
#include "FreshProcess.h"
#include "Sandbox.h"

namespace {

unsigned openDrives() {
    unsigned count = 0;
    for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
        std::error_code gone;
        const std::string target = std::filesystem::read_symlink(entry.path(), gone);
        if (target.rfind("/dev/nvme", 0) == 0) ++count;
    }
    return count;
}

}  // namespace

std::string runWithFullLog(const std::function<void()>& body) {
    sandbox::writeLogConfiguration("Level=4\n");
    const ProcessOutcome outcome = runInFreshProcess([&body] {
        drives::clear();
        body();
        drives::verifyAllMet();
        EXPECT_EQ(openDrives(), 0U) << "a drive was left open";
    });
    EXPECT_EQ(outcome.exitCode, 0) << outcome.standardError;
    return outcome.standardError;
}
