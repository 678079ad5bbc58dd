// A faulty scenario is refused with one exact message.
#include <unistd.h>

#include <cstdio>

#include "ChipTest.h"
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

struct FaultyScenario {
    const char* name;
    std::string text;
    std::string message;  // after the file's name
};

void PrintTo(const FaultyScenario& scenario, std::ostream* out) {
    *out << scenario.name;
}

class FaultyScenarioTest : public ChipTest, public testing::WithParamInterface<FaultyScenario> {};

TEST_P(FaultyScenarioTest, IsRefusedWithFileLineAndWhatWasExpected) {
    useScenario(GetParam().text);
    EXPECT_EQ(messageOfFailingInitialise(), path() + GetParam().message + "\n");
}

std::string testName(const testing::TestParamInfo<FaultyScenario>& info) {
    return info.param.name;
}

const std::string INT_RANGE = "an integer from -2147483648 to 2147483647";
const std::string HANDLE_RANGE = "an integer from 0 to 4294967295";
const std::string CODE_RANGE = "an integer from 0 to 65535";
const std::string SENSOR =
    "[[sensor]]\nhandle = 1\nname = \"S\"\n";  // its reading, or what comes in its place, on line 4

std::string reading(const std::string& keys) {
    return SENSOR + "reading = { " + keys + " }\n";
}

INSTANTIATE_TEST_SUITE_P(
    File, FaultyScenarioTest,
    testing::Values(
        FaultyScenario{"NotToml", "model = \"none\"\n\nseed 3\n",
                       ":3: Error while parsing key-value pair: expected '=', saw '3', expected valid TOML"},
        FaultyScenario{
            "KeyGivenTwice", "seed = 1\nseed = 2\n",
            ":2: Error while parsing key-value pair: cannot redefine existing integer 'seed', expected valid "
            "TOML"},
        FaultyScenario{
            "NoKeyInATableHeader", "[!sensor]\n",
            ":1: Error while parsing key: expected bare key starting character or string delimiter, saw '!', "
            "expected valid TOML"},
        FaultyScenario{"LetterOutsideOfATextThatIsNotAscii", "seed = 1\nmodel = \u00e9\n",
                       ":2: '\u00e9' (U+00E9) stands outside of texts and comments, expected valid TOML"},
        FaultyScenario{"ControlCharacterThatIsNotAscii", "model = \xc2\x9b\n",
                       ":1: U+009B stands outside of texts and comments, expected valid TOML"},
        FaultyScenario{"ByteOrderMarkInsideTheFile", "\n\ufeffseed = 1\n",
                       ":2: '\ufeff' (U+FEFF) stands outside of texts and comments, expected valid TOML"},
        FaultyScenario{"BackslashBeforeALetterThatIsNotAscii", "# \u00e9\nmodel = \"\\\u00e9\"\n",
                       ":2: a backslash stands before '\u00e9' (U+00E9), expected valid TOML"},
        FaultyScenario{"TextWithoutEnd", "model = \"\u00e9\nseed = 1\"\n",
                       ":1: Error while parsing string: unescaped control characters other than TAB (U+0009) are "
                       "explicitly prohibited, expected valid TOML"},
        FaultyScenario{"TextWithoutEndBeforeOtherCharacters", "model = 'none\nseed = \u00e9\n",
                       ":1: Error while parsing string: unescaped control characters other than TAB (U+0009) are "
                       "explicitly prohibited, expected valid TOML"},
        FaultyScenario{"TextOfSeveralLinesWithoutEnd", "model = '''\n\u00e9''\n",
                       ":2: Error while parsing string: encountered end-of-file, expected valid TOML"},
        FaultyScenario{"UnknownKeyThatIsNotAscii", "\"\u00e9\" = 1\n",
                       ":1: unknown key '\u00e9' in the file, expected one of model, seed, sensor, event-log, fault"},
        FaultyScenario{"UnknownKey", "# comment\nmodell = 1\n",
                       ":2: unknown key 'modell' in the file, expected one of model, seed, sensor, event-log, fault"},
        FaultyScenario{"UnknownTable", "\n\n[sensors]\n",
                       ":3: unknown key 'sensors' in the file, expected one of model, seed, sensor, event-log, fault"},
        FaultyScenario{"KeyWithLineBreak", "\"a\\nb\" = 1\n",
                       ":1: unknown key 'a?b' in the file, expected one of model, seed, sensor, event-log, fault"},
        FaultyScenario{"ModelUnknown", "model = \"Grebel\"\n",
                       ":1: 'model' in the file is \"Grebel\", expected one of none, grebel, zan"},
        FaultyScenario{"ModelNotText", "model = 1\n",
                       ":1: 'model' in the file is an integer, expected one of none, grebel, zan"},
        FaultyScenario{"SeedTooSmall", "seed = -1\n", ":1: 'seed' in the file is -1, expected " + HANDLE_RANGE},
        FaultyScenario{"SeedTooLarge", "seed = 4294967296\n",
                       ":1: 'seed' in the file is 4294967296, expected " + HANDLE_RANGE},
        FaultyScenario{"SeedNotInteger", "seed = 1.5\n",
                       ":1: 'seed' in the file is a floating-point number, expected " + HANDLE_RANGE},
        FaultyScenario{"SensorNotArray", "[sensor]\n",
                       ":1: 'sensor' in the file is a table, expected [[sensor]] tables"},
        FaultyScenario{"SensorElementNotTable", "sensor = [\n3]\n",
                       ":2: an element of 'sensor' in the file is an integer, expected [[sensor]] tables"},
        FaultyScenario{"EventLogArray", "[[event-log]]\n",
                       ":1: 'event-log' in the file is an array, expected one [event-log] table"},
        FaultyScenario{"FaultNotArray", "fault = true\n",
                       ":1: 'fault' in the file is a boolean, expected [[fault]] tables"}),
    testName);

