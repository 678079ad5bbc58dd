#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>
#include <vector>

#include "cli/CommandLine.h"

namespace {

using host::Command;
using host::Format;
using host::Options;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

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

// With the complaint's first line, and whose help its second line points to.
void expectWrongUsage(const std::vector<const char*>& arguments, const std::string& complaint,
                      const std::string& command = "") {
    const Read result = read(arguments);
    EXPECT_EQ(result.ended, 2) << testing::PrintToString(arguments);
    EXPECT_EQ(result.output, "");
    EXPECT_EQ(result.errors, "zelhost: " + complaint + "\nSee zelhost " + command + "--help.\n");
}

TEST(CommandLineTest, Defaults) {
    const Read result = read({"instances"});
    ASSERT_EQ(result.ended, std::nullopt) << result.errors;
    EXPECT_EQ(result.options.request.command, Command::Instances);
    EXPECT_EQ(result.options.request.className, "TQS_NumericSensor");
    EXPECT_EQ(result.options.request.nameSpace, "root/cimv2");
    EXPECT_EQ(result.options.providerName, "SensorProvider");
    EXPECT_EQ(result.options.format, Format::Table);
    EXPECT_EQ(result.options.provider + result.options.chip + result.options.scenario + result.options.providerOutput,
              "");
}

TEST(CommandLineTest, ClassOfNamesAndInstances) {
    EXPECT_EQ(read({"names", "TQS_SystemEventLog"}).options.request.className, "TQS_SystemEventLog");
    EXPECT_EQ(read({"names"}).options.request.command, Command::Names);
    EXPECT_EQ(read({"instances", "X"}).options.request.className, "X");
}

TEST(CommandLineTest, GetTakesANameAndAClass) {
    const Options options = read({"get", "CPU(0000001a)", "--class", "X"}).options;
    EXPECT_EQ(options.request.command, Command::Get);
    EXPECT_EQ(options.request.instanceName, "CPU(0000001a)");
    EXPECT_EQ(options.request.className, "X");
    EXPECT_EQ(read({"get", "--", "-5 V(00000001)"}).options.request.instanceName, "-5 V(00000001)");
}

TEST(CommandLineTest, LogAsksForTheEventLogsClass) {
    EXPECT_EQ(read({"log"}).options.request.command, Command::Log);
    EXPECT_EQ(read({"log"}).options.request.className, "TQS_SystemEventLog");
}

TEST(CommandLineTest, WatchTakesIntervalAndCount) {
    const Options options = read({"watch", "--interval", "0.5", "--count", "3"}).options;
    EXPECT_EQ(options.request.command, Command::Watch);
    EXPECT_EQ(options.interval, 0.5);
    EXPECT_EQ(options.rounds, 3U);
    EXPECT_EQ(read({"watch"}).options.rounds, 0U);
}

TEST(CommandLineTest, MetricsTakesIntervalFileAndNoThresholds) {
    const Options options = read({"metrics", "--every", "15s", "--to", "a.prom", "--no-thresholds"}).options;
    EXPECT_EQ(options.request.command, Command::Metrics);
    EXPECT_EQ(options.every, 15);
    EXPECT_EQ(options.to, "a.prom");
    EXPECT_FALSE(options.hasThresholds);
    EXPECT_EQ(read({"--to", "a", "--every", "0.1", "metrics"}).options.every, 0.1);
    EXPECT_EQ(read({"metrics"}).options.every, 0);
    EXPECT_EQ(read({"metrics"}).options.to, "");
    EXPECT_TRUE(read({"metrics"}).options.hasThresholds);
}

TEST(CommandLineTest, MetricsRefusesWhatHasNoMeaning) {
    for (const char* every : {"", "s", "0.05s", "86401s", "1h", "15 s", "-1s", "nan"}) {
        expectWrongUsage(
            {"metrics", "--to", "f", "--every", every},
            std::string("--every: '") + every + "' is not a number of seconds from 0.1 to 86400, such as 15s",
            "metrics ");
    }
    expectWrongUsage({"metrics", "--to", ""}, "--to: the name of the file is empty", "metrics ");
    expectWrongUsage({"metrics", "--every", "1s"}, "metrics: --every needs --to, a file that is replaced each time",
                     "metrics ");
    expectWrongUsage({"metrics", "--format", "json"}, "metrics has a format of its own", "metrics ");
    expectWrongUsage({"watch", "--no-thresholds"}, "watch has no option --no-thresholds", "watch ");
    expectWrongUsage({"metrics", "X"}, "metrics: there is an argument too many: X", "metrics ");
}

TEST(CommandLineTest, LogFollowsWithStateIntervalAndCount) {
    const Options options =
        read({"log", "--follow", "--state", "s", "--every", "10s", "--count", "3", "--match", "Fan"}).options;
    EXPECT_TRUE(options.isFollowed);
    EXPECT_EQ(options.state, "s");
    EXPECT_EQ(options.every, 10);
    EXPECT_EQ(options.rounds, 3U);
    EXPECT_EQ(options.lines.match, "Fan");
    EXPECT_FALSE(read({"log"}).options.isFollowed);
}

TEST(CommandLineTest, LogRefusesWhatHasNoMeaning) {
    expectWrongUsage({"log", "--state", "s"}, "log: --state is for --follow", "log ");
    expectWrongUsage({"log", "--every", "1s"}, "log: --every is for --follow", "log ");
    expectWrongUsage({"log", "--count", "1"}, "log: --count is for --follow", "log ");
    expectWrongUsage({"log", "--follow", "--state", ""}, "--state: the name of the file is empty", "log ");
    for (const char* format : {"json", "mof"}) {
        expectWrongUsage({"log", "--follow", "--format", format},
                         "log --follow shows the lines alone, in no other format", "log ");
    }
    expectWrongUsage({"metrics", "--follow"}, "metrics has no option --follow", "metrics ");
}

TEST(CommandLineTest, WritingCommands) {
    EXPECT_EQ(read({"create"}).options.request.command, Command::Create);
    EXPECT_EQ(read({"modify", "N"}).options.request.command, Command::Modify);
    EXPECT_EQ(read({"delete", "N"}).options.request.command, Command::Delete);
    const Options options = read({"query", "SELECT * FROM X", "--language", "CQL"}).options;
    EXPECT_EQ(options.request.command, Command::Query);
    EXPECT_EQ(options.request.query, "SELECT * FROM X");
    EXPECT_EQ(options.request.queryLanguage, "CQL");
    EXPECT_EQ(read({"query", "x"}).options.request.queryLanguage, "WQL");
}

TEST(CommandLineTest, VerifyTakesSchemaFilesInTheirOrder) {
    EXPECT_EQ(read({"verify"}).options.request.command, Command::Verify);
    EXPECT_TRUE(read({"verify"}).options.schema.empty());
    EXPECT_EQ(read({"verify", "--schema", "q.mof", "--schema", "a.mof"}).options.schema,
              (std::vector<std::string>{"q.mof", "a.mof"}));
}

TEST(CommandLineTest, CommonOptionsBeforeAndAfterTheCommand) {
    const Options options =
        read({"--provider", "/p.so", "--provider-name", "N", "instances", "--chip", "/c", "--scenario", "s",
              "--namespace", "root", "--format", "json", "--provider-output", "-"})
            .options;
    EXPECT_EQ(options.provider, "/p.so");
    EXPECT_EQ(options.providerName, "N");
    EXPECT_EQ(options.chip, "/c");
    EXPECT_EQ(options.scenario, "s");
    EXPECT_EQ(options.request.nameSpace, "root");
    EXPECT_EQ(options.format, Format::Json);
    EXPECT_EQ(options.providerOutput, "-");
    EXPECT_EQ(read({"log", "--format", "mof"}).options.format, Format::Mof);
    EXPECT_EQ(read({"log", "--format", "table"}).options.format, Format::Table);
}

TEST(CommandLineTest, OptionsOfOneCommandBeforeAndAfterIt) {
    const Options watch = read({"--interval", "1", "--count", "7", "watch"}).options;
    EXPECT_EQ(watch.request.command, Command::Watch);
    EXPECT_EQ(watch.interval, 1);
    EXPECT_EQ(watch.rounds, 7U);
    for (const char* command : {"get", "create", "modify", "delete"}) {
        const Read result = read({"--class", "X", command, "Y"});
        EXPECT_EQ(result.ended, std::nullopt) << result.errors;
        EXPECT_EQ(result.options.request.className, "X") << command;
        EXPECT_EQ(result.options.request.instanceName, "Y") << command;
    }
    const Options query = read({"--language", "CQL", "query", "text", "--class", "X"}).options;
    EXPECT_EQ(query.request.queryLanguage, "CQL");
    EXPECT_EQ(query.request.className, "X");
    EXPECT_EQ(read({"--schema", "q.mof", "verify", "--schema", "a.mof"}).options.schema,
              (std::vector<std::string>{"q.mof", "a.mof"}));
}

TEST(CommandLineTest, OptionOfAnotherCommandIsRefusedWhereverItStands) {
    expectWrongUsage({"instances", "--schema", "q.mof"}, "instances has no option --schema", "instances ");
    expectWrongUsage({"--schema", "q.mof", "instances"}, "instances has no option --schema", "instances ");
    expectWrongUsage({"names", "--interval", "1"}, "names has no option --interval", "names ");
    expectWrongUsage({"--count", "1", "names"}, "names has no option --count", "names ");
    expectWrongUsage({"watch", "--class", "X"}, "watch has no option --class", "watch ");
    expectWrongUsage({"get", "--language", "CQL", "X"}, "get has no option --language", "get ");
}

TEST(CommandLineTest, CommandsWordIsAnOrdinaryArgumentAfterTheCommand) {
    EXPECT_EQ(read({"get", "log"}).options.request.instanceName, "log");
    EXPECT_EQ(read({"get", "help"}).options.request.instanceName, "help");
    EXPECT_EQ(read({"names", "version"}).options.request.className, "version");
    EXPECT_EQ(read({"names", "version"}).options.request.command, Command::Names);
}

TEST(CommandLineTest, UnknownWordsAreNamedWithWhatMayBeMeant) {
    expectWrongUsage({"frobnicate"}, "there is no command frobnicate");
    expectWrongUsage({"instnces"}, "there is no command instnces; did you mean instances?");
    expectWrongUsage({"instnces", "--help"}, "there is no command instnces; did you mean instances?");
    expectWrongUsage({"--help", "instnces"}, "there is no command instnces; did you mean instances?");
    expectWrongUsage({"instnces", "--version"}, "there is no command instnces; did you mean instances?");
    expectWrongUsage({"help", "lgo"}, "there is no command lgo; did you mean log?", "help ");
    expectWrongUsage({"bad\x1b"}, "there is no command bad\\x1b");
    expectWrongUsage({"instances", "--no-such-option"}, "there is no option --no-such-option", "instances ");
    expectWrongUsage({"names", "--formt=json"}, "there is no option --formt; did you mean --format?", "names ");
    expectWrongUsage({"names", "--formt", "json", "X"}, "there is no option --formt; did you mean --format?", "names ");
    expectWrongUsage({"names", "-x"}, "there is no option -x", "names ");
}

TEST(CommandLineTest, TooManyAndTooFewWordsAreNamed) {
    expectWrongUsage({"instances", "A", "B"}, "instances: there is an argument too many: B", "instances ");
    expectWrongUsage({"verify", "TQS_NumericSensor"}, "verify: there is an argument too many: TQS_NumericSensor",
                     "verify ");
    expectWrongUsage({"verify", "--schema", "q.mof", "a.mof"}, "verify: there is an argument too many: a.mof",
                     "verify ");
    expectWrongUsage({"get"}, "get: NAME is missing", "get ");
    expectWrongUsage({"modify"}, "modify: NAME is missing", "modify ");
    expectWrongUsage({"delete"}, "delete: NAME is missing", "delete ");
    expectWrongUsage({"query"}, "query: TEXT is missing", "query ");
    expectWrongUsage({"instances", "--provider"}, "--provider needs a value", "instances ");
    expectWrongUsage({"verify", "--schema"}, "--schema needs a value", "verify ");
    expectWrongUsage({"--format", "json", "names", "--format", "mof"}, "--format is given more than once", "names ");
}

TEST(CommandLineTest, FormatsAreTheFourWords) {
    for (const std::string word : {"xml", "1", "JSON", ""}) {
        expectWrongUsage({"instances", "--format", word.c_str()},
                         "--format: '" + word + "' is not one of table, json, mof, csv", "instances ");
    }
}

TEST(CommandLineTest, EachFormatIsTakenWhereTheCommandHasIt) {
    EXPECT_EQ(read({"sensors", "--format", "csv"}).options.format, Format::Csv);
    EXPECT_EQ(read({"sensors", "--format", "json"}).options.format, Format::Json);
    expectWrongUsage({"instances", "--format", "csv"}, "instances has no CSV format; sensors has one", "instances ");
    expectWrongUsage({"sensors", "--format", "mof"}, "sensors has no MOF format", "sensors ");
    expectWrongUsage({"verify", "--format", "mof"}, "verify has no MOF format", "verify ");
}

TEST(CommandLineTest, SensorsTakesNamesAndItsOptions) {
    const Read plain = read({"sensors"});
    ASSERT_EQ(plain.ended, std::nullopt) << plain.errors;
    EXPECT_EQ(plain.options.request.command, Command::Sensors);
    EXPECT_TRUE(plain.options.sensors.hasHeader);
    EXPECT_FALSE(plain.options.sensors.onlyProblems);
    const host::SensorOptions all = read({"sensors", "a", "b*", "--problems", "--type", "fan", "--sort", "severity",
                                          "--color", "never", "--no-header"})
                                        .options.sensors;
    EXPECT_THAT(all.names, testing::ElementsAre("a", "b*"));
    EXPECT_TRUE(all.onlyProblems && all.isWorstFirst && !all.hasHeader);
    EXPECT_EQ(all.kind, "fan");
    EXPECT_EQ(all.colouring, host::Colouring::Never);
}

TEST(CommandLineTest, SensorsRefusesWordsWithoutSense) {
    expectWrongUsage({"sensors", "--color", "red"}, "--color: 'red' is not one of auto, always, never", "sensors ");
    expectWrongUsage({"sensors", "--sort", "name"}, "--sort: 'name' is not severity", "sensors ");
    expectWrongUsage({"sensors", "--type", "tachometer"},
                     "--type: 'tachometer' is not one of unknown, other, temperature, voltage, current, fan, counter, "
                     "switch, lock, humidity, smoke, presence, air-flow, power, power-production, pressure, intrusion",
                     "sensors ");
    expectWrongUsage({"instances", "--problems"}, "instances has no option --problems", "instances ");
}

TEST(CommandLineTest, WatchRefusesNumbersWithoutSense) {
    for (const std::string text : {"0", "0.09", "-1", "86400.1", "soon", "nan", "-nan", "inf", "-inf", "1s", " 1"}) {
        expectWrongUsage({"watch", "--interval", text.c_str()},
                         "--interval: '" + text + "' is not a number of seconds from 0.1 to 86400", "watch ");
    }
    for (const std::string text : {"0", "-1", "2.5", "4294967296", "many", "1 "}) {
        expectWrongUsage({"watch", "--count", text.c_str()},
                         "--count: '" + text + "' is not a whole number from 1 to 4294967295", "watch ");
    }
}

TEST(CommandLineTest, LogTakesLinesByDateTextAndNumber) {
    const Options options = read({"log", "--last", "5", "--since", "2026-02-09", "--match", "fan"}).options;
    EXPECT_EQ(options.lines.last, 5U);
    EXPECT_EQ(options.lines.since, "2026-02-09 00:00:00");
    EXPECT_EQ(options.lines.match, "fan");
    EXPECT_NE(read({"log", "--since", "2h"}).options.lines.since, std::nullopt);
    EXPECT_EQ(read({"log"}).options.lines.last, std::nullopt);
    expectWrongUsage({"instances", "--last", "5"}, "instances has no option --last", "instances ");
}

TEST(CommandLineTest, LogRefusesDatesAndNumbersWithoutSense) {
    for (const std::string text : {"0", "-1", "1.5", "many", "4294967296", ""}) {
        expectWrongUsage({"log", "--last", text.c_str()},
                         "--last: '" + text + "' is not a whole number from 1 to 4294967295", "log ");
    }
    for (const std::string text : {"soon", "2", "2026-02-30", ""}) {
        expectWrongUsage({"log", "--since", text.c_str()},
                         "--since: '" + text +
                             "' is neither a date and time, such as 2026-02-17 or '2026-02-17 06:30', nor a duration, "
                             "such as 90s, 15m, 2h, 3d or 1w",
                         "log ");
    }
}

TEST(CommandLineTest, WatchTakesTheEndsOfTheRanges) {
    EXPECT_EQ(read({"watch", "--interval", "0.1"}).options.interval, 0.1);
    EXPECT_EQ(read({"watch", "--interval", "86400"}).options.interval, 86400);
    EXPECT_EQ(read({"watch", "--count", "4294967295"}).options.rounds, 4294967295U);
}

TEST(CommandLineTest, CheckReadsItsOptions) {
    const host::CheckOptions check =
        read({"check", "--ignore", "a*", "--ignore", "b", "--warn-on", "critical", "--event-log"}).options.check;
    EXPECT_EQ(check.ignored, (std::vector<std::string>{"a*", "b"}));
    EXPECT_TRUE(check.warnsOnCritical);
    EXPECT_FALSE(check.warnsOnNoReading);
    EXPECT_TRUE(check.withEventLog);
    EXPECT_TRUE(read({"check", "--warn-on", "no-reading"}).options.check.warnsOnNoReading);
}

TEST(CommandLineTest, WrongUsageOfCheckIsUnknownOnStandardOutput) {
    const Read result = read({"check", "--event-lgo"});
    EXPECT_EQ(result.ended, 3);
    EXPECT_EQ(result.output, "SENSORS UNKNOWN: there is no option --event-lgo; did you mean --event-log?\n");
    EXPECT_EQ(result.errors, "");
    EXPECT_EQ(read({"--interval", "x", "check"}).ended, 3);
    EXPECT_EQ(read({"check", "check"}).ended, 3);
    EXPECT_EQ(read({"--chip", "x", "check", "--namespace"}).ended, 3);
}

TEST(CommandLineTest, WatchIsOfSensorsAlone) {
    expectWrongUsage({"watch", "TQS_SystemEventLog"}, "watch: there is an argument too many: TQS_SystemEventLog",
                     "watch ");
}

TEST(CommandLineTest, HelpIsFineAndListsTheExitCodes) {
    const Read result = read({"--help"});
    EXPECT_EQ(result.ended, 0);
    EXPECT_EQ(result.errors, "");
    EXPECT_THAT(result.output, HasSubstr("Exit codes:\n  0  fine\n"));
    EXPECT_THAT(result.output, HasSubstr("\n  4  the output could not be written\n"));
    EXPECT_THAT(result.output, HasSubstr("--chip system"));
    for (const char* option : {"--help", "--version", "--provider PATH", "--class CLASS", "--interval SECONDS",
                               "--count ROUNDS", "--language NAME", "--schema FILE", "--every SECONDS", "--to FILE",
                               "--no-thresholds", "--follow", "--state FILE"}) {
        EXPECT_THAT(result.output, HasSubstr(option));
    }
}

TEST(CommandLineTest, HelpOfACommandShowsTheOptionsThatItTakesAndNoOthers) {
    const std::string get = read({"get", "--help"}).output;
    EXPECT_THAT(get, StartsWith("Show one instance with all its properties\nUsage: zelhost get [OPTIONS] NAME\n"));
    for (const char* option : {"--class CLASS", "--help", "--version", "--provider PATH", "--provider-name NAME",
                               "--chip system|simulated|linux|PATH", "--scenario NAME|FILE", "--namespace NAME",
                               "--format FORMAT", "--provider-output FILE|-"}) {
        EXPECT_THAT(get, HasSubstr(option));
    }
    for (const char* option : {"--interval", "--count", "--language", "--schema"}) {
        EXPECT_THAT(get, Not(HasSubstr(option)));
    }
    const std::string watch = read({"watch", "-h"}).output;
    EXPECT_THAT(watch, HasSubstr("Usage: zelhost watch [OPTIONS]\n"));
    EXPECT_THAT(watch, HasSubstr("--interval SECONDS"));
    EXPECT_THAT(watch, Not(HasSubstr("--class")));
}

TEST(CommandLineTest, HelpAndVersionAlsoAsWordsAndLetters) {
    const std::string help = read({"--help"}).output;
    for (const std::vector<const char*>& same : {std::vector<const char*>{"help"}, {"-h"}}) {
        EXPECT_EQ(read(same).ended, 0);
        EXPECT_EQ(read(same).output, help);
        EXPECT_EQ(read(same).errors, "");
    }
    EXPECT_EQ(read({"help", "get"}).ended, 0);
    EXPECT_EQ(read({"help", "get"}).output, read({"get", "--help"}).output);
    const std::string version = read({"--version"}).output;
    EXPECT_THAT(version, testing::MatchesRegex("zelhost [0-9]+\\.[0-9]+\\.[0-9]+\n"));
    for (const char* same : {"version", "-V"}) {
        EXPECT_EQ(read({same}).ended, 0);
        EXPECT_EQ(read({same}).output, version);
    }
}

TEST(CommandLineTest, WithoutCommandTheHelpIsTheComplaint) {
    EXPECT_EQ(read({}).ended, 2);
    EXPECT_EQ(read({}).output, "");
    EXPECT_EQ(read({}).errors, read({"--help"}).output);
}

}  // namespace
