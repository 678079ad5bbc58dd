#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cctype>
#include <nlohmann/json.hpp>
#include <set>

#include "ProgramRun.h"
#include "Sandbox.h"
#include "Scenarios.h"
#include "TemporaryDirectory.h"
#include "verify/SchemaFiles.h"

namespace {

using nlohmann::json;
using testing::ContainsRegex;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

constexpr const char* QUALIFIERS = SCHEMA "/qualifiers.mof";
constexpr const char* CLASSES = SCHEMA "/tqs.mof";

// One sensor that reports everything that a sensor can, so that no property stays unset.
constexpr const char* FULL_SENSOR = R"(
model = "none"

[[sensor]]
handle = 0x1
name = "Flow"
sensor-type = "other"
base-units = "cfm"
other-sensor-type-description = "Flow"
rate-units = "per-minute"
unit-modifier = -2
accuracy = 1
resolution = 1
hysteresis = 2
min-readable = -40
max-readable = 127
nominal-reading = 52
lower-threshold-non-critical = 5
lower-threshold-critical = 0
lower-threshold-fatal = -5
upper-threshold-non-critical = 85
upper-threshold-critical = 95
upper-threshold-fatal = 105
reading = 42

[event-log]
lines = ["first", "second"]
)";

class VerifyProgramTest : public testing::Test {
  protected:
    void SetUp() override { REQUIRE_SANDBOX(); }

    ProgramEnd run(Arguments arguments, const std::string& scenario = FULL_SENSOR) const {
        arguments.insert(arguments.begin(), {"--scenario", m_directory.write("scenario.toml", scenario)});
        return runProgram(arguments);
    }
    // The answers compared with the shipped classes, in which one text is replaced by another.
    ProgramEnd runChanged(const std::string& from, const std::string& to) const {
        std::ostringstream contents;
        contents << std::ifstream(CLASSES).rdbuf();
        std::string text = contents.str();
        const std::size_t place = text.find(from);
        EXPECT_NE(place, std::string::npos) << from;
        if (place != std::string::npos) text.replace(place, from.size(), to);
        return run({"verify", "--schema", QUALIFIERS, "--schema", m_directory.write("changed.mof", text)});
    }
    std::set<std::string> published(const std::string& className) const {
        const json document = json::parse(run({"instances", className, "--format", "json"}).output);
        std::set<std::string> names;
        for (const json& instance : document["instances"]) {
            for (const auto& property : instance["properties"].items()) names.insert(property.key());
        }
        return names;
    }

    TemporaryDirectory m_directory;
};

std::vector<std::string> shippedScenarios() {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(SCENARIOS)) names.push_back(entry.path().stem());
    std::sort(names.begin(), names.end());
    return names;
}

std::string testName(const testing::TestParamInfo<std::string>& scenario) {
    std::string name = scenario.param;
    std::replace_if(
        name.begin(), name.end(), [](unsigned char c) { return std::isalnum(c) == 0; }, '_');
    return name;
}

class VerifyScenarioTest : public testing::TestWithParam<std::string> {
  protected:
    void SetUp() override { REQUIRE_SANDBOX(); }
};

INSTANTIATE_TEST_SUITE_P(Shipped, VerifyScenarioTest, testing::ValuesIn(shippedScenarios()), testName);

TEST_P(VerifyScenarioTest, EveryAnswerConforms) {
    const ProgramEnd end = runProgram({"verify", "--scenario", GetParam()});
    if (GetParam() == "no-driver") {
        EXPECT_EQ(end.exitCode, 1);
        EXPECT_THAT(end.output, HasSubstr(": the provider answered 16 CMPI_RC_ERR_METHOD_NOT_AVAILABLE\n"));
        return;
    }
    EXPECT_EQ(end.exitCode, 0) << end.output;
    EXPECT_THAT(end.output, ContainsRegex("^TQS_NumericSensor: [1-9][0-9]* names, [1-9][0-9]* instances, "
                                          "[1-9][0-9]* single requests, 0 problems\n"));
    EXPECT_THAT(end.output, EndsWith("\nTQS_SystemEventLog: 1 name, 1 instance, 1 single request, 0 problems\n"));
    EXPECT_EQ(end.errors, "");
}