INSTANTIATE_TEST_SUITE_P(
    Sensor, FaultyScenarioTest,
    testing::Values(
        FaultyScenario{"UnknownKey", SENSOR + "Accuracy = 1\n",
                       ":4: unknown key 'Accuracy' in [[sensor]], expected one of handle, count, name, reading, "
                       "sensor-type, other-sensor-type-description, base-units, rate-units, unit-modifier, is-linear, "
                       "accuracy, hysteresis, lower-threshold-critical, lower-threshold-fatal, "
                       "lower-threshold-non-critical, max-readable, min-readable, nominal-reading, resolution, unread, "
                       "upper-threshold-critical, upper-threshold-fatal, upper-threshold-non-critical"},
        FaultyScenario{"HandleMissing", "\n[[sensor]]\nname = \"S\"\nreading = 1\n",
                       ":2: 'handle' is missing in [[sensor]], expected " + HANDLE_RANGE},
        FaultyScenario{"HandleNegative", "[[sensor]]\nhandle = -1\n",
                       ":2: 'handle' in [[sensor]] is -1, expected " + HANDLE_RANGE},
        FaultyScenario{"HandleTooLarge", "[[sensor]]\nhandle = 0x100000000\n",
                       ":2: 'handle' in [[sensor]] is 4294967296, expected " + HANDLE_RANGE},
        FaultyScenario{"HandleNotInteger", "[[sensor]]\nhandle = \"1\"\n",
                       ":2: 'handle' in [[sensor]] is a string, expected " + HANDLE_RANGE},
        FaultyScenario{"HandleGivenTwice",
                       SENSOR + "reading = 1\n\n[[sensor]]\nname = \"T\"\nreading = 1\nhandle = 1\n",
                       ":9: 'handle' in [[sensor]] is 0x00000001 again, which line 2 gives, expected each handle once"},
        FaultyScenario{"HandleInsideCopies",
                       SENSOR + "reading = 1\ncount = 5\n[[sensor]]\nhandle = 0x05\nname = \"T\"\nreading = 1\n",
                       ":7: 'handle' in [[sensor]] is 0x00000005 again, which line 2 gives, expected each handle once"},
        FaultyScenario{"CopiesPastTheLastHandle", "[[sensor]]\ncount = 3\nhandle = 0xfffffffe\n",
                       ":3: 'handle' in [[sensor]] is 4294967294, expected an integer from 0 to 4294967293"},
        FaultyScenario{"CountZero", "[[sensor]]\ncount = 0\n",
                       ":2: 'count' in [[sensor]] is 0, expected an integer from 1 to 10000"},
        FaultyScenario{"CountTooLarge", "[[sensor]]\ncount = 10001\n",
                       ":2: 'count' in [[sensor]] is 10001, expected an integer from 1 to 10000"},
        FaultyScenario{"NameMissing", "[[sensor]]\nhandle = 1\n",
                       ":1: 'name' is missing in [[sensor]], expected a string"},
        FaultyScenario{"NameNotText", "[[sensor]]\nhandle = 1\nname = 2026-01-01\n",
                       ":3: 'name' in [[sensor]] is a date or time, expected a string"},
        FaultyScenario{"DescriptionNotText", SENSOR + "other-sensor-type-description = 1\n",
                       ":4: 'other-sensor-type-description' in [[sensor]] is an integer, expected a string"},
        FaultyScenario{"IsLinearNotBoolean", SENSOR + "is-linear = 1\n",
                       ":4: 'is-linear' in [[sensor]] is an integer, expected true or false"},
        FaultyScenario{"UnitModifierTooLarge", SENSOR + "unit-modifier = 2147483648\n",
                       ":4: 'unit-modifier' in [[sensor]] is 2147483648, expected " + INT_RANGE},
        FaultyScenario{
            "SensorTypeUnknown", SENSOR + "sensor-type = \"heat\"\n",
            ":4: 'sensor-type' in [[sensor]] is \"heat\", expected " + CODE_RANGE +
                " or one of unknown, other, temperature, voltage, current, tachometer, counter, switch, lock, "
                "humidity, smoke-detection, presence, air-flow"},
        FaultyScenario{"BaseUnitsTooLarge", SENSOR + "base-units = 65536\n",
                       ":4: 'base-units' in [[sensor]] is 65536, expected " + CODE_RANGE +
                           " or one of unknown, other, degrees-c, degrees-f, degrees-k, volts, amps, watts, joules, "
                           "coulombs, va, nits, lumens, lux, candelas, kpa, psi, newtons, cfm, rpm, hertz, seconds, "
                           "minutes, hours, days, weeks, ohms, decibels, percentage, pascals"},
        FaultyScenario{
            "RateUnitsNotACode", SENSOR + "rate-units = []\n",
            ":4: 'rate-units' in [[sensor]] is an array, expected " + CODE_RANGE +
                " or one of none, per-microsecond, per-millisecond, per-second, per-minute, per-hour, per-day, "
                "per-week, per-month, per-year"}),
    testName);

