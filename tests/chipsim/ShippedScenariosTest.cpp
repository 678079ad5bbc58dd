// The scenarios that come with the library do what they are for.
#include <set>

#include "ChipTest.h"
#include "FreshProcess.h"

namespace {

class ShippedScenariosTest : public ChipTest {
  protected:
    static void useShipped(const std::string& name) {
        setenv("ZELCHIP_SCENARIO", (SCENARIO_DIRECTORY "/" + name).c_str(), 1);
    }

    static std::unique_ptr<CChip> shippedChip(const std::string& name) {
        useShipped(name);
        return initialisedChip();
    }

    static void setSeconds(long seconds) { fakeclock::set({seconds, 0}); }

    // The least and the greatest reading within so many seconds.
    static std::pair<int, int> span(CChip& chip, unsigned handle, long seconds) {
        std::pair<int, int> ends{2147483647, NOT_AVAILABLE};
        for (long second = 0; second < seconds; ++second) {
            setSeconds(1794000000 + second);
            const int value = valueOf(chip, handle);
            ends = {std::min(ends.first, value), std::max(ends.second, value)};
        }
        return ends;
    }

    static std::vector<std::string> logLines(CChip& chip) {
        CSystemEventLog log{};
        EXPECT_EQ(chip.GetSystemEventLog(log), 0U);
        return log.lines;
    }
};

TEST_F(ShippedScenariosTest, AllAreTestedHere) {
    std::set<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(SCENARIO_DIRECTORY))
        names.insert(entry.path().filename());
    EXPECT_EQ(names, (std::set<std::string>{"dying-sensor.toml", "grebel-drives.toml", "healthy.toml", "no-driver.toml",
                                            "overheating.toml", "thousand-sensors.toml"}));
}

TEST_F(ShippedScenariosTest, HealthyTerminalStaysInsideItsLimits) {
    const auto chip = shippedChip("healthy.toml");
    for (const unsigned handle : handlesOf(*chip)) {
        const CSensorInformation information = informationOf(*chip, handle);
        const auto [least, greatest] = span(*chip, handle, 2000);
        for (const int lower : {information.lowerThresholdNonCritical, information.lowerThresholdCritical,
                                information.lowerThresholdFatal})
            EXPECT_GT(least, lower) << information.name;
        for (const int upper : {information.upperThresholdNonCritical, information.upperThresholdCritical,
                                information.upperThresholdFatal})
            if (upper != NOT_AVAILABLE) {
                EXPECT_LT(greatest, upper) << information.name;
            }
        EXPECT_GE(least, information.minReadable) << information.name;
        EXPECT_LE(greatest, information.maxReadable) << information.name;
    }
}

TEST_F(ShippedScenariosTest, HealthyTerminalHasSensorsOfFiveTypesAndALog) {
    const auto chip = shippedChip("healthy.toml");
    std::set<int> types;
    for (const unsigned handle : handlesOf(*chip)) types.insert(informationOf(*chip, handle).sensorType);
    EXPECT_EQ(types, (std::set<int>{2, 3, 4, 5, 7}));
    EXPECT_EQ(logLines(*chip).size(), 29U);
}

TEST_F(ShippedScenariosTest, HealthyTerminalIsTheOneBuiltIn) {
    const auto shipped = shippedChip("healthy.toml");
    setenv("ZELCHIP_SCENARIO", "", 1);
    const auto withEmptyVariable = initialisedChip();
    unsetenv("ZELCHIP_SCENARIO");
    const auto builtIn = initialisedChip();
    setSeconds(1794000123);
    const CSensorHandleList handles = handlesOf(*shipped);
    EXPECT_EQ(handlesOf(*builtIn), handles);
    EXPECT_EQ(handlesOf(*withEmptyVariable), handles);
    for (const unsigned handle : handles) {
        EXPECT_EQ(informationOf(*builtIn, handle).name, informationOf(*shipped, handle).name);
        EXPECT_EQ(valueOf(*builtIn, handle), valueOf(*shipped, handle));
    }
    EXPECT_EQ(logLines(*builtIn), logLines(*shipped));
}

TEST_F(ShippedScenariosTest, OverheatingTerminalCrossesItsThresholds) {
    const auto chip = shippedChip("overheating.toml");
    const auto cpu = span(*chip, 0x10, 120);
    EXPECT_LT(cpu.first, 85);
    EXPECT_GT(cpu.second, 105);
    const auto board = span(*chip, 0x11, 120);
    EXPECT_LT(board.first, 60);
    EXPECT_GT(board.second, 80);
    const auto cpuFan = span(*chip, 0x40, 120);
    EXPECT_GT(cpuFan.second, 1200);
    EXPECT_LT(cpuFan.first, 600);
}

TEST_F(ShippedScenariosTest, OverheatingTerminalAlwaysHasSomethingToShow) {
    const auto chip = shippedChip("overheating.toml");
    EXPECT_GT(span(*chip, 0x13, 120).first, informationOf(*chip, 0x13).upperThresholdCritical);
    EXPECT_LT(span(*chip, 0x41, 120).second, informationOf(*chip, 0x41).lowerThresholdFatal);
}

TEST_F(ShippedScenariosTest, DyingSensorFailsFromItsFourthReadingOn) {
    const auto chip = shippedChip("dying-sensor.toml");
    EXPECT_EQ(valuesOf(*chip, 0x40, 3), (std::vector<int>{2640, 1110, 420}));
    for (int i = 0; i < 5; ++i) EXPECT_EQ(readStatus(*chip, 0x40), 0x00010005U);
    for (const unsigned handle : handlesOf(*chip))
        if (handle != 0x40) {
            EXPECT_EQ(readStatus(*chip, handle), 0U);
        }
}

TEST_F(ShippedScenariosTest, MissingDriverFailsInitialise) {
    useShipped("no-driver.toml");
    CChip chip;
    EXPECT_EQ(chip.Initialise(), 0x00010002U);
}

TEST_F(ShippedScenariosTest, ThousandSensorsAreAThousandThatCanBeRead) {
    const auto chip = shippedChip("thousand-sensors.toml");
    const CSensorHandleList handles = handlesOf(*chip);
    ASSERT_EQ(handles.size(), 1000U);
    std::set<int> values;
    for (std::size_t i = 0; i < handles.size(); ++i) {
        EXPECT_EQ(handles[i], 0x1000U + i);
        EXPECT_EQ(informationOf(*chip, handles[i]).name, "Probe " + std::to_string(i + 1));
        values.insert(valueOf(*chip, handles[i]));
    }
    EXPECT_GT(values.size(), 100U);
}

TEST_F(ShippedScenariosTest, GrebelTerminalIsAGrebelWithSensors) {
    useShipped("grebel-drives.toml");
    const ProcessOutcome outcome = runInFreshProcess([] {
        EXPECT_TRUE(CPOSSystem::s_instance.IsGrebel());
        EXPECT_FALSE(CPOSSystem::s_instance.IsZan());
    });
    EXPECT_EQ(outcome.exitCode, 0) << outcome.standardError;
    EXPECT_EQ(handlesOf(*initialisedChip()).size(), 4U);
}

}  // namespace
