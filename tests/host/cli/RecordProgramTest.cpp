// The command record: the file that it writes, and what is there when something goes wrong.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <future>
#include <nlohmann/json.hpp>

#include "EmulatedTerminal.h"
#include "FileContents.h"
#include "ProgramRun.h"
#include "Sandbox.h"
#include "Scenarios.h"
#include "TemporaryDirectory.h"
#include "source/RawServer.h"
#include "source/Replay.h"
#include "source/Source.h"

namespace {

namespace fs = std::filesystem;

using nlohmann::json;
using testing::AllOf;
using testing::Each;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;
using testing::StartsWith;

constexpr const char* SECRETS = R"(
[[sensor]]
handle = 7
name = "Till of Mrs Quick"
other-sensor-type-description = "Under the counter"
reading = 5

[[sensor]]
handle = 8
name = "Till of Mrs Slow"
other-sensor-type-description = "Under the counter"
reading = 6

[event-log]
lines = ["0001 2026-02-01 00:00:00 Mrs Quick: in", "0002 2026-02-01 00:00:09 Mrs Quick: in", "Door", "0003"]
)";

class RecordProgramTest : public testing::Test {
  protected:
    void SetUp() override { REQUIRE_SANDBOX(); }

    ProgramEnd record(const std::string& scenario, Arguments options = {}) const {
        options.insert(options.begin(), {"record", m_file, "--scenario", m_directory.write("played.toml", scenario)});
        return runProgram(options);
    }
    std::vector<std::string> filesBeside() const {
        std::vector<std::string> names;
        for (const auto& entry : fs::directory_iterator(m_directory.path())) names.push_back(entry.path().filename());
        return names;
    }
    // For an hour.
    pid_t start(const EmulatedTerminal& terminal) const {
        return startProgram({"record", m_file, "--scenario", m_directory.write("played.toml", TWO_SENSORS), "--for",
                             "1h", "--every", "0.1"},
                            {-1, terminal.programs(), {}});
    }
    // Of the file's terminal.
    json sensors() const {
        const ProgramEnd end = runProgram({"sensors", "--scenario", m_file, "--format", "json"});
        EXPECT_EQ(end.exitCode, 0) << end.errors;
        return json::parse(end.output)["sensors"];
    }

    TemporaryDirectory m_directory;
    const std::string m_file = m_directory.path("till17.toml");
};