INSTANTIATE_TEST_SUITE_P(
    Reading, FaultyScenarioTest,
    testing::Values(
        FaultyScenario{"Missing", SENSOR,
                       ":1: 'reading' is missing in [[sensor]], expected " + INT_RANGE + " or a table with 'kind'"},
        FaultyScenario{"NotANumber", SENSOR + "reading = 1.0\n",
                       ":4: 'reading' in [[sensor]] is a floating-point number, expected " + INT_RANGE +
                           " or a table with 'kind'"},
        FaultyScenario{"PlainNumberTooLarge", SENSOR + "reading = 2147483648\n",
                       ":4: 'reading' in [[sensor]] is 2147483648, expected " + INT_RANGE},
        FaultyScenario{"KindMissing", reading("value = 1"),
                       ":4: 'kind' is missing in reading, expected one of constant, series, sine, ramp, random-walk"},
        FaultyScenario{"KindUnknown", reading("kind = \"noise\""),
                       ":4: 'kind' in reading is \"noise\", expected one of constant, series, sine, ramp, random-walk"},
        FaultyScenario{"ConstantWithSteps", reading("kind = \"constant\", value = 1, every = \"call\""),
                       ":4: unknown key 'every' in reading, expected one of kind, value"},
        FaultyScenario{"ConstantWithoutValue", reading("kind = \"constant\""),
                       ":4: 'value' is missing in reading, expected " + INT_RANGE},
        FaultyScenario{"SeriesWithSineKey", reading("kind = \"series\", values = [1], period = 3"),
                       ":4: unknown key 'period' in reading, expected one of kind, every, step-ms, values, then"},
        FaultyScenario{"SeriesWithoutValues", reading("kind = \"series\""),
                       ":4: 'values' is missing in reading, expected an array of integers, not empty"},
        FaultyScenario{"SeriesEmpty", reading("kind = \"series\", values = []"),
                       ":4: 'values' in reading is empty, expected an array of integers, not empty"},
        FaultyScenario{"SeriesNotAnArray", reading("kind = \"series\", values = 3"),
                       ":4: 'values' in reading is an integer, expected an array of integers, not empty"},
        FaultyScenario{
            "SeriesElementNotInteger", reading("kind = \"series\", values = [1,\n2,\n\"3\"]"),
            ":6: an element of 'values' in reading is a string, expected an array whose elements are " + INT_RANGE},
        FaultyScenario{
            "SeriesElementTooSmall", reading("kind = \"series\", values = [-2147483649]"),
            ":4: an element of 'values' in reading is -2147483649, expected an array whose elements are " + INT_RANGE},
        FaultyScenario{"EveryUnknown", reading("kind = \"series\", values = [1], every = \"day\""),
                       ":4: 'every' in reading is \"day\", expected one of call, clock"},
        FaultyScenario{"StepZero", reading("kind = \"series\", values = [1], step-ms = 0"),
                       ":4: 'step-ms' in reading is 0, expected an integer from 1 to 86400000"},
        FaultyScenario{"StepLengthByCall", reading("kind = \"series\", values = [1], every = \"call\", step-ms = 5"),
                       ":4: 'step-ms' in reading is given, expected it with every = \"clock\" only"},
        FaultyScenario{"ThenUnknown", reading("kind = \"series\", values = [1], then = \"stop\""),
                       ":4: 'then' in reading is \"stop\", expected one of repeat, hold, back"},
        FaultyScenario{"HoldByClock", reading("kind = \"ramp\", from = 1, to = 2, steps = 3, then = \"hold\""),
                       ":4: 'then' in reading is \"hold\", expected it with every = \"call\" only"},
        FaultyScenario{"SineWithThen", reading("kind = \"sine\", then = \"back\""),
                       ":4: unknown key 'then' in reading, expected one of kind, every, step-ms, middle, amplitude, "
                       "period"},
        FaultyScenario{"SineWithoutMiddle", reading("kind = \"sine\""),
                       ":4: 'middle' is missing in reading, expected " + INT_RANGE},
        FaultyScenario{"SinePastTheTopOfAnInt", reading("kind = \"sine\", middle = 2147483640, amplitude = 8"),
                       ":4: 'amplitude' in reading is 8, expected an integer from 0 to 7"},
        FaultyScenario{"SinePastTheBottomOfAnInt", reading("kind = \"sine\", middle = -2147483640, amplitude = 9"),
                       ":4: 'amplitude' in reading is 9, expected an integer from 0 to 8"},
        FaultyScenario{"SineAmplitudeNegative", reading("kind = \"sine\", middle = -1, amplitude = -1"),
                       ":4: 'amplitude' in reading is -1, expected an integer from 0 to 2147483647"},
        FaultyScenario{"SinePeriodTooLong", reading("kind = \"sine\", middle = 0, amplitude = 1, period = 86401"),
                       ":4: 'period' in reading is 86401, expected an integer from 1 to 86400"},
        FaultyScenario{
            "RampWithValues", reading("kind = \"ramp\", values = [1]"),
            ":4: unknown key 'values' in reading, expected one of kind, every, step-ms, from, to, steps, then"},
        FaultyScenario{"RampStepsZero", reading("kind = \"ramp\", from = 0, to = 1, steps = 0"),
                       ":4: 'steps' in reading is 0, expected an integer from 1 to 86400"},
        FaultyScenario{
            "WalkWithMiddle", reading("kind = \"random-walk\", middle = 1"),
            ":4: unknown key 'middle' in reading, expected one of kind, every, step-ms, start, step, min, max"},
        FaultyScenario{"WalkMaxBelowMin", reading("kind = \"random-walk\", min = 5, max = 4"),
                       ":4: 'max' in reading is 4, expected an integer from 5 to 2147483647"},
        FaultyScenario{"WalkStartOutside", reading("kind = \"random-walk\", min = 5, max = 9, start = 10"),
                       ":4: 'start' in reading is 10, expected an integer from 5 to 9"},
        FaultyScenario{"WalkStepZero", reading("kind = \"random-walk\", min = 5, max = 9, start = 9, step = 0"),
                       ":4: 'step' in reading is 0, expected an integer from 1 to 2147483647"}),
    testName);

