// The sensors that a tree of the kernel's hardware monitoring becomes.
#include <sys/stat.h>

#include <filesystem>
#include <map>
#include <set>
#include <thread>

#include "LinuxChipTest.h"

namespace {

using sensortree::add;
using sensortree::addAdapter;
using sensortree::addI2c;
using sensortree::addVirtual;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;
using testing::UnorderedElementsAre;

class SensorsTest : public LinuxChipTest {
  protected:
    void SetUp() override {
        LinuxChipTest::SetUp();
        if (!IsSkipped()) std::filesystem::create_directories("/sys/class/hwmon");
    }
};

TEST_F(SensorsTest, TemperatureHasItsRow) {
    addI2c(0, "lm90", 0, 0x4c,
           {{"temp1_input", "25500"},
            {"temp1_label", "CPU"},
            {"temp1_min", "-5000"},
            {"temp1_max", "80000"},
            {"temp1_max_hyst", "75000"},
            {"temp1_lcrit", "-20000"},
            {"temp1_crit", "100000"},
            {"temp1_crit_hyst", "90000"},
            {"temp1_emergency", "110500"}});
    const auto chip = initialisedChip();
    const unsigned handle = onlyHandle(*chip);
    const CSensorInformation information = informationOf(*chip, handle);
    EXPECT_EQ(information.name, "CPU");
    EXPECT_EQ(information.sensorType, 2);
    EXPECT_EQ(information.baseUnits, 2);
    EXPECT_EQ(information.unitModifier, -3);
    EXPECT_EQ(information.lowerThresholdNonCritical, -5000);
    EXPECT_EQ(information.lowerThresholdCritical, -20000);
    EXPECT_EQ(information.upperThresholdNonCritical, 80000);
    EXPECT_EQ(information.upperThresholdCritical, 100000);
    EXPECT_EQ(information.upperThresholdFatal, 110500);
    EXPECT_EQ(information.hysteresis, 5000);
    EXPECT_EQ(valueOf(*chip, handle), 25500);
}

TEST_F(SensorsTest, VoltageCurrentAndPowerHaveTheirRows) {
    for (const std::string feature : {"in1", "curr1"}) {
        sandbox::reset();
        addI2c(0, "max16065", 0, 0x50,
               {{feature + "_input", "3322"},
                {feature + "_min", "3000"},
                {feature + "_max", "3600"},
                {feature + "_lcrit", "2800"},
                {feature + "_crit", "3800"}});
        const auto chip = initialisedChip();
        const CSensorInformation information = informationOf(*chip, onlyHandle(*chip));
        EXPECT_EQ(information.sensorType, feature == "in1" ? 3 : 4);
        EXPECT_EQ(information.lowerThresholdNonCritical, 3000);
        EXPECT_EQ(information.lowerThresholdCritical, 2800);
        EXPECT_EQ(information.upperThresholdNonCritical, 3600);
        EXPECT_EQ(information.upperThresholdCritical, 3800);
        EXPECT_EQ(information.upperThresholdFatal, NO_VALUE);
        EXPECT_EQ(information.hysteresis, NO_VALUE);
        EXPECT_EQ(valueOf(*chip, onlyHandle(*chip)), 3322);
    }
    sandbox::reset();
    addI2c(0, "ltc4215", 0, 0x44,
           {{"power1_input", "43210000"},
            {"power1_min", "1000000"},
            {"power1_max", "90000000"},
            {"power1_lcrit", "500000"},
            {"power1_crit", "95000000"}});
    const auto chip = initialisedChip();
    const CSensorInformation information = informationOf(*chip, onlyHandle(*chip));
    EXPECT_EQ(information.sensorType, 1);
    EXPECT_EQ(information.otherSensorTypeDescription, "Power");
    EXPECT_EQ(information.baseUnits, 7);
    EXPECT_EQ(information.lowerThresholdNonCritical, 1000);
    EXPECT_EQ(information.lowerThresholdCritical, 500);
    EXPECT_EQ(information.upperThresholdNonCritical, 90000);
    EXPECT_EQ(information.upperThresholdCritical, 95000);
    EXPECT_EQ(valueOf(*chip, onlyHandle(*chip)), 43210);
}

TEST_F(SensorsTest, FanAndHumidityHaveTheirRows) {
    addI2c(0, "sht21", 0, 0x40, {{"humidity1_input", "49664"}});
    addI2c(1, "lm85", 0, 0x2e, {{"fan1_input", "1318"}, {"fan1_min", "300"}, {"fan1_max", "5000"}});
    const auto chip = initialisedChip();
    const auto handles = handlesByName(*chip);
    const CSensorInformation fan = informationOf(*chip, handles.at("lm85 fan1"));
    EXPECT_EQ(fan.sensorType, 5);
    EXPECT_EQ(fan.baseUnits, 19);
    EXPECT_EQ(fan.unitModifier, 0);
    EXPECT_EQ(fan.lowerThresholdNonCritical, 300);
    EXPECT_EQ(fan.upperThresholdNonCritical, 5000);
    const CSensorInformation humidity = informationOf(*chip, handles.at("sht21 humidity1"));
    EXPECT_EQ(humidity.sensorType, 9);
    EXPECT_EQ(humidity.baseUnits, 65);
    EXPECT_THAT(valuesOf(*chip), UnorderedElementsAre(Pair("lm85 fan1", 1318), Pair("sht21 humidity1", 49664)));
}

TEST_F(SensorsTest, PowerIsItsInputElseItsAverage) {
    addI2c(0, "meter", 0, 0x44,
           {{"power1_input", "1000000"},
            {"power1_average", "2000000"},
            {"power2_average", "3000000"},
            {"power3_max", "4000000"}});
    EXPECT_THAT(valuesOf(*initialisedChip()),
                UnorderedElementsAre(Pair("meter power1", 1000), Pair("meter power2", 3000)));
}

TEST_F(SensorsTest, OtherFeaturesAreNoSensors) {
    addI2c(0, "lm85", 0, 0x2e,
           {{"energy1_input", "1000000"},
            {"intrusion0_alarm", "1"},
            {"cpu0_vid", "1500"},
            {"beep_enable", "1"},
            {"pwm1", "128"},
            {"temp1_max", "80000"},
            {"in3_input", "5000"}});
    EXPECT_THAT(namesOf(*initialisedChip()), ElementsAre("lm85 in3"));
}

TEST_F(SensorsTest, LimitThatCannotBeReadIsNotAvailable) {
    const auto directory = addI2c(0, "lm75", 0, 0x48, {{"temp1_input", "25500"}, {"temp1_crit", "90000"}});
    sensortree::write(directory, "temp1_max", "");
    std::filesystem::resize_file(directory / "temp1_max", 0);
    const auto chip = initialisedChip();
    const CSensorInformation information = informationOf(*chip, onlyHandle(*chip));
    EXPECT_EQ(information.upperThresholdNonCritical, NO_VALUE);
    EXPECT_EQ(information.upperThresholdCritical, 90000);
}

TEST_F(SensorsTest, SensorThatFailsAtFirstIsNotPublished) {
    const auto directory = addI2c(0, "lm85", 0, 0x2e, {{"in0_input", ""}, {"in1_input", "3300"}});
    std::filesystem::resize_file(directory / "in0_input", 0);
    EXPECT_THAT(namesOf(*initialisedChip()), ElementsAre("lm85 in1"));
}

TEST_F(SensorsTest, SensorWhoseFaultFlagIsSetIsNotPublished) {
    addI2c(0, "lm90", 0, 0x4c,
           {{"temp1_input", "25000"},
            {"temp1_fault", "0"},
            {"temp2_input", "-128000"},
            {"temp2_fault", "1"},
            {"fan1_input", "0"},
            {"fan1_fault", "1"},
            {"fan2_input", "0"},
            {"fan2_fault", "0"}});
    EXPECT_THAT(namesOf(*initialisedChip()), ElementsAre("lm90 fan2", "lm90 temp1"));
}

TEST_F(SensorsTest, FanWithoutACountIsNotAvailable) {
    addI2c(0, "lm85", 0, 0x2e, {{"fan1_input", "-1"}});
    const auto chip = initialisedChip();
    EXPECT_EQ(valueOf(*chip, onlyHandle(*chip)), NO_VALUE);
}

TEST_F(SensorsTest, ValueBeyond32BitsIsNotAvailableAndNeverWrapped) {
    addI2c(0, "x", 0, 0x2e,
           {{"in0_input", "2147483647"},
            {"in1_input", "2147483648"},
            {"in2_input", "-2147483648"},
            {"in3_input", "99999999999999999999999999999999"},
            {"power1_input", "2147483648000"},
            {"fan1_input", "4294967296"}});
    EXPECT_THAT(valuesOf(*initialisedChip()),
                UnorderedElementsAre(Pair("x in0", 2147483647), Pair("x in1", NO_VALUE), Pair("x in2", NO_VALUE),
                                     Pair("x in3", NO_VALUE), Pair("x power1", NO_VALUE), Pair("x fan1", NO_VALUE)));
}

TEST_F(SensorsTest, MovingValuesAreShownAtOnce) {
    const auto directory = addI2c(0, "lm75", 0, 0x48, {{"temp1_input", "25500"}});
    const auto chip = initialisedChip();
    const unsigned handle = onlyHandle(*chip);
    for (const int value : {26000, -1000, 0}) {
        sensortree::write(directory, "temp1_input", std::to_string(value));
        EXPECT_EQ(valueOf(*chip, handle), value);
    }
}

TEST_F(SensorsTest, MachinesSettingsLabelComputeAndIgnore) {
    sandbox::writeLibsensorsConfiguration(
        "bus \"i2c-0\" \"Adapter\"\n"
        "chip \"lm85-*\"\n label in0 \"+12V\"\n compute in0 @ * 4, @ / 4\n ignore fan1\n"
        "chip \"lm75-i2c-0-48\"\n label temp1 \"Board\"\n compute temp1 @ - 1.25, @ + 1.25\n");
    addAdapter(0, "Adapter");
    addI2c(0, "lm75", 0, 0x48, {{"temp1_input", "25500"}, {"temp1_max", "80000"}});
    addI2c(1, "lm85", 0, 0x2e, {{"in0_input", "3000"}, {"in0_max", "3500"}, {"fan1_input", "900"}});
    const auto chip = initialisedChip();
    EXPECT_THAT(valuesOf(*chip), UnorderedElementsAre(Pair("+12V", 12000), Pair("Board", 24250)));
    EXPECT_EQ(informationOf(*chip, handlesByName(*chip).at("+12V")).upperThresholdNonCritical, 14000);
    EXPECT_EQ(informationOf(*chip, handlesByName(*chip).at("Board")).upperThresholdNonCritical, 78750);
}

TEST_F(SensorsTest, ComputeThatFailsIsASensorThatFails) {
    sandbox::writeLibsensorsConfiguration(
        "chip \"lm85-*\"\n compute in0 @ / 0, @\n compute in1 in9_input, @\n compute in2 @ + in3_input, @ - "
        "in3_input\n");
    addI2c(0, "lm85", 0, 0x2e,
           {{"in0_input", "3000"}, {"in1_input", "3000"}, {"in2_input", "3000"}, {"in3_input", "100"}});
    EXPECT_THAT(valuesOf(*initialisedChip()), UnorderedElementsAre(Pair("lm85 in2", 3100), Pair("lm85 in3", 100)));
}

TEST_F(SensorsTest, LabelsOfAnyBytesBecomePrintableNames) {
    const auto directory = addI2c(0, "x", 0, 0x2e, {{"in0_input", "1"}, {"in1_input", "2"}, {"in2_input", "3"}});
    sensortree::write(directory, "in0_label", "5V \x01\xff");
    sensortree::write(directory, "in1_label", "\xc2\xb5V");
    sensortree::write(directory, "in2_label", std::string(3000, 'L'));
    const std::vector<std::string> names = namesOf(*initialisedChip());
    ASSERT_EQ(names.size(), 3U);
    EXPECT_EQ(names[0], "5V ??");
    EXPECT_EQ(names[1], "\xc2\xb5V");
    EXPECT_THAT(names[2], testing::StartsWith("LLLL"));
}

TEST_F(SensorsTest, ListIsInTheOrderOfPrefixPlaceAndFeatureWhateverTheKernelsNumbers) {
    addI2c(2, "a", 0, 0x2e, {{"in10_input", "1"}, {"in2_input", "1"}, {"fan1_input", "1"}});
    addI2c(0, "b", 0, 0x10, {{"temp1_input", "1"}});
    addI2c(1, "b", 0, 0x9, {{"temp2_input", "1"}});
    EXPECT_THAT(namesOf(*initialisedChip()), ElementsAre("a fan1", "a in2", "a in10", "b temp2", "b temp1"));
}

TEST_F(SensorsTest, ThousandSensorsHaveAHandleEach) {
    for (int chip = 0; chip < 50; ++chip) {
        sensortree::Attributes attributes;
        for (int i = 0; i < 20; ++i) attributes["in" + std::to_string(i) + "_input"] = std::to_string(chip * 100 + i);
        addI2c(chip, "many", chip / 10, static_cast<unsigned>(0x20 + chip % 10), attributes);
    }
    for (int adapter = 0; adapter < 5; ++adapter) addAdapter(adapter, "Adapter of " + std::string(1, "ABCDE"[adapter]));
    const auto chip = initialisedChip();
    const CSensorHandleList handles = handlesOf(*chip);
    const std::set<unsigned> different(handles.begin(), handles.end());
    EXPECT_EQ(different.size(), 1000U);
    EXPECT_GE(*different.begin(), 0x80000000U);
    std::set<int> values;
    for (const unsigned handle : handles) values.insert(valueOf(*chip, handle));
    EXPECT_EQ(values.size(), 1000U);
}

// The names that people and programs wrote down.
TEST_F(SensorsTest, HandlesAreTheSameForEver) {
    addAdapter(3, "SMBus I801 adapter at 0400");
    addI2c(5, "lm75", 3, 0x48, {{"temp1_input", "1"}});
    add(0, "nvme", "pci", "pci0000:00/0000:00:1d.0/0000:02:00.0", {{"temp1_input", "2"}});
    add(1, "coretemp", "platform", "platform/coretemp.0", {{"temp2_input", "3"}});
    add(2, "power_meter", "acpi", "LNXSYSTM:00/ACPI000D:00", {{"power1_average", "4000"}});
    addVirtual(3, "soc", {{"temp1_input", "5"}});
    const auto chip = initialisedChip();
    EXPECT_THAT(handlesByName(*chip),
                UnorderedElementsAre(Pair("lm75 temp1", 0x8c5d2662U), Pair("nvme temp1", 0x9c304132U),
                                     Pair("coretemp temp2", 0xa0726350U), Pair("power_meter power1", 0x9e9ce0e7U),
                                     Pair("soc temp1", 0x91a42816U)));
}

// The same five, as another boot may number them.
void bootAnew(int boot) {
    sandbox::reset();
    const auto number = [boot](int chip) { return (chip * 7 + boot * 3) % 11; };
    addAdapter(boot, "SMBus I801 adapter at 0400");
    addI2c(number(0), "lm75", boot, 0x48, {{"temp1_input", "1"}});
    addI2c(number(1), "lm75", boot, 0x4a, {{"temp1_input", "2"}});
    add(number(2), "nvme", "pci", "pci0000:00/0000:02:00.0", {{"temp1_input", "3"}});
    add(number(3), "nvme", "pci", "pci0000:00/0000:03:00.0", {{"temp1_input", "4"}});
    add(number(4), "corsair", "hid", "usb1/1-4/1-4:1.0/0003:1E71:2007.000" + std::to_string(boot),
        {{"fan1_input", "5"}});
    add(number(5), "drivetemp", "scsi",
        "pci0000:00/0000:00:17.0/ata1/host" + std::to_string(boot) + "/target" + std::to_string(boot) + ":0:0/" +
            std::to_string(boot) + ":0:0:0",
        {{"temp1_input", "6"}});
}

TEST_F(SensorsTest, HandleIsTheSameSensorsAfterEachBoot) {
    std::map<unsigned, int> first;
    for (int boot = 0; boot < 5; ++boot) {
        bootAnew(boot);
        const auto chip = initialisedChip();
        std::map<unsigned, int> values;
        for (const unsigned handle : handlesOf(*chip)) values[handle] = valueOf(*chip, handle);
        EXPECT_EQ(values.size(), 6U);
        if (boot == 0) first = values;
        EXPECT_EQ(values, first) << boot;
    }
}

TEST_F(SensorsTest, SensorThatCannotBeReadTodayChangesNoOthersHandleOrName) {
    const auto first = addVirtual(0, "soc", {{"temp1_input", "1"}});
    addVirtual(1, "soc", {{"temp1_input", "2"}, {"temp2_input", "3"}});
    const auto before = handlesOf(*initialisedChip());
    std::filesystem::resize_file(first / "temp1_input", 0);
    const auto chip = initialisedChip();
    EXPECT_THAT(handlesOf(*chip), ElementsAre(before[1], before[2]));
    EXPECT_EQ(valueOf(*chip, before[1]), 2);
    EXPECT_EQ(valueOf(*chip, before[2]), 3);
}

TEST_F(SensorsTest, MachineWithoutSensorsHasNone) {
    EXPECT_THAT(handlesOf(*initialisedChip()), IsEmpty());
    std::filesystem::remove_all("/sys/class/hwmon");
    EXPECT_THAT(handlesOf(*initialisedChip()), IsEmpty());
}

TEST_F(SensorsTest, UnknownHandlesFail) {
    addI2c(0, "lm75", 0, 0x48, {{"temp1_input", "25500"}});
    const auto chip = initialisedChip();
    const unsigned known = onlyHandle(*chip);
    for (const unsigned handle : {0U, 1U, 9U, 0x80000000U, known + 1, known & 0x7fffffff}) {
        CSensorReading reading{17, READING_PRESET};
        EXPECT_EQ(chip->ReadSensor(handle, reading), 0xE1000002U);
        EXPECT_EQ(reading.value, 17);
        CSensorInformation information{};
        information.name = "as it was";
        EXPECT_EQ(chip->GetSensorInformation(handle, information), 0xE1000002U);
        EXPECT_EQ(information.name, "as it was");
    }
}

TEST_F(SensorsTest, NothingWorksBeforeInitialise) {
    CChip chip;
    CSensorHandleList handles;
    CSensorInformation information{};
    CSensorReading reading{0, READING_PRESET};
    CSystemEventLog log{};
    EXPECT_EQ(chip.EnumerateSensorHandles(handles), 0xE1000001U);
    EXPECT_EQ(chip.GetSensorInformation(1, information), 0xE1000001U);
    EXPECT_EQ(chip.ReadSensor(1, reading), 0xE1000001U);
    EXPECT_EQ(chip.GetSystemEventLog(log), 0xE1000001U);
}

TEST_F(SensorsTest, HandlesAreAppended) {
    addI2c(0, "lm75", 0, 0x48, {{"temp1_input", "25500"}});
    const auto chip = initialisedChip();
    CSensorHandleList handles;
    handles.push_back(7);
    EXPECT_EQ(chip->EnumerateSensorHandles(handles), 0U);
    EXPECT_EQ(chip->EnumerateSensorHandles(handles), 0U);
    EXPECT_EQ(handles.size(), 3U);
    EXPECT_EQ(handles[0], 7U);
}

TEST_F(SensorsTest, SlowReadIsWaitedFor) {
    const auto directory = addI2c(0, "lm85", 0, 0x2e, {{"in0_input", "1000"}});
    const auto chip = initialisedChip();
    const unsigned handle = onlyHandle(*chip);
    // A file whose reader waits for its writer, as one does for a slow bus.
    std::filesystem::remove(directory / "in0_input");
    ASSERT_EQ(mkfifo((directory / "in0_input").c_str(), 0600), 0);
    std::thread driver([&] { sensortree::write(directory, "in0_input", "2000"); });
    EXPECT_EQ(valueOf(*chip, handle), 2000);
    driver.join();
}

TEST_F(SensorsTest, TerminalIsOfNoModel) {
    EXPECT_FALSE(CPOSSystem::s_instance.IsGrebel());
    EXPECT_FALSE(CPOSSystem::s_instance.IsZan());
}

}  // namespace