TEST_F(RecordProgramTest, FileIsWrittenOnceAndForItsOwnerAlone) {
    const ProgramEnd end = record(TWO_SENSORS);
    EXPECT_EQ(end.exitCode, 0);
    EXPECT_EQ(end.output, "");
    EXPECT_EQ(end.errors, "");
    struct stat status {};
    ASSERT_EQ(stat(m_file.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777U, 0600U);
    EXPECT_EQ(contentsOf(m_file).rfind("# Recorded by zelhost " ZELHOST_VERSION ". Chip library: simulated, ", 0), 0U);
    EXPECT_THAT(sensors(), SizeIs(2));
}

TEST_F(RecordProgramTest, FileThatIsThereStaysAsItIs) {
    m_directory.write("till17.toml", "mine");
    const ProgramEnd end = record(TWO_SENSORS);
    EXPECT_EQ(end.exitCode, 2);
    EXPECT_EQ(end.errors, "zelhost: " + m_file + " is there already; --force replaces it\n");
    EXPECT_EQ(contentsOf(m_file), "mine");

    EXPECT_EQ(record(TWO_SENSORS, {"--force"}).exitCode, 0);
    EXPECT_THAT(sensors(), SizeIs(2));
}

TEST_F(RecordProgramTest, FileThatCameMeanwhileStaysAndTheRecordingIsBesideIt) {
    EmulatedTerminal terminal(100, 5);
    if (!terminal.isUsable()) GTEST_SKIP() << "SKIPPED: no pseudo-terminal can be had here";
    const pid_t process = start(terminal);
    terminal.awaitText(" rounds");
    m_directory.write("till17.toml", "mine");
    kill(process, SIGINT);
    EXPECT_EQ(waitForProgram(process), 4);
    EXPECT_EQ(contentsOf(m_file), "mine");
    EXPECT_THAT(filesBeside(), testing::UnorderedElementsAre("played.toml", "till17.toml", "till17.toml.1"));
    EXPECT_EQ(runProgram({"scenario", "check", m_file + ".1"}).output, m_file + ".1: no mistakes\n");
    terminal.readRest();
    EXPECT_TRUE(terminal.contains("till17.toml is somebody else's by now; what belongs there is in"));
}

TEST_F(RecordProgramTest, NameThatIsTooLongIsFoundBeforeAnythingIsRecorded) {
    const std::string file = m_directory.path(std::string(252, 'a'));
    const ProgramEnd end = runProgram({"record", file, "--scenario", "healthy", "--for", "1h"});
    EXPECT_EQ(end.exitCode, 4);
    EXPECT_EQ(end.errors, "zelhost: " + file + " cannot be written: File name too long\n");
}

TEST_F(RecordProgramTest, FirstRequestThatDoesNotReturnIsNoSuccess) {
    std::promise<void> isAsked;
    const RawServer server([&](Connection& connection) {
        connection.readRequest();
        isAsked.set_value();
        connection.waitForEnd();
    });
    const TemporaryDirectory elsewhere;
    const std::string errors = elsewhere.write("errors", "");
    const int file = open(errors.c_str(), O_WRONLY | O_CLOEXEC);
    const pid_t process =
        startProgram({"record", m_file, "--server", server.url(), "--timeout", "10m"}, {-1, file, {}});
    close(file);
    isAsked.get_future().wait();
    kill(process, SIGTERM);
    EXPECT_EQ(waitForProgram(process), 1);
    EXPECT_EQ(contentsOf(errors), "zelhost: nothing has answered yet, so nothing is recorded\n");
    EXPECT_THAT(filesBeside(), IsEmpty());
}

TEST_F(RecordProgramTest, FullDiskLeavesNothing) {
    ASSERT_EQ(mount("small", m_directory.path().c_str(), "tmpfs", 0, "size=8k"), 0);
    std::string scenario;
    for (int handle = 0; handle < 200; ++handle) {
        scenario += "[[sensor]]\nhandle=" + std::to_string(handle) + "\nname=\"a\"\nreading=1\n";
    }
    const TemporaryDirectory elsewhere;
    const ProgramEnd end = runProgram({"record", m_file, "--scenario", elsewhere.write("played.toml", scenario)});
    EXPECT_EQ(end.exitCode, 4);
    EXPECT_EQ(end.errors, "zelhost: " + m_file + " cannot be written: No space left on device\n");
    EXPECT_THAT(filesBeside(), IsEmpty());
    umount(m_directory.path().c_str());
}

TEST_F(RecordProgramTest, InterruptionEndsItAndTheFileIsWhole) {
    EmulatedTerminal terminal(100, 5);
    if (!terminal.isUsable()) GTEST_SKIP() << "SKIPPED: no pseudo-terminal can be had here";
    const pid_t process = start(terminal);
    terminal.awaitText(" rounds, 2 sensors; Ctrl-C ends it");
    EXPECT_THAT(terminal.lines(),
                testing::Contains(testing::MatchesRegex("recording: [01]:[0-5][0-9]:[0-5][0-9] left, .*")));
    kill(process, SIGINT);
    EXPECT_EQ(waitForProgram(process), 0);
    EXPECT_THAT(sensors(), SizeIs(2));
}

TEST_F(RecordProgramTest, SignalWhileTheFileIsWrittenLeavesItWhole) {
    // Longer than a request is waited for after a signal.
    const std::string slowDisk = "SECONDS_OF_SYNC=3";
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        const ProgramEnd end =
            runProgram({"record", m_file, "--scenario", m_directory.write("played.toml", TWO_SENSORS)},
                       {"LD_PRELOAD=" SIGNAL_AT_SYNC, "SIGNAL_AT_SYNC=" + std::to_string(signal),
                        signal == SIGINT ? slowDisk : "SECONDS_OF_SYNC=0"});
        EXPECT_EQ(end.exitCode, 0);
        EXPECT_EQ(end.errors, "");
        EXPECT_THAT(filesBeside(), testing::UnorderedElementsAre("played.toml", "till17.toml"));
        EXPECT_THAT(sensors(), SizeIs(2));
        fs::remove(m_file);
    }
}

TEST_F(RecordProgramTest, SensorThatFailsFailsWhenItIsPlayed) {
    const ProgramEnd end = record(FAILING_SENSOR);
    EXPECT_EQ(end.exitCode, 0) << end.errors;
    EXPECT_THAT(contentsOf(m_file), HasSubstr("\n[[fault]]\noperation = \"read\"\nhandle = 0x00000002\n"));
    EXPECT_EQ(runProgram({"scenario", "check", m_file}).output, m_file + ": no mistakes\n");
}

