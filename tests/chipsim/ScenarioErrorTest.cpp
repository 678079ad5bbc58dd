// A faulty scenario is refused with exact messages, one for each of its mistakes.
#include <unistd.h>

#include <cstdio>
#include <set>
#include <sstream>

#include "ChipTest.h"
#include "FileContents.h"
#include "OutputCapture.h"

namespace {

// What Initialise writes to standard error while it fails.
std::string messageOfFailingInitialise() {
    OutputCapture capture(STDERR_FILENO);
    CChip chip;
    const sscode status = chip.Initialise();
    std::string message = capture.take();
    EXPECT_EQ(status, FAULTY_SCENARIO);
    return message;
}

// The lines, each with the directory before the file's name.
std::string withDirectory(const std::string& lines) {
    std::istringstream input(lines);
    std::string text;
    for (std::string line; std::getline(input, line);) text += FAULTY_SCENARIOS "/" + line + '\n';
    return text;
}

class ScenarioErrorTest : public ChipTest {};

// Each file NAME.toml in the directory is refused with the messages in NAME.txt, which begin with the file's name.
TEST_F(ScenarioErrorTest, FaultyFileIsRefusedWithTheMessagesBesideIt) {
    std::set<std::string> scenarios;
    std::set<std::string> messages;
    for (const auto& entry : std::filesystem::directory_iterator(FAULTY_SCENARIOS))
        (entry.path().extension() == ".toml" ? scenarios : messages).insert(entry.path().stem());
    EXPECT_EQ(scenarios, messages);
    EXPECT_FALSE(scenarios.empty());
    for (const std::string& name : scenarios) {
        const std::string file = FAULTY_SCENARIOS "/" + name;
        setenv("ZELCHIP_SCENARIO", (file + ".toml").c_str(), 1);
        EXPECT_EQ(messageOfFailingInitialise(), withDirectory(contentsOf(file + ".txt"))) << name;
    }
}

TEST_F(ScenarioErrorTest, BytesThatAreNotUtf8AreRefusedEverywhere) {
    for (const std::string bytes : {"\x80", "\xC1\xBF", "\xC3", "\xC3(", "\xE0\x9F\xBF", "\xED\xA0\x80", "\xE2\x82",
                                    "\xF0\x8F\xBF\xBF", "\xF4\x90\x80\x80", "\xF8\x88\x80\x80\x80", "\xFF"}) {
        char number[8];
        std::snprintf(number, sizeof number, "0x%02X", static_cast<unsigned char>(bytes[0]));
        const std::string message = path() + ":2: the byte " + number + " is not valid UTF-8, expected valid TOML\n";
        for (const std::string before : {"\n", "\n#", "\nmodel = \"", "\nmodel = '", "model = \"\"\"\n"}) {
            useScenario(before + bytes);
            EXPECT_EQ(messageOfFailingInitialise(), message) << before;
        }
    }
}

TEST_F(ScenarioErrorTest, EveryNumberOfASensorIsChecked) {
    for (const std::string key :
         {"accuracy", "hysteresis", "lower-threshold-critical", "lower-threshold-fatal", "lower-threshold-non-critical",
          "max-readable", "min-readable", "nominal-reading", "resolution", "unit-modifier", "unread",
          "upper-threshold-critical", "upper-threshold-fatal", "upper-threshold-non-critical"}) {
        useScenario("[[sensor]]\nhandle = 1\nname = \"S\"\n" + key + " = -2147483649\nreading = 1\n");
        EXPECT_EQ(messageOfFailingInitialise(),
                  path() + ":4: '" + key +
                      "' in [[sensor]] is -2147483649, expected an integer from -2147483648 to 2147483647\n");
    }
}

TEST_F(ScenarioErrorTest, MissingFileIsNamed) {
    setenv("ZELCHIP_SCENARIO", "/nowhere/scenario.toml", 1);
    EXPECT_EQ(messageOfFailingInitialise(),
              "/nowhere/scenario.toml: cannot be read (No such file or directory), expected a scenario file\n");
}

TEST_F(ScenarioErrorTest, DirectoryIsNotAScenario) {
    setenv("ZELCHIP_SCENARIO", "/", 1);
    EXPECT_EQ(messageOfFailingInitialise(), "/: cannot be read (Is a directory), expected a scenario file\n");
}

TEST_F(ScenarioErrorTest, OtherOperationsFailAfterwards) {
    useScenario("seed = -1\n");
    OutputCapture capture(STDERR_FILENO);
    CChip chip;
    EXPECT_EQ(chip.Initialise(), FAULTY_SCENARIO);
    CSensorHandleList handles;
    EXPECT_EQ(chip.EnumerateSensorHandles(handles), NOT_INITIALISED);
}

TEST_F(ScenarioErrorTest, MendedFileIsReadByTheNextInitialise) {
    useScenario("seed = -1\n");
    CChip chip;
    {
        OutputCapture capture(STDERR_FILENO);
        EXPECT_EQ(chip.Initialise(), FAULTY_SCENARIO);
    }
    useScenario(sensor("1", "1"));
    EXPECT_EQ(chip.Initialise(), 0U);
}

}  // namespace