INSTANTIATE_TEST_SUITE_P(
    EventLog, FaultyScenarioTest,
    testing::Values(
        FaultyScenario{"UnknownKey", "[event-log]\nline = []\n",
                       ":2: unknown key 'line' in [event-log], expected one of valid, full, "
                       "multiple-event-count-increment, multiple-event-time-window, lines"},
        FaultyScenario{"ValidNotBoolean", "[event-log]\nvalid = 1\n",
                       ":2: 'valid' in [event-log] is an integer, expected true or false"},
        FaultyScenario{"FullNotBoolean", "[event-log]\nfull = \"no\"\n",
                       ":2: 'full' in [event-log] is a string, expected true or false"},
        FaultyScenario{"IncrementTooLarge", "[event-log]\nmultiple-event-count-increment = 256\n",
                       ":2: 'multiple-event-count-increment' in [event-log] is 256, expected an integer from 0 to 255"},
        FaultyScenario{"WindowNegative", "[event-log]\nmultiple-event-time-window = -1\n",
                       ":2: 'multiple-event-time-window' in [event-log] is -1, expected an integer from 0 to 255"},
        FaultyScenario{"LinesNotArray", "[event-log]\nlines = \"a\"\n",
                       ":2: 'lines' in [event-log] is a string, expected an array of strings"},
        FaultyScenario{"LineNotText", "[event-log]\nlines = [\"a\",\n\"b\",\n3]\n",
                       ":4: an element of 'lines' in [event-log] is an integer, expected an array of strings"}),
    testName);