TEST_F(RecordProgramTest, StartThatFailsIsRecordedAndReported) {
    const ProgramEnd end = record("[[fault]]\noperation = \"initialise\"\nstatus = 0x00010002\n");
    EXPECT_EQ(end.exitCode, 1);
    EXPECT_THAT(end.errors, StartsWith("zelhost: the provider answered 16 CMPI_RC_ERR_METHOD_NOT_AVAILABLE\n"));
    EXPECT_EQ(runProgram({"names", "--scenario", m_file}).exitCode, 1);
}

TEST_F(RecordProgramTest, TerminalWithoutSensorsIsRecordedAndReported) {
    const ProgramEnd end = record("[event-log]\nlines = [\"door\"]\n");
    EXPECT_EQ(end.exitCode, 1);
    EXPECT_THAT(end.errors, StartsWith("zelhost: the provider answered 1 CMPI_RC_ERR_FAILED\n"));
    EXPECT_THAT(runProgram({"log", "--scenario", m_file}).output, HasSubstr("\n  1  door\n"));
}

TEST_F(RecordProgramTest, ServerThatDoesNotAnswerLeavesNoFile) {
    const ProgramEnd end = runProgram({"record", m_file, "--server", "http://127.0.0.1:1"});
    EXPECT_EQ(end.exitCode, 3);
    EXPECT_THAT(end.errors, HasSubstr("127.0.0.1"));
    EXPECT_FALSE(fs::exists(m_file));
}

TEST_F(RecordProgramTest, DirectoryThatIsNotThereIsFoundBeforeAnythingIsRecorded) {
    const ProgramEnd end =
        runProgram({"record", m_directory.path("none/till17.toml"), "--for", "1h", "--chip", "simulated"});
    EXPECT_EQ(end.exitCode, 4);
    EXPECT_EQ(end.errors,
              "zelhost: " + m_directory.path("none/till17.toml") + " cannot be written: No such file or directory\n");
}

TEST_F(RecordProgramTest, DirectoryThatCannotBeWrittenIsFoundBeforeAnythingIsRecorded) {
    const TemporaryDirectory elsewhere;
    const std::string scenario = elsewhere.write("played.toml", TWO_SENSORS);
    ASSERT_EQ(mount("still", m_directory.path().c_str(), "tmpfs", MS_RDONLY, "size=8k"), 0);
    const ProgramEnd end = runProgram({"record", m_file, "--for", "1h", "--scenario", scenario});
    EXPECT_EQ(end.exitCode, 4);
    EXPECT_EQ(end.errors, "zelhost: " + m_file + " cannot be written: Read-only file system\n");
    EXPECT_EQ(umount(m_directory.path().c_str()), 0);
}

TEST_F(RecordProgramTest, DirectoryIsNotReplacedByForce) {
    fs::create_directory(m_file);
    const ProgramEnd end = record(TWO_SENSORS, {"--force", "--for", "1h"});
    EXPECT_EQ(end.exitCode, 4);
    EXPECT_EQ(end.errors, "zelhost: " + m_file + " cannot be replaced: it is no regular file\n");
}

TEST_F(RecordProgramTest, RecordedOverTheNetworkATerminalIsTheSame) {
    const auto instances = [](const Arguments& options) {
        Arguments arguments{"instances", "--format", "json"};
        arguments.insert(arguments.end(), options.begin(), options.end());
        return json::parse(runProgram(arguments).output)["instances"];
    };
    for (const char* manager : {"sfcb", "openpegasus"}) {
        const RawServer server(replaying(manager, "odd"));
        const ProgramEnd end = runProgram({"record", m_file, "--force", "--server", server.url()});
        EXPECT_EQ(end.exitCode, 0);
        EXPECT_EQ(end.errors, "");
        EXPECT_THAT(contentsOf(m_file), HasSubstr(". Server: " + server.url()));
        const json played = instances({"--scenario", m_file});
        EXPECT_THAT(played, SizeIs(4));
        EXPECT_EQ(played, instances({"--scenario", CIM_XML "/odd.toml"}));
        const std::string log = runProgram({"log", "--format", "mof", "--scenario", m_file}).output;
        EXPECT_EQ(log, runProgram({"log", "--format", "mof", "--scenario", CIM_XML "/odd.toml"}).output);
    }
}

