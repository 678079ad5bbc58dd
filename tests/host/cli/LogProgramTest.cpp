// The event log, and what is chosen of it.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "ProgramRun.h"
#include "Sandbox.h"
#include "Scenarios.h"
#include "TemporaryDirectory.h"

namespace {

using nlohmann::json;
using testing::HasSubstr;
using testing::StartsWith;

constexpr const char* NUMBERED = R"(
[event-log]
lines = ["0001 2026-02-01 00:00:00 Fan: slow", "0002 2026-02-02 00:00:00 Fan: stopped", "0003 2026-02-03 00:00:00 Power"]
)";
constexpr const char* MIXED = R"(
[event-log]
lines = ["0001 2026-02-01 00:00:00 Fan", "Power", "0003 2026-02-03 00:00:00 Fan", "Door"]
)";

class LogProgramTest : public testing::Test {
  protected:
    void SetUp() override { REQUIRE_SANDBOX(); }

    ProgramEnd log(Arguments options, const std::string& scenario) const {
        options.insert(options.begin(), {"log", "--scenario", m_directory.write("scenario.toml", scenario)});
        ProgramEnd end = runProgram(options);
        EXPECT_EQ(end.exitCode, 0) << end.errors;
        return end;
    }

    TemporaryDirectory m_directory;
};

TEST_F(LogProgramTest, NumbersOfTheLinesAreShownOnce) {
    EXPECT_THAT(log({}, NUMBERED).output, StartsWith("Line\n"
                                                     "0001 2026-02-01 00:00:00 Fan: slow\n"
                                                     "0002 2026-02-02 00:00:00 Fan: stopped\n"
                                                     "0003 2026-02-03 00:00:00 Power\n\nLogValid: "));
    EXPECT_THAT(log({}, MIXED).output, StartsWith("No.  Line\n"
                                                  "     0001 2026-02-01 00:00:00 Fan\n"
                                                  "  2  Power\n"
                                                  "     0003 2026-02-03 00:00:00 Fan\n"
                                                  "  4  Door\n\nLogValid: "));
}

TEST_F(LogProgramTest, ChosenLinesKeepTheirPlaces) {
    EXPECT_THAT(log({"--last", "1"}, MIXED).output, StartsWith("No.  Line\n  4  Door\n\n"));
    EXPECT_THAT(log({"--match", "fan", "--last", "1"}, MIXED).output,
                StartsWith("Line\n0003 2026-02-03 00:00:00 Fan\n\n"));
    EXPECT_THAT(log({"--since", "2026-02-02"}, MIXED).output,
                StartsWith("No.  Line\n  2  Power\n     0003 2026-02-03 00:00:00 Fan\n  4  Door\n\n"));
}

TEST_F(LogProgramTest, DurationEndsNow) {
    EXPECT_THAT(log({"--since", "1s"}, NUMBERED).output,
                StartsWith("None of the event log's lines is among those asked for; it has 3.\n\nLogValid: "));
    // Nineteen years, which the dates above do not outlast soon.
    EXPECT_THAT(log({"--since", "999w"}, NUMBERED).output, HasSubstr("\n0001 2026-02-01 "));
}

TEST_F(LogProgramTest, EveryFormatHasTheChosenLinesAlone) {
    EXPECT_EQ(
        json::parse(
            log({"--match", "FAN", "--format", "json"}, NUMBERED).output)["instances"][0]["properties"]["LogLines"],
        json::parse(R"(["0001 2026-02-01 00:00:00 Fan: slow", "0002 2026-02-02 00:00:00 Fan: stopped"])"));
    EXPECT_THAT(log({"--last", "1", "--format", "mof"}, NUMBERED).output,
                HasSubstr("    LogLines = {\"0003 2026-02-03 00:00:00 Power\"};\n"));
}

TEST_F(LogProgramTest, EmptyLogSaysSo) {
    EXPECT_THAT(log({"--last", "3"}, "").output, StartsWith("The event log has no lines.\n"));
}

}  // namespace
