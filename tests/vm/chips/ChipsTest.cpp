// Chips, a thermal zone, a power meter and a drive on the kernel's real drivers: what they hold, how it moves, and what
// comes of it while they are gone; the firmware's event log in memory.
#include "HostAnswer.h"
#include "LogStructure.h"
#include "Sensors.h"

namespace {

using nlohmann::json;
using testing::Contains;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::EndsWith;
using testing::IsEmpty;

const char TEN_SECONDS_LATER[] = "ten seconds later";

const char SYSTEM_BOOT[] = "0001 2026-02-17 06:56:45 System boot";
const char POST_ERROR[] = "0002 2026-02-17 06:56:51 POST error (data 02 01 00 00)";
const char MEMORY_ERROR[] = "0003 1985-12-31 23:59:59 Single-bit ECC memory error (data 12 00)";
const char OEM_RECORD[] = "0004 2024-02-29 12:00:00 OEM type 0xe0 (data 7f)";

class ChipsTest : public GuestTest {
  protected:
    static void SetUpTestSuite() {
        const std::string header = bytesOf("00 00 00 00 00 60 01 00 00 00 00 00 00 00 00 01");
        const std::string records = bytesOf(
            "17 08 26 02 17 06 56 45 "
            "08 8c 26 02 17 06 56 51 02 01 00 00 "
            "01 0a 85 12 31 23 59 59 12 00 "
            "e0 09 24 02 29 12 00 00 7f "
            "ff");
        boot(machineWithChips("chips", structureOf({0x60, 0, 0x10, 3, LOG_ADDRESS, false}), header + records));
    }

    static Strings gone(const Strings& names) {
        Strings lines{TEN_SECONDS_LATER};
        for (const std::string& name : names) lines.push_back(name + ": -2147483648");
        return lines;
    }