TEST_F(RecordProgramTest, ServerThatFallsSilentHalfWayLeavesWhatItAnswered) {
    // A round ends with the event log. After more refusals than one makes, a round without answers is over.
    constexpr unsigned answeredRounds = 2;
    constexpr unsigned manyRefusals = 10;
    unsigned rounds = 0;
    unsigned refusals = 0;
    std::promise<void> isSilent;
    const RawServer server([&](Connection& connection) {
        for (std::string request; !(request = connection.readRequest()).empty();) {
            if (rounds == answeredRounds) {
                if (++refusals == manyRefusals) isSilent.set_value();
                return;
            }
            const std::string body = request.substr(request.find("\r\n\r\n") + 4);
            if (body.find(host::EVENT_LOG_CLASS) != std::string::npos) ++rounds;
            if (!connection.write(httpAnswer(replayedBody("sfcb", "odd", body)))) return;
        }
    });
    const std::string errors = m_directory.write("errors", "");
    const int errorFile = open(errors.c_str(), O_WRONLY | O_CLOEXEC);
    const pid_t process = startProgram({"record", m_file, "--server", server.url(), "--for", "1h", "--every", "0.1s"},
                                       {-1, errorFile, {}});
    close(errorFile);
    isSilent.get_future().wait();
    kill(process, SIGINT);
    EXPECT_EQ(waitForProgram(process), 0);
    EXPECT_THAT(contentsOf(errors), HasSubstr("zelhost: the names of the sensors could not be had for a time; "));
    EXPECT_THAT(contentsOf(m_file), HasSubstr("operation = \"event-log\"\nfrom-ms = "));
    EXPECT_THAT(sensors(), SizeIs(4));
}

TEST_F(RecordProgramTest, RequestThatDoesNotReturnCostsNothingThatWasRecorded) {
    unsigned rounds = 0;
    std::promise<void> isSilent;
    const RawServer server([&](Connection& connection) {
        for (std::string request; !(request = connection.readRequest()).empty();) {
            if (rounds == 1) {
                isSilent.set_value();
                return connection.waitForEnd();
            }
            const std::string body = request.substr(request.find("\r\n\r\n") + 4);
            if (body.find(host::EVENT_LOG_CLASS) != std::string::npos) ++rounds;
            if (!connection.write(httpAnswer(replayedBody("sfcb", "odd", body)))) return;
        }
    });
    EmulatedTerminal terminal(100, 5);
    if (!terminal.isUsable()) GTEST_SKIP() << "SKIPPED: no pseudo-terminal can be had here";
    const pid_t process = startProgram({"record", m_file, "--server", server.url(), "--timeout", "10m", "--for", "1h"},
                                       {-1, terminal.programs(), {}});
    terminal.awaitText("1 round, 4 sensors");
    isSilent.get_future().wait();
    kill(process, SIGINT);
    EXPECT_EQ(waitForProgram(process), 0);
    terminal.readRest();
    for (const std::string& line : terminal.lines()) EXPECT_EQ(line, "");
    EXPECT_THAT(sensors(), SizeIs(4));
}

TEST_F(RecordProgramTest, RedactedFileHasNoTextOfTheOriginal) {
    ASSERT_EQ(record(SECRETS, {"--redact"}).exitCode, 0);
    const std::string text = contentsOf(m_file);
    for (const char* word : {"Mrs", "Quick", "Slow", "Till of", "counter", "Door", "in\"", CHIP}) {
        EXPECT_THAT(text, Not(HasSubstr(word)));
    }
    EXPECT_THAT(text, AllOf(HasSubstr("name = \"Sensor 1\"\nsensor-type"), HasSubstr("name = \"Sensor 2\"\n"),
                            HasSubstr("other-sensor-type-description = \"Text 1\"\n"),
                            HasSubstr("    \"0001 2026-02-01 00:00:00 Text 2\",\n"
                                      "    \"0002 2026-02-01 00:00:09 Text 2\",\n"
                                      "    \"Text 3\",\n"
                                      "    \"Text 4\",\n")));
    EXPECT_EQ(sensors()[0]["value"], 5);
}

TEST_F(RecordProgramTest, OptionsThatCannotBeAreRefused) {
    EXPECT_EQ(runProgram({"record"}).errors, "zelhost: record: FILE is missing\nSee zelhost record --help.\n");
    EXPECT_THAT(runProgram({"record", m_file, "--for", "10x"}).errors,
                StartsWith("zelhost: --for: '10x' is not a time from 0.1s to 7d, such as 10m\n"));
    EXPECT_THAT(runProgram({"record", m_file, "--format", "json"}).errors,
                StartsWith("zelhost: record writes a scenario, in no other format\n"));
    EXPECT_THAT(runProgram({"sensors", "--for", "10m"}).errors, StartsWith("zelhost: sensors has no option --for\n"));
}