TEST_F(VerifyProgramTest, FailedRequestsAreReportedOnBothOutputs) {
    const ProgramEnd end = runProgram({"verify", "--scenario", "no-driver"});
    EXPECT_EQ(end.exitCode, 1);
    EXPECT_EQ(end.output,
              "names root/cimv2:TQS_NumericSensor: the provider answered 16 CMPI_RC_ERR_METHOD_NOT_AVAILABLE\n"
              "instances root/cimv2:TQS_NumericSensor: the provider answered 16 CMPI_RC_ERR_METHOD_NOT_AVAILABLE\n"
              "TQS_NumericSensor: 0 names, 0 instances, 0 single requests, 2 problems\n"
              "names root/cimv2:TQS_SystemEventLog: the provider answered 16 CMPI_RC_ERR_METHOD_NOT_AVAILABLE\n"
              "instances root/cimv2:TQS_SystemEventLog: the provider answered 16 CMPI_RC_ERR_METHOD_NOT_AVAILABLE\n"
              "TQS_SystemEventLog: 0 names, 0 instances, 0 single requests, 2 problems\n");
    EXPECT_THAT(end.errors, StartsWith("zelhost: the provider answered 16 CMPI_RC_ERR_METHOD_NOT_AVAILABLE\n"));
}

TEST_F(VerifyProgramTest, FailedStartIsExplainedByItsLines) {
    const ProgramEnd end =
        run({"verify", "--format", "json"}, "[[fault]]\noperation = \"initialise\"\nstatus = 0x00010002\n");
    EXPECT_EQ(end.exitCode, 1);
    EXPECT_EQ(json::parse(end.output)["simulated"], true);
    EXPECT_EQ(json::parse(end.output)["conforms"], false);
    EXPECT_THAT(end.errors, StartsWith("zelhost: the provider answered 16 CMPI_RC_ERR_METHOD_NOT_AVAILABLE\n"
                                       "zelhost: its start failed; its own lines:\n"
                                       "provider: CONSTRUCTOR\n"));
    EXPECT_THAT(end.errors,
                HasSubstr(" SensorProvider::initialize - Initialise Service Driver failed - sscode=0x00010002\n"));
    EXPECT_THAT(end.errors, Not(HasSubstr("DESTRUCTOR")));
}

// With each of them set, verify compares the type of every declared property.
TEST_F(VerifyProgramTest, ProviderSetsExactlyTheDeclaredProperties) {
    const mof::Schema schema = host::readSchema({CLASSES});
    for (const mof::Class& declaration : schema.classes()) {
        std::set<std::string> declared;
        for (const mof::Property& property : declaration.properties) declared.insert(property.name);
        EXPECT_EQ(published(declaration.name), declared);
    }
    const ProgramEnd end = run({"verify"});
    EXPECT_EQ(end.exitCode, 0) << end.output;
    EXPECT_EQ(end.output,
              "TQS_NumericSensor: 1 name, 1 instance, 1 single request, 0 problems\n"
              "TQS_SystemEventLog: 1 name, 1 instance, 1 single request, 0 problems\n");
}

TEST_F(VerifyProgramTest, DeclaredTypeThatIsNotTheProvidersIsFound) {
    const ProgramEnd end = runChanged("sint32 CurrentReading;", "uint32 CurrentReading;");
    EXPECT_EQ(end.exitCode, 1);
    const std::string problem =
        " root/cimv2:TQS_NumericSensor.Name=\"Flow(00000001)\": property CurrentReading is sint32, declared as "
        "uint32\n";
    EXPECT_THAT(end.output, StartsWith("instances" + problem + "get" + problem +
                                       "TQS_NumericSensor: 1 name, 1 instance, 1 single request, 2 problems\n"));
    EXPECT_EQ(end.errors, "");
}