INSTANTIATE_TEST_SUITE_P(
    Fault, FaultyScenarioTest,
    testing::Values(
        FaultyScenario{
            "UnknownKey", "[[fault]]\ncode = 1\n",
            ":2: unknown key 'code' in [[fault]], expected one of operation, handle, from-call, calls, status, "
            "delay-ms"},
        FaultyScenario{
            "OperationMissing", "[[fault]]\nstatus = 1\n",
            ":1: 'operation' is missing in [[fault]], expected one of initialise, enumerate, information, read, "
            "event-log"},
        FaultyScenario{"OperationUnknown", "[[fault]]\noperation = \"write\"\n",
                       ":2: 'operation' in [[fault]] is \"write\", expected one of initialise, enumerate, information, "
                       "read, event-log"},
        FaultyScenario{"HandleOfNoSensor", SENSOR + "reading = 1\n[[fault]]\noperation = \"read\"\nhandle = 2\n",
                       ":7: 'handle' in [[fault]] is 0x00000002, expected the handle of a sensor of this file"},
        FaultyScenario{"HandleTooLarge", "[[fault]]\noperation = \"read\"\nhandle = 4294967296\n",
                       ":3: 'handle' in [[fault]] is 4294967296, expected " + HANDLE_RANGE},
        FaultyScenario{"HandleWithoutSensors",
                       SENSOR + "reading = 1\n[[fault]]\noperation = \"event-log\"\nhandle = 1\n",
                       ":7: 'handle' in [[fault]] is given, expected it with the operations information and read only"},
        FaultyScenario{"FromCallZero", "[[fault]]\noperation = \"read\"\nfrom-call = 0\n",
                       ":3: 'from-call' in [[fault]] is 0, expected an integer from 1 to 4294967295"},
        FaultyScenario{"CallsZero", "[[fault]]\noperation = \"read\"\ncalls = 0\n",
                       ":3: 'calls' in [[fault]] is 0, expected an integer from 1 to 4294967295"},
        FaultyScenario{"DelayTooLong", "[[fault]]\noperation = \"read\"\ndelay-ms = 600001\n",
                       ":3: 'delay-ms' in [[fault]] is 600001, expected an integer from 0 to 600000"},
        FaultyScenario{"NeitherStatusNorDelay", "[[fault]]\noperation = \"read\"\n",
                       ":1: 'status' is missing in [[fault]], expected an integer from 1 to 4294967295"},
        FaultyScenario{"StatusZero", "[[fault]]\noperation = \"read\"\nstatus = 0\ndelay-ms = 1\n",
                       ":3: 'status' in [[fault]] is 0, expected an integer from 1 to 4294967295"},
        FaultyScenario{"StatusTooLarge", "[[fault]]\noperation = \"read\"\nstatus = 4294967296\n",
                       ":3: 'status' in [[fault]] is 4294967296, expected an integer from 1 to 4294967295"}),
    testName);

