// A chip on a made-up tree of sensors.
#ifndef ZELSENSORS_TESTS_CHIPLINUX_LINUXCHIPTEST_H
#define ZELSENSORS_TESTS_CHIPLINUX_LINUXCHIPTEST_H

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <climits>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "Sandbox.h"
#include "SensorTree.h"
#include "Status.h"
#include "chip.h"

constexpr int NO_VALUE = INT_MIN;

class LinuxChipTest : public testing::Test {
  protected:
    void SetUp() override {
        REQUIRE_SANDBOX();
        sandbox::hideHardware();
    }

    static std::unique_ptr<CChip> initialisedChip() {
        auto chip = std::make_unique<CChip>();
        EXPECT_EQ(chip->Initialise(), 0U);
        return chip;
    }

    static CSensorHandleList handlesOf(CChip& chip) {
        CSensorHandleList handles;
        EXPECT_EQ(chip.EnumerateSensorHandles(handles), 0U);
        return handles;
    }

    static CSensorInformation informationOf(CChip& chip, unsigned handle) {
        CSensorInformation information{};
        EXPECT_EQ(chip.GetSensorInformation(handle, information), 0U);
        return information;
    }

    static int valueOf(CChip& chip, unsigned handle) {
        CSensorReading reading{7654321, READING_PRESET};
        EXPECT_EQ(chip.ReadSensor(handle, reading), 0U);
        return reading.value;
    }

    static std::vector<std::string> namesOf(CChip& chip) {
        std::vector<std::string> names;
        for (const unsigned handle : handlesOf(chip)) names.push_back(informationOf(chip, handle).name);
        return names;
    }

    static std::map<std::string, unsigned> handlesByName(CChip& chip) {
        std::map<std::string, unsigned> handles;
        for (const unsigned handle : handlesOf(chip)) handles[informationOf(chip, handle).name] = handle;
        return handles;
    }

    // The handle of the only sensor; 0 where there are more or none.
    static unsigned onlyHandle(CChip& chip) {
        const CSensorHandleList handles = handlesOf(chip);
        EXPECT_EQ(handles.size(), 1U);
        return handles.size() == 1 ? handles.front() : 0;
    }

    // The values of all sensors, by name.
    static std::map<std::string, int> valuesOf(CChip& chip) {
        std::map<std::string, int> values;
        for (const auto& [name, handle] : handlesByName(chip)) values[name] = valueOf(chip, handle);
        return values;
    }
};

#endif
