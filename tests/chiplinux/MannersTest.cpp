// The library is a guest: what it must leave alone in its host.
#include <dlfcn.h>
#include <sensors/error.h>
#include <sensors/sensors.h>
#include <sys/stat.h>

#include <clocale>
#include <filesystem>
#include <fstream>
#include <thread>

#include "LinuxChipTest.h"
#include "OutputCapture.h"

namespace {

namespace fs = std::filesystem;
using sensortree::addI2c;
using testing::ElementsAre;
using testing::Pair;
using testing::UnorderedElementsAre;

class MannersTest : public LinuxChipTest {
  protected:
    void SetUp() override {
        LinuxChipTest::SetUp();
        if (IsSkipped()) return;
        addI2c(0, "lm75", 0, 0x48, {{"temp1_input", "25500"}});
        addI2c(1, "lm85", 0, 0x2e, {{"in0_input", "3000"}, {"in1_input", "1000"}});
    }
};

TEST_F(MannersTest, LocaleIsKeptAlsoWhileSettingsAreRead) {
    ASSERT_NE(std::setlocale(LC_ALL, "C.UTF-8"), nullptr);
    const std::string before = std::setlocale(LC_ALL, nullptr);
    ASSERT_EQ(mkfifo("/etc/sensors3.conf", 0600), 0);
    std::unique_ptr<CChip> chip;
    std::thread starter([&] { chip = initialisedChip(); });
    {
        std::ofstream settings("/etc/sensors3.conf");
        // More than a pipe holds: libsensors is at work on it once it is written.
        for (int i = 0; i < 3000; ++i) settings << "# a comment of some fifty characters, over and over again\n";
        settings.flush();
        EXPECT_EQ(before, std::setlocale(LC_ALL, nullptr));
        settings << "chip \"lm75-*\"\n label temp1 \"Board\"\n";
    }
    starter.join();
    EXPECT_EQ(before, std::setlocale(LC_ALL, nullptr));
    EXPECT_EQ(valuesOf(*chip).count("Board"), 1U);
    std::setlocale(LC_ALL, "C");
}

TEST_F(MannersTest, MistakesInTheSettingsCostTheirBlockAloneAndNobodyHearsOfThem) {
    sandbox::writeLibsensorsConfiguration(
        "chip \"lm85-*\"\n label in0 \"+3.3V\"\n"
        "chip \"lm85-*\"\n compute in1 @ * * 2, @\n nonsense\n"
        "chip \"lm75-*\"\n label temp1 \"Board\"\n");
    OutputCapture output(STDOUT_FILENO);
    OutputCapture error(STDERR_FILENO);
    const auto chip = initialisedChip();
    const auto values = valuesOf(*chip);
    EXPECT_EQ(output.take(), "");
    EXPECT_EQ(error.take(), "");
    EXPECT_THAT(values, UnorderedElementsAre(Pair("+3.3V", 3000), Pair("lm85 in1", 1000), Pair("Board", 25500)));
}

int chipsOfTheHost() {
    int number = 0;
    int count = 0;
    while (sensors_get_detected_chips(nullptr, &number) != nullptr) ++count;
    return count;
}

double valueOfTheHost() {
    int number = 0;
    double value = 0;
    const sensors_chip_name* chip = sensors_get_detected_chips(nullptr, &number);
    EXPECT_EQ(chip == nullptr ? -1 : sensors_get_value(chip, 0, &value), 0);
    return value;
}

TEST_F(MannersTest, HostsOwnUseOfLibsensorsIsLeftAlone) {
    const auto fatal = sensors_fatal_error;
    const auto mistake = sensors_parse_error_wfn;
    ASSERT_EQ(sensors_init(nullptr), 0);
    ASSERT_EQ(chipsOfTheHost(), 2);
    const double value = valueOfTheHost();
    {
        const auto chip = initialisedChip();
        EXPECT_EQ(handlesOf(*chip).size(), 3U);
        EXPECT_EQ(chipsOfTheHost(), 2);
        EXPECT_EQ(valueOfTheHost(), value);
    }
    EXPECT_EQ(chipsOfTheHost(), 2);
    EXPECT_EQ(valueOfTheHost(), value);
    EXPECT_EQ(sensors_fatal_error, fatal);
    EXPECT_EQ(sensors_parse_error_wfn, mistake);
    sensors_cleanup();
}

TEST_F(MannersTest, HostsCleanupTakesNothingAway) {
    ASSERT_EQ(sensors_init(nullptr), 0);
    const auto chip = initialisedChip();
    const auto values = valuesOf(*chip);
    sensors_cleanup();
    EXPECT_EQ(chipsOfTheHost(), 0);
    EXPECT_EQ(valuesOf(*chip), values);
}

TEST_F(MannersTest, TwoChipsAreApart) {
    const auto first = initialisedChip();
    {
        const auto second = initialisedChip();
        EXPECT_EQ(valuesOf(*first), valuesOf(*second));
    }
    EXPECT_EQ(valuesOf(*first).size(), 3U);
    EXPECT_EQ(first->Initialise(), 0U);
    EXPECT_EQ(valuesOf(*first).size(), 3U);
}

TEST_F(MannersTest, EveryThreadMayRead) {
    const auto chip = initialisedChip();
    const auto expected = valuesOf(*chip);
    for (int i = 0; i < 100; ++i) std::thread([&] { EXPECT_EQ(valuesOf(*chip), expected); }).join();
}

TEST_F(MannersTest, SettingsThatAreRefusedAsAWholeAreAFailure) {
    sandbox::writeLibsensorsConfiguration("chip \"lm75-i2c-7-48\"\n label temp1 \"Of a bus that is not declared\"\n");
    OutputCapture error(STDERR_FILENO);
    CChip chip;
    EXPECT_EQ(chip.Initialise(), 0xE1000009U);
    EXPECT_EQ(error.take(), "");
    sandbox::writeLibsensorsConfiguration("");
    EXPECT_EQ(chip.Initialise(), 0U);
}

TEST_F(MannersTest, KernelsListThatCannotBeReadIsAFailure) {
    fs::remove_all("/sys/class/hwmon");
    std::ofstream("/sys/class/hwmon") << "no directory";
    CChip chip;
    EXPECT_EQ(chip.Initialise(), 0xE1000004U);
    CSensorHandleList handles;
    EXPECT_EQ(chip.EnumerateSensorHandles(handles), 0xE1000001U);
}

}  // namespace