class ScenarioErrorTest : public ChipTest {};

TEST_F(ScenarioErrorTest, BytesThatAreNotUtf8AreRefusedEverywhere) {
    for (const std::string bytes : {"\x80", "\xC1\xBF", "\xC3", "\xC3(", "\xE0\x9F\xBF", "\xED\xA0\x80", "\xE2\x82",
                                    "\xF0\x8F\xBF\xBF", "\xF4\x90\x80\x80", "\xF8\x88\x80\x80\x80", "\xFF"}) {
        char number[8];
        std::snprintf(number, sizeof number, "0x%02X", static_cast<unsigned char>(bytes[0]));
        const std::string message = path() + ":2: the byte " + number + " is no UTF-8, expected valid TOML\n";
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
        useScenario(SENSOR + key + " = -2147483649\n");
        EXPECT_EQ(messageOfFailingInitialise(),
                  path() + ":4: '" + key + "' in [[sensor]] is -2147483649, expected " + INT_RANGE + "\n");
    }
}

TEST_F(ScenarioErrorTest, OnlyTheFirstOfSeveralFaultsIsTold) {
    useScenario("seed = -1\nmodel = \"x\"\n[[sensor]]\n");
    EXPECT_EQ(messageOfFailingInitialise(),
              path() + ":2: 'model' in the file is \"x\", expected one of none, grebel, zan\n");
}

TEST_F(ScenarioErrorTest, MissingFileIsNamed) {
    setenv("ZELCHIP_SCENARIO", "/nowhere/scenario.toml", 1);
    EXPECT_EQ(messageOfFailingInitialise(),
              "/nowhere/scenario.toml: cannot be read (No such file or directory), expected a scenario file\n");
}

TEST_F(ScenarioErrorTest, FolderIsNotAScenario) {
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
