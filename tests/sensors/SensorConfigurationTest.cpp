#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "AdditionalInfo.h"
#include "OutputCapture.h"
#include "Sandbox.h"

namespace {

constexpr int UNTOUCHED = -7;
const std::string UNKNOWN_KEY = " Sensor configs not found.\n";

// What one reading of the file does.
struct Outcome {
    int nvmeReadings = UNTOUCHED;
    std::string standardError;
};

Outcome readConfiguration() {
    Outcome outcome;
    OutputCapture chatter(STDERR_FILENO);
    AdditionalInfo().getConfig(outcome.nvmeReadings);
    outcome.standardError = chatter.take();
    return outcome;
}

class SensorConfigurationTest : public testing::Test {
  protected:
    void SetUp() override { REQUIRE_SANDBOX(); }

    void expect(const std::string& contents, int nvmeReadings, const std::string& standardError = "") {
        sandbox::writeSensorConfiguration(contents);
        const Outcome outcome = readConfiguration();
        EXPECT_EQ(outcome.nvmeReadings, nvmeReadings) << testing::PrintToString(contents);
        EXPECT_EQ(outcome.standardError, standardError) << testing::PrintToString(contents);
    }
};

}  // namespace

TEST_F(SensorConfigurationTest, SwitchIsOneOrZero) {
    expect("NvmeReadings=1\n", 1);
    expect("NvmeReadings=0\n", 0);
}

TEST_F(SensorConfigurationTest, LastLineWithoutNewlineLosesItsLastCharacter) {
    expect("NvmeReadings=1", UNTOUCHED);
    expect("NvmeReadings=10", 1);
    expect("NvmeReadings=", UNTOUCHED);
}

TEST_F(SensorConfigurationTest, CarriageReturnEndsTheNumber) {
    expect("NvmeReadings=1\r\n", 1);
}

TEST_F(SensorConfigurationTest, BlankBelongsToTheKey) {
    expect("NvmeReadings = 1\n", UNTOUCHED, UNKNOWN_KEY);
    expect(" NvmeReadings=1\n", UNTOUCHED, UNKNOWN_KEY);
}

TEST_F(SensorConfigurationTest, LetterCaseOfTheKeyMatters) {
    expect("nvmereadings=1\n", UNTOUCHED, UNKNOWN_KEY);
}

TEST_F(SensorConfigurationTest, ValuesOtherThanZeroAndOneAreIgnored) {
    expect("NvmeReadings=2\n", UNTOUCHED);
    expect("NvmeReadings=-1\n", UNTOUCHED);
    expect("NvmeReadings=on\n", UNTOUCHED);
    expect("NvmeReadings=\n", UNTOUCHED);
    expect("NvmeReadings=4294967296\n", UNTOUCHED);
    expect("NvmeReadings=99999999999999999999\n", UNTOUCHED);
}

TEST_F(SensorConfigurationTest, BlanksAroundTheNumberAreTaken) {
    expect("NvmeReadings= 1\n", 1);
    expect("NvmeReadings=1 # on\n", 1);
}

TEST_F(SensorConfigurationTest, LinesThatSetNothingAreIgnored) {
    expect("\n", UNTOUCHED);
    expect("NvmeReadings\n", UNTOUCHED);
    expect("=1\n", UNTOUCHED);
}

TEST_F(SensorConfigurationTest, LastValidLineCounts) {
    expect("NvmeReadings=1\nNvmeReadings=0\n", 0);
    expect("NvmeReadings=1\nNvmeReadings=7\n", 1);
}

TEST_F(SensorConfigurationTest, EmptyOrMissingFileSetsNothing) {
    expect("", UNTOUCHED);
    sandbox::reset();
    const Outcome missing = readConfiguration();
    EXPECT_EQ(missing.nvmeReadings, UNTOUCHED);
    EXPECT_EQ(missing.standardError, "");
}

TEST_F(SensorConfigurationTest, UnknownKeysAreReportedOncePerLineAndReadingGoesOn) {
    expect("# NvmeReadings=1\nOther=1\nNvmeReadings=1\n[Section]\nx=\n", 1, UNKNOWN_KEY + UNKNOWN_KEY + UNKNOWN_KEY);
}

TEST_F(SensorConfigurationTest, LineIsCutAtItsFirstNulByte) {
    expect(std::string("NvmeReadings=1\0\n", 16), UNTOUCHED);
    expect(std::string("NvmeReadings=10\0\n", 17), 1);
    expect(std::string("\0NvmeReadings=1\n", 16), UNTOUCHED);
}

TEST_F(SensorConfigurationTest, LinesOfAnyLengthAreRead) {
    expect("NvmeReadings=" + std::string(100000, ' ') + "1" + std::string(100000, 'x') + "\n", 1);
    expect(std::string(100000, 'k') + "=1\nNvmeReadings=0\n", 0, UNKNOWN_KEY);
}

TEST_F(SensorConfigurationTest, ReadErrorEndsTheReading) {
    std::filesystem::create_directory("/etc/tarn/sensor.conf");
    const Outcome outcome = readConfiguration();
    EXPECT_EQ(outcome.nvmeReadings, UNTOUCHED);
    EXPECT_EQ(outcome.standardError, "");
}