    // The log's properties after its lines.
    static Strings log(Strings lines, bool isValid) {
        lines.insert(lines.end(),
                     {isValid ? "LogValid boolean true" : "LogValid boolean false", "LogFull boolean false",
                      "LogMultipleEventCountIncrement uint8 1", "LogMultipleEventTimeWindow uint8 60"});
        return lines;
    }
};

TEST_F(ChipsTest, EverySensorHasTheReadingAndTheLimitsOfItsChip) {
    const json answer = answerIn(section("instances"));
    ASSERT_TRUE(answer.is_object());
    EXPECT_EQ(answer["status"]["rc"], 0);
    std::vector<SensorValues> expected = expectedSensors();
    // Newer kernels publish no limit of a thermal zone's.
    if (section("limit of the thermal zone").empty()) expected[0].erase("UpperThresholdCritical");
    EXPECT_THAT(section("start"), ElementsAreArray(expectedReadings()));
    ASSERT_EQ(answer["instances"].size(), expected.size());
    for (std::size_t i = 0; i < expected.size(); ++i)
        EXPECT_EQ(valuesIn(answer["instances"][i]["properties"]), withoutTypes(sensorProperties(expected[i])));
}

// Of the two chips at 0x40, one on each bus, only that which answers is in the list above.
TEST_F(ChipsTest, ASensorThatHasNeverBeenReadIsNotPublished) {
    EXPECT_THAT(section("monitored"), Contains(EndsWith("-0040")).Times(2));
}

TEST_F(ChipsTest, TheAnswersFitTheSchema) {
    const std::string count = std::to_string(expectedSensors().size());
    EXPECT_THAT(section("verify"), ElementsAre("TQS_NumericSensor: " + count + " names, " + count + " instances, " +
                                                   count + " single requests, 0 problems",
                                               "TQS_SystemEventLog: 1 name, 1 instance, 1 single request, 0 problems"));
}

TEST_F(ChipsTest, ReadingsFollowTheChips) {
    EXPECT_THAT(section("moved"),
                ElementsAre("acpitz temp1(b79b365d): 50300", "CPU(aa7ad106): 26500", "lm85b fan1(91ffaf21): 659",
                            "lm85b in0(98ee7f3c): 2487", "max6659 temp2(e9f60c70): 70125",
                            "power_meter power1(9e9ce0e7): 10001", "sht21 humidity1(fb57284d): 50152"));
    EXPECT_THAT(section("moved back"),
                ElementsAre("acpitz temp1(b79b365d): 37100", "CPU(aa7ad106): 25500", "lm85b fan1(91ffaf21): 1318",
                            "lm85b in0(98ee7f3c): 2500", "max6659 temp2(e9f60c70): 58125",
                            "power_meter power1(9e9ce0e7): 43210", "sht21 humidity1(fb57284d): 49664"));
}

TEST_F(ChipsTest, AChipWithoutItsDriverHasItsLastValueForTenSecondsAndNoneAfterwards) {
    EXPECT_THAT(section("unbound"), ElementsAreArray(gone({"CPU(aa7ad106)"})));
    EXPECT_THAT(section("bound again"), ElementsAre("CPU(aa7ad106): 25500"));
}

// One of them has moved to 26 degrees meanwhile, the other to 32.
TEST_F(ChipsTest, ChipsThatHaveEachOthersNumbersKeepTheirOwnValues) {
    const auto numberOf = [](const std::string& title, const std::string& address) {
        for (const std::string& line : section(title))
            if (testing::Value(line, EndsWith(address))) return line.substr(0, line.find(' '));
        return "none in " + title;
    };
    EXPECT_EQ(numberOf("numbers before", "-0048"), numberOf("numbers after", "-004a"));
    EXPECT_EQ(numberOf("numbers before", "-004a"), numberOf("numbers after", "-0048"));
    EXPECT_THAT(section("in each other's place"), ElementsAre("CPU(aa7ad106): 26000", "lm75 temp1(cfaad3b4): 32000",
                                                              "CPU(aa7ad106): 25500", "lm75 temp1(cfaad3b4): 31000"));
}

TEST_F(ChipsTest, ARemovedChipComesBackWhenItIsAddedAgain) {
    EXPECT_THAT(section("removed"),
                ElementsAreArray(gone({"ltc4215 curr1(fee03a09)", "Supply(98781b7e)", "ltc4215 power1(885d1368)"})));
    EXPECT_THAT(section("added again"), ElementsAre("ltc4215 curr1(fee03a09): 1208", "Supply(98781b7e): 15424",
                                                    "ltc4215 power1(885d1368): 9316"));
}

TEST_F(ChipsTest, AnotherChipInARemovedOnesPlaceLendsItNoValue) {
    EXPECT_THAT(section("another chip in its place"), IsEmpty());
}

TEST_F(ChipsTest, AModuleMayBeRemovedAndComeBack) {
    EXPECT_THAT(section("module removed"),
                ElementsAreArray(gone({"max6659 temp1(dbfd7bab)", "max6659 temp2(e9f60c70)"})));
    EXPECT_THAT(section("module back"),
                ElementsAre("max6659 temp1(dbfd7bab): 36000", "max6659 temp2(e9f60c70): 58125"));
}

TEST_F(ChipsTest, AFailingThermalZoneHasItsLastValueForTenSecondsAndNoneAfterwards) {
    EXPECT_THAT(section("thermal zone fails"), ElementsAreArray(gone({"acpitz temp1(b79b365d)"})));
    EXPECT_THAT(section("thermal zone back"), ElementsAre("acpitz temp1(b79b365d): 37100"));
}

TEST_F(ChipsTest, ADriveMayGoAndComeBack) {
    EXPECT_THAT(section("drive unbound"), ElementsAreArray(gone({"Composite(90be0e86)"})));
    EXPECT_THAT(section("drive back"), ElementsAre("Composite(90be0e86): 49850"));
}

TEST_F(ChipsTest, TheEventLogIsTheFirmwares) {
    const Strings lines{SYSTEM_BOOT, POST_ERROR, MEMORY_ERROR, OEM_RECORD};
    EXPECT_THAT(section("log"), ElementsAreArray(log(lines, true)));
    const json answer = answerIn(section("log of the command line"));
    ASSERT_TRUE(answer.is_object());
    EXPECT_EQ(answer["instances"][0]["properties"]["LogLines"], json(lines));
}

TEST_F(ChipsTest, TheEventLogEndsWhereARecordCannotBeOne) {
    EXPECT_THAT(section("record past the end"), ElementsAreArray(log({SYSTEM_BOOT}, false)));
    EXPECT_THAT(section("record without length"), ElementsAreArray(log({SYSTEM_BOOT}, false)));
    EXPECT_THAT(section("rubbish"), ElementsAreArray(log({}, false)));
    EXPECT_THAT(section("record of no date"), ElementsAreArray(log({}, false)));
}

TEST_F(ChipsTest, TheEventLogMayFillItsMemory) {
    std::string last = "0005 2026-02-17 07:00:00 Hard disk information (data";
    for (unsigned i = 8; i < 0x29; ++i) last += " 00";
    last += ")";
    EXPECT_THAT(section("to the last byte"),
                ElementsAreArray(log({SYSTEM_BOOT, POST_ERROR, MEMORY_ERROR, OEM_RECORD, last}, true)));
}

TEST_F(ChipsTest, AClearedEventLogHasNoLines) {
    EXPECT_THAT(section("cleared"), ElementsAreArray(log({}, true)));
}

}  // namespace
