#include <sys/stat.h>
#include <unistd.h>

#include <cstdint>
#include <thread>

#include "ChipTest.h"

namespace {

class SensorTest : public ChipTest {};

TEST_F(SensorTest, HandlesComeInTheOrderOfTheFile) {
    const auto chip = chipOn(sensor("0xffffffff", "1") + sensor("7", "1") + sensor("0", "1"));
    const CSensorHandleList handles = handlesOf(*chip);
    EXPECT_EQ(static_cast<const std::vector<unsigned>&>(handles), (std::vector<unsigned>{0xffffffff, 7, 0}));
}

TEST_F(SensorTest, EnumerationAppends) {
    const auto chip = chipOn(sensor("7", "1"));
    CSensorHandleList handles;
    handles.push_back(3);
    EXPECT_EQ(chip->EnumerateSensorHandles(handles), 0U);
    EXPECT_EQ(static_cast<const std::vector<unsigned>&>(handles), (std::vector<unsigned>{3, 7}));
}

TEST_F(SensorTest, EmptyFileIsATerminalWithoutSensors) {
    const auto chip = chipOn("");
    EXPECT_TRUE(handlesOf(*chip).empty());
}

// The numbers that a sensor may lack, by their keys.
const std::vector<std::pair<std::string, int CSensorInformation::*>> NUMBERS = {
    {"accuracy", &CSensorInformation::accuracy},
    {"hysteresis", &CSensorInformation::hysteresis},
    {"lower-threshold-critical", &CSensorInformation::lowerThresholdCritical},
    {"lower-threshold-fatal", &CSensorInformation::lowerThresholdFatal},
    {"lower-threshold-non-critical", &CSensorInformation::lowerThresholdNonCritical},
    {"max-readable", &CSensorInformation::maxReadable},
    {"min-readable", &CSensorInformation::minReadable},
    {"nominal-reading", &CSensorInformation::nominalReading},
    {"resolution", &CSensorInformation::resolution},
    {"unread", &CSensorInformation::unread},
    {"upper-threshold-critical", &CSensorInformation::upperThresholdCritical},
    {"upper-threshold-fatal", &CSensorInformation::upperThresholdFatal},
    {"upper-threshold-non-critical", &CSensorInformation::upperThresholdNonCritical},
};

TEST_F(SensorTest, EveryNumberIsGiven) {
    for (const std::int64_t first : {-2147483647, 2147483635}) {
        std::string text = sensor("0x1a", "1");
        std::int64_t value = first;
        for (const auto& [key, member] : NUMBERS) text += key + " = " + std::to_string(value++) + "\n";
        const CSensorInformation information = informationOf(*chipOn(text), 0x1a);
        value = first;
        for (const auto& [key, member] : NUMBERS) EXPECT_EQ(information.*member, value++) << key;
    }
}

TEST_F(SensorTest, NumbersNotGivenAreNotAvailable) {
    const CSensorInformation information = informationOf(*chipOn(sensor("1", "1")), 1);
    for (const auto& [key, member] : NUMBERS) EXPECT_EQ(information.*member, NOT_AVAILABLE) << key;
}

TEST_F(SensorTest, EveryOtherFieldIsGiven) {
    const CSensorInformation information = informationOf(
        *chipOn(sensor("1", "1") + "base-units = 2\nis-linear = false\nrate-units = 10\nsensor-type = 65535\n"
                                   "other-sensor-type-description = \"Förderband\"\nunit-modifier = -12\n"),
        1);
    EXPECT_EQ(information.name, "S");
    EXPECT_EQ(information.baseUnits, 2);
    EXPECT_FALSE(information.isLinear);
    EXPECT_EQ(information.rateUnits, 10);
    EXPECT_EQ(information.otherSensorTypeDescription, "Förderband");
    EXPECT_EQ(information.sensorType, 65535);
    EXPECT_EQ(information.unitModifier, -12);
}

TEST_F(SensorTest, OtherFieldsHaveDefaults) {
    const auto chip = chipOn(sensor("1", "1"));
    const CSensorInformation information = informationOf(*chip, 1);
    EXPECT_EQ(information.baseUnits, 0);
    EXPECT_EQ(information.rateUnits, 0);
    EXPECT_EQ(information.sensorType, 0);
    EXPECT_EQ(information.unitModifier, 0);
    EXPECT_TRUE(information.isLinear);
    EXPECT_EQ(information.otherSensorTypeDescription, "");
}

using Words = std::vector<std::pair<std::string, int>>;

class WordTest : public ChipTest {
  protected:
    // The code that each word gives, in a scenario with a sensor for each.
    template <typename Field>
    void expectCodes(const std::string& key, Field CSensorInformation::*field, const Words& words) const {
        std::string text;
        for (std::size_t i = 0; i < words.size(); ++i)
            text += sensor(std::to_string(i), "1") + key + " = \"" + words[i].first + "\"\n";
        const auto chip = chipOn(text);
        for (std::size_t i = 0; i < words.size(); ++i)
            EXPECT_EQ(informationOf(*chip, static_cast<unsigned>(i)).*field, words[i].second) << words[i].first;
    }
};

TEST_F(WordTest, SensorTypesAreThoseOfCim) {
    expectCodes("sensor-type", &CSensorInformation::sensorType,
                {{"unknown", 0},
                 {"other", 1},
                 {"temperature", 2},
                 {"voltage", 3},
                 {"current", 4},
                 {"tachometer", 5},
                 {"counter", 6},
                 {"switch", 7},
                 {"lock", 8},
                 {"humidity", 9},
                 {"smoke-detection", 10},
                 {"presence", 11},
                 {"air-flow", 12}});
}

TEST_F(WordTest, BaseUnitsAreThoseOfCim) {
    expectCodes(
        "base-units", &CSensorInformation::baseUnits,
        {{"unknown", 0}, {"other", 1},  {"degrees-c", 2}, {"degrees-f", 3}, {"degrees-k", 4},   {"volts", 5},
         {"amps", 6},    {"watts", 7},  {"joules", 8},    {"coulombs", 9},  {"va", 10},         {"nits", 11},
         {"lumens", 12}, {"lux", 13},   {"candelas", 14}, {"kpa", 15},      {"psi", 16},        {"newtons", 17},
         {"cfm", 18},    {"rpm", 19},   {"hertz", 20},    {"seconds", 21},  {"minutes", 22},    {"hours", 23},
         {"days", 24},   {"weeks", 25}, {"ohms", 49},     {"decibels", 54}, {"percentage", 65}, {"pascals", 66}});
}

TEST_F(WordTest, RateUnitsAreThoseOfCim) {
    expectCodes("rate-units", &CSensorInformation::rateUnits,
                {{"none", 0},
                 {"per-microsecond", 1},
                 {"per-millisecond", 2},
                 {"per-second", 3},
                 {"per-minute", 4},
                 {"per-hour", 5},
                 {"per-day", 6},
                 {"per-week", 7},
                 {"per-month", 8},
                 {"per-year", 9}});
}

TEST_F(SensorTest, CountMakesCopiesWithConsecutiveHandlesAndNumberedNames) {
    const auto chip =
        chipOn("[[sensor]]\nhandle = 0xfffffffd\ncount = 3\nname = \"P{}/{}\"\nreading = 1\naccuracy = 5\n");
    const CSensorHandleList handles = handlesOf(*chip);
    EXPECT_EQ(static_cast<const std::vector<unsigned>&>(handles),
              (std::vector<unsigned>{0xfffffffd, 0xfffffffe, 0xffffffff}));
    EXPECT_EQ(informationOf(*chip, 0xfffffffd).name, "P1/1");
    EXPECT_EQ(informationOf(*chip, 0xffffffff).name, "P3/3");
    EXPECT_EQ(informationOf(*chip, 0xffffffff).accuracy, 5);
}

TEST_F(SensorTest, NameWithoutCountIsTakenAsItStands) {
    const auto chip = chipOn("[[sensor]]\nhandle = 1\nname = \"P{}\"\nreading = 1\n");
    EXPECT_EQ(informationOf(*chip, 1).name, "P{}");
}

TEST_F(SensorTest, UnknownHandleIsAFailure) {
    const auto chip = chipOn(sensor("1", "1"));
    CSensorInformation information{};
    EXPECT_EQ(chip->GetSensorInformation(2, information), UNKNOWN_HANDLE);
    EXPECT_EQ(readStatus(*chip, 2), UNKNOWN_HANDLE);
}

TEST_F(SensorTest, ReadingWithoutThePresetIsAFailure) {
    const auto chip = chipOn(sensor("1", "1"));
    CSensorReading reading{5, 0};
    EXPECT_EQ(chip->ReadSensor(1, reading), WRONG_PRESET);
    EXPECT_EQ(reading.value, 5);
}

void expectNothingWorks(CChip& chip) {
    CSensorHandleList handles;
    CSensorInformation information{};
    CSensorReading reading{0, READING_PRESET};
    CSystemEventLog log{};
    EXPECT_EQ(chip.EnumerateSensorHandles(handles), NOT_INITIALISED);
    EXPECT_EQ(chip.GetSensorInformation(1, information), NOT_INITIALISED);
    EXPECT_EQ(chip.ReadSensor(1, reading), NOT_INITIALISED);
    EXPECT_EQ(chip.GetSystemEventLog(log), NOT_INITIALISED);
}

TEST_F(SensorTest, NothingWorksBeforeInitialise) {
    useScenario(sensor("1", "1"));
    CChip chip;
    expectNothingWorks(chip);
}

TEST_F(SensorTest, NothingWorksAfterAFailedInitialise) {
    useScenario(sensor("1", "1") + "[[fault]]\noperation = \"initialise\"\nstatus = 9\n");
    CChip chip;
    EXPECT_EQ(chip.Initialise(), 9U);
    expectNothingWorks(chip);
}

TEST_F(SensorTest, ChipKeepsTheScenarioThatItWasInitialisedWith) {
    const auto chip = chipOn(sensor("1", "11"));
    useScenario(sensor("1", "22"));
    EXPECT_EQ(chip->Initialise(), 0U);
    EXPECT_EQ(valueOf(*chip, 1), 11);
    EXPECT_EQ(valueOf(*initialisedChip(), 1), 22);
}

TEST_F(SensorTest, ChipsInSeveralThreadsDoNotDisturbEachOther) {
    useScenario(sensor("1", "{ kind = \"series\", values = [1, 2, 3], every = \"call\" }"));
    std::vector<std::vector<int>> values(4);
    std::vector<std::thread> threads;
    for (auto& result : values) threads.emplace_back([&result] { result = valuesOf(*initialisedChip(), 1, 4); });
    for (std::thread& thread : threads) thread.join();
    for (const auto& result : values) EXPECT_EQ(result, (std::vector<int>{1, 2, 3, 1}));
}

TEST_F(SensorTest, EventLogIsGivenWhole) {
    const auto chip = chipOn(R"([event-log]
valid = false
full = true
multiple-event-count-increment = 255
multiple-event-time-window = 17
lines = ["one", "", "drei ü"]
)");
    CSystemEventLog log{};
    log.lines = {"from before"};
    ASSERT_EQ(chip->GetSystemEventLog(log), 0U);
    EXPECT_EQ(log.logFull, 1);
    EXPECT_EQ(log.logValid, 0);
    EXPECT_EQ(log.multipleEventCountIncrement, 255);
    EXPECT_EQ(log.multipleEventTimeWindow, 17);
    EXPECT_EQ(log.lines, (std::vector<std::string>{"one", "", "drei ü"}));
}

TEST_F(SensorTest, EventLogNotGivenIsValidAndEmpty) {
    for (const char* text : {"", "[event-log]\n"}) {
        const auto chip = chipOn(text);
        CSystemEventLog log{};
        log.logFull = log.multipleEventCountIncrement = log.multipleEventTimeWindow = 9;
        ASSERT_EQ(chip->GetSystemEventLog(log), 0U);
        EXPECT_EQ(log.logFull, 0);
        EXPECT_EQ(log.logValid, 1);
        EXPECT_EQ(log.multipleEventCountIncrement, 0);
        EXPECT_EQ(log.multipleEventTimeWindow, 0);
        EXPECT_TRUE(log.lines.empty());
    }
}

}  // namespace
