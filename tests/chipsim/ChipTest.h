// A chip on a scenario of the test's own, which is a file in a directory of the test's own.
#ifndef ZELSENSORS_TESTS_CHIPTEST_H
#define ZELSENSORS_TESTS_CHIPTEST_H

#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "FakeClock.h"
#include "TemporaryDirectory.h"
#include "chip.h"

constexpr sscode FAULTY_SCENARIO = 0xE0000001;
constexpr sscode NOT_INITIALISED = 0xE0000002;
constexpr sscode UNKNOWN_HANDLE = 0xE0000003;
constexpr sscode WRONG_PRESET = 0xE0000004;

class ChipTest : public testing::Test {
  protected:
    ~ChipTest() override {
        unsetenv("ZELCHIP_SCENARIO");
        fakeclock::useReal();
    }

    std::string path() const { return m_directory.path("scenario.toml"); }

    // Names a file that holds the text.
    void useScenario(const std::string& text) const {
        setenv("ZELCHIP_SCENARIO", m_directory.write("scenario.toml", text).c_str(), 1);
    }

    // An initialised chip on that scenario.
    std::unique_ptr<CChip> chipOn(const std::string& text) const {
        useScenario(text);
        return initialisedChip();
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

    static sscode readStatus(CChip& chip, unsigned handle) {
        CSensorReading reading{0, READING_PRESET};
        return chip.ReadSensor(handle, reading);
    }

    static int valueOf(CChip& chip, unsigned handle) {
        CSensorReading reading{0, READING_PRESET};
        EXPECT_EQ(chip.ReadSensor(handle, reading), 0U);
        return reading.value;
    }

    static std::vector<int> valuesOf(CChip& chip, unsigned handle, unsigned count) {
        std::vector<int> values;
        for (unsigned i = 0; i < count; ++i) values.push_back(valueOf(chip, handle));
        return values;
    }

    // A sensor with the least that it needs.
    static std::string sensor(const std::string& handle, const std::string& reading) {
        return "[[sensor]]\nhandle = " + handle + "\nname = \"S\"\nreading = " + reading + "\n";
    }

  private:
    TemporaryDirectory m_directory;
};

#endif
