// The drive sensors of a Grebel terminal compared with the schema, with drives played by the test.
#include <gtest/gtest.h>
#include <stdlib.h>

#include "FakeClock.h"
#include "FakeDrives.h"
#include "FreshProcess.h"
#include "Sandbox.h"
#include "source/ChipLibrary.h"
#include "source/Session.h"
#include "verify/SchemaFiles.h"
#include "verify/Verify.h"
#include "verify/VerifyFormat.h"

namespace {

class VerifyDrivesTest : public testing::Test {
  protected:
    void SetUp() override { REQUIRE_SANDBOX(); }
};

// The clock stands still, so that no reading gets old: the chip has no sensors with the drives' handles.
TEST_F(VerifyDrivesTest, DriveSensorsConform) {
    const ProcessOutcome outcome = runInFreshProcess([] {
        fakeclock::set({1000, 0});
        sandbox::writeSensorConfiguration("NvmeReadings=1\n");
        for (const char* node : {"/dev/nvme0", "/dev/nvme1"}) {
            drives::makeNode(node);
            drives::attach(node, {}, 313);
        }
        setenv("ZELCHIP_SCENARIO", SCENARIOS "/grebel-drives.toml", 1);
        const host::ChipLibrary chip({CHIP, "", true});
        host::Session session(PROVIDER, "SensorProvider");
        const host::Verification verification =
            host::verify(host::readSchema({SCHEMA "/qualifiers.mof", SCHEMA "/tqs.mof"}), "root/cimv2", session);
        EXPECT_EQ(verificationText(verification),
                  "TQS_NumericSensor: 6 names, 6 instances, 6 single requests, 0 problems\n"
                  "TQS_SystemEventLog: 1 name, 1 instance, 1 single request, 0 problems\n");
    });
    EXPECT_EQ(outcome.exitCode, 0) << outcome.standardOutput << outcome.standardError;
}

}  // namespace
