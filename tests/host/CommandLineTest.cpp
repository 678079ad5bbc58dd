#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>
#include <vector>

#include "CommandLine.h"

namespace {

using host::Command;
using host::Format;
using host::Options;
using testing::HasSubstr;

struct Read {
    std::optional<int> ended;
    Options options;
    std::string output;
    std::string errors;
};

Read read(std::vector<const char*> arguments) {
    arguments.insert(arguments.begin(), "zelhost");
    Read result;
    std::ostringstream output;
    std::ostringstream errors;
    result.ended =
        host::readCommandLine(static_cast<int>(arguments.size()), arguments.data(), result.options, output, errors);
    result.output = output.str();
    result.errors = errors.str();
    return result;
}

void expectWrongUsage(const std::vector<const char*>& arguments) {
    const Read result = read(arguments);
    EXPECT_EQ(result.ended, 2) << testing::PrintToString(arguments);
    EXPECT_EQ(result.output, "");
    EXPECT_NE(result.errors, "");
}

TEST(CommandLine, Defaults) {
    const Read result = read({"instances"});
    ASSERT_EQ(result.ended, std::nullopt) << result.errors;
    EXPECT_EQ(result.options.command, Command::Instances);
    EXPECT_EQ(result.options.className, "TQS_NumericSensor");
    EXPECT_EQ(result.options.nameSpace, "root/cimv2");
    EXPECT_EQ(result.options.providerName, "SensorProvider");
    EXPECT_EQ(result.options.format, Format::Table);
    EXPECT_EQ(result.options.provider + result.options.chip + result.options.scenario + result.options.providerOutput,
              "");
}

TEST(CommandLine, ClassOfNamesAndInstances) {
    EXPECT_EQ(read({"names", "TQS_SystemEventLog"}).options.className, "TQS_SystemEventLog");
    EXPECT_EQ(read({"names"}).options.command, Command::Names);
    EXPECT_EQ(read({"instances", "X"}).options.className, "X");
}

TEST(CommandLine, GetTakesANameAndAClass) {
    const Options options = read({"get", "CPU(0000001a)", "--class", "X"}).options;
    EXPECT_EQ(options.command, Command::Get);
    EXPECT_EQ(options.instanceName, "CPU(0000001a)");
    EXPECT_EQ(options.className, "X");
    EXPECT_EQ(read({"get", "--", "-5 V(00000001)"}).options.instanceName, "-5 V(00000001)");
}

TEST(CommandLine, LogAsksForTheEventLogsClass) {
    EXPECT_EQ(read({"log"}).options.command, Command::Log);
    EXPECT_EQ(read({"log"}).options.className, "TQS_SystemEventLog");
}

TEST(CommandLine, WatchTakesIntervalAndCount) {
    const Options options = read({"watch", "--interval", "0.5", "--count", "3"}).options;
    EXPECT_EQ(options.command, Command::Watch);
    EXPECT_EQ(options.interval, 0.5);
    EXPECT_EQ(options.rounds, 3U);
    EXPECT_EQ(read({"watch"}).options.rounds, 0U);
}

TEST(CommandLine, WritingCommands) {
    EXPECT_EQ(read({"create"}).options.command, Command::Create);
    EXPECT_EQ(read({"modify", "N"}).options.command, Command::Modify);
    EXPECT_EQ(read({"delete", "N"}).options.command, Command::Delete);
    const Options options = read({"query", "SELECT * FROM X", "--language", "CQL"}).options;
    EXPECT_EQ(options.command, Command::Query);
    EXPECT_EQ(options.query, "SELECT * FROM X");
    EXPECT_EQ(options.queryLanguage, "CQL");
    EXPECT_EQ(read({"query", "x"}).options.queryLanguage, "WQL");
}

TEST(CommandLine, VerifyTakesSchemaFilesInTheirOrder) {
    EXPECT_EQ(read({"verify"}).options.command, Command::Verify);
    EXPECT_TRUE(read({"verify"}).options.schema.empty());
    EXPECT_EQ(read({"verify", "--schema", "q.mof", "--schema", "a.mof"}).options.schema,
              (std::vector<std::string>{"q.mof", "a.mof"}));
}

TEST(CommandLine, CommonOptionsBeforeAndAfterTheCommand) {
    const Options options =
        read({"--provider", "/p.so", "--provider-name", "N", "instances", "--chip", "/c", "--scenario", "s",
              "--namespace", "root", "--format", "json", "--provider-output", "-"})
            .options;
    EXPECT_EQ(options.provider, "/p.so");
    EXPECT_EQ(options.providerName, "N");
    EXPECT_EQ(options.chip, "/c");
    EXPECT_EQ(options.scenario, "s");
    EXPECT_EQ(options.nameSpace, "root");
    EXPECT_EQ(options.format, Format::Json);
    EXPECT_EQ(options.providerOutput, "-");
    EXPECT_EQ(read({"log", "--format", "mof"}).options.format, Format::Mof);
    EXPECT_EQ(read({"log", "--format", "table"}).options.format, Format::Table);
}

TEST(CommandLine, WrongUsageIsTwoWhateverIsWrong) {
    expectWrongUsage({});
    expectWrongUsage({"frobnicate"});
    expectWrongUsage({"get"});
    expectWrongUsage({"modify"});
    expectWrongUsage({"delete"});
    expectWrongUsage({"query"});
    expectWrongUsage({"instances", "--no-such-option"});
    expectWrongUsage({"instances", "A", "B"});
    expectWrongUsage({"instances", "--format", "xml"});
    expectWrongUsage({"instances", "--provider"});
    expectWrongUsage({"instances", "--schema", "q.mof"});
    expectWrongUsage({"verify", "--schema", "q.mof", "a.mof"});
    expectWrongUsage({"verify", "TQS_NumericSensor"});
}

TEST(CommandLine, WatchRefusesNumbersWithoutSense) {
    expectWrongUsage({"watch", "--interval", "0"});
    expectWrongUsage({"watch", "--interval", "-1"});
    expectWrongUsage({"watch", "--interval", "soon"});
    expectWrongUsage({"watch", "--count", "0"});
    expectWrongUsage({"watch", "--count", "-1"});
}

TEST(CommandLine, HelpIsFineAndTellsTheExitCodes) {
    const Read result = read({"--help"});
    EXPECT_EQ(result.ended, 0);
    EXPECT_EQ(result.errors, "");
    EXPECT_THAT(result.output, HasSubstr("Exit codes:\n  0  fine\n"));
    EXPECT_THAT(result.output, HasSubstr("--chip system"));
    EXPECT_EQ(read({"watch", "--help"}).ended, 0);
    EXPECT_EQ(read({"--version"}).ended, 0);
}

TEST(CommandLine, WithoutCommandTheHelpIsTheComplaint) {
    EXPECT_THAT(read({}).errors, HasSubstr("Exit codes:"));
}

}  // namespace