class DiffProgramTest : public testing::Test {
  protected:
    ProgramEnd diff(const std::string& before, const std::string& after, Arguments options = {}) const {
        options.insert(options.begin(),
                       {"diff", m_directory.write("a.toml", before), m_directory.write("b.toml", after)});
        return runProgram(options);
    }
    TemporaryDirectory m_directory;
};

constexpr const char* BEFORE = R"(
[[sensor]]
handle = 1
name = "CPU"
base-units = "degrees-c"
upper-threshold-critical = 80
reading = { kind = "series", values = [40, 50] }
[[sensor]]
handle = 2
name = "Old"
reading = 3
[event-log]
lines = ["one", "two", "two"]
)";
constexpr const char* AFTER = R"(
[[sensor]]
handle = 1
name = "CPU"
base-units = "degrees-c"
upper-threshold-critical = 90
reading = { kind = "series", values = [40, 99] }
[[sensor]]
handle = 3
name = "New"
reading = 4
[event-log]
lines = ["two", "three"]
)";

TEST_F(DiffProgramTest, DifferencesAreShownInOneTable) {
    const ProgramEnd end = diff(BEFORE, AFTER);
    EXPECT_EQ(end.exitCode, 1);
    EXPECT_EQ(end.output,
              "Sensor         What                      Before       After\n"
              "CPU(00000001)  readings                  40 to 50 °C  40 to 99 °C\n"
              "CPU(00000001)  upper-threshold-critical  80 °C        90 °C\n"
              "Old(00000002)  sensor                    3            -\n"
              "New(00000003)  sensor                    -            4\n"
              "event log      line                      one          -\n"
              "event log      line                      two          -\n"
              "event log      line                      -            three\n");
}

TEST_F(DiffProgramTest, JsonHasTheSame) {
    const ProgramEnd end = diff(BEFORE, AFTER, {"--format", "json"});
    EXPECT_EQ(end.exitCode, 1);
    const json document = json::parse(end.output);
    EXPECT_EQ(document["command"], "diff");
    const json limit{
        {"sensor", "CPU(00000001)"}, {"what", "upper-threshold-critical"}, {"before", "80 °C"}, {"after", "90 °C"}};
    EXPECT_EQ(document["differences"][1], limit);
    EXPECT_EQ(document["differences"][6]["sensor"], nullptr);
    EXPECT_THAT(document["differences"], SizeIs(7));
}

TEST_F(DiffProgramTest, TerminalLogAndFaultsAreCompared) {
    const std::string sensor = "[[sensor]]\nhandle = 1\nname = \"A\"\nreading = 1\n";
    const ProgramEnd end = diff(sensor + "[[fault]]\noperation = \"read\"\nhandle = 1\nstatus = 1\n",
                                "model = \"zan\"\n" + sensor +
                                    "[event-log]\nvalid = false\nfull = true\n"
                                    "[[fault]]\noperation = \"event-log\"\nfrom-call = 2\ncalls = 3\nfrom-ms = 4\n"
                                    "for-ms = 5\nstatus = 6\ndelay-ms = 7\n");
    EXPECT_EQ(end.exitCode, 1);
    EXPECT_EQ(end.output,
              "Sensor     What   Before                                          After\n"
              "terminal   model  none                                            zan\n"
              "event log  valid  true                                            false\n"
              "event log  full   false                                           true\n"
              "terminal   fault  read, handle = 0x00000001, status = 0x00000001  -\n"
              "terminal   fault  -                                               event-log, from-call = 2, calls = 3, "
              "from-ms = 4, for-ms = 5, status = 0x00000006, delay-ms = 7\n");
}

TEST_F(DiffProgramTest, SameScenariosAreNotDifferent) {
    const ProgramEnd end = diff(BEFORE, BEFORE);
    EXPECT_EQ(end.exitCode, 0);
    EXPECT_EQ(end.output, "Nothing is different.\n");
}

TEST_F(DiffProgramTest, MistakesOfAFileAreReported) {
    const ProgramEnd end = diff(BEFORE, "limit = 3\n");
    EXPECT_EQ(end.exitCode, 2);
    EXPECT_THAT(end.errors, AllOf(StartsWith("zelhost: "), HasSubstr("b.toml:1: unknown key 'limit'")));
}

}  // namespace