TEST_F(VerifyProgramTest, DeclaredScalarThatIsAnArrayIsFound) {
    EXPECT_THAT(runChanged("string LogLines[];", "string LogLines;").output,
                HasSubstr(": property LogLines is string[], declared as string\n"));
}

TEST_F(VerifyProgramTest, PropertyWithoutDeclarationIsFound) {
    EXPECT_THAT(runChanged("string Caption;", "string Title;").output,
                HasSubstr(": property Caption is not declared\n"));
}

TEST_F(VerifyProgramTest, DeclaredKeyThatIsMissingIsFound) {
    const ProgramEnd end = runChanged("[Read,", "[Key, Read,");
    EXPECT_EQ(end.exitCode, 1);
    EXPECT_THAT(end.output, HasSubstr(": key Accuracy is missing\n"));
}

TEST_F(VerifyProgramTest, ControlCharactersOfTheChipAreFound) {
    const ProgramEnd end = run({"verify"}, TWO_SENSORS);
    EXPECT_EQ(end.exitCode, 1);
    EXPECT_THAT(end.output, HasSubstr("names root/cimv2:TQS_NumericSensor.Name=\"Bad\\x1b[2J(0000001a)\": key Name "
                                      "holds text that is not valid UTF-8 or has control characters: "
                                      "Bad\\x1b[2J(0000001a)\n"));
    EXPECT_THAT(end.output,
                HasSubstr(": property LogLines holds text that is not valid UTF-8 or has control characters: "
                          "{first \\x07line, }\n"));
}

TEST_F(VerifyProgramTest, ClassUnknownToTheProviderIsFound) {
    const ProgramEnd end =
        run({"verify", "--schema", m_directory.write("a.mof", "class Nonesuch { [Key] string Id; };")});
    EXPECT_EQ(end.exitCode, 1);
    EXPECT_EQ(end.output,
              "names root/cimv2:Nonesuch: the provider answered 5 CMPI_RC_ERR_INVALID_CLASS\n"
              "instances root/cimv2:Nonesuch: the provider answered 5 CMPI_RC_ERR_INVALID_CLASS\n"
              "Nonesuch: 0 names, 0 instances, 0 single requests, 2 problems\n");
}

TEST_F(VerifyProgramTest, Json) {
    const ProgramEnd end = run({"verify", "--format", "json"});
    EXPECT_EQ(end.exitCode, 0);
    const json document = json::parse(end.output, nullptr, false);
    ASSERT_TRUE(document.is_object()) << end.output;
    EXPECT_EQ(document["conforms"], true);
    EXPECT_EQ(document["classes"].size(), 2U);
}

TEST_F(VerifyProgramTest, FaultyMofIsTwoWithFileAndLine) {
    const std::string file = m_directory.write("faulty.mof", "class A {\n    strng Name;\n};\n");
    const ProgramEnd end = run({"verify", "--schema", file});
    EXPECT_EQ(end.exitCode, 2);
    EXPECT_EQ(end.output, "");
    EXPECT_EQ(end.errors, "zelhost: " + file + ":2: \"strng\" is no type, expected a CIM type, or a class and ref\n");
}

TEST_F(VerifyProgramTest, MissingSchemaAndMofFormatAreWrongUsage) {
    const ProgramEnd missing = run({"verify", "--schema", m_directory.path("none.mof")});
    EXPECT_EQ(missing.exitCode, 2);
    EXPECT_EQ(missing.errors, "zelhost: the schema file " + m_directory.path("none.mof") +
                                  " cannot be read (No such file or directory)\n");
    const ProgramEnd format = run({"verify", "--format", "mof"});
    EXPECT_EQ(format.exitCode, 2);
    EXPECT_EQ(format.errors, "zelhost: verify has no MOF format\nSee zelhost verify --help.\n");
}

TEST_F(VerifyProgramTest, ProviderThatCannotBeLoadedIsThree) {
    const ProgramEnd end = run({"verify", "--provider", "/dev/nowhere/x.so"});
    EXPECT_EQ(end.exitCode, 3);
    EXPECT_EQ(end.output, "");
}

}  // namespace
