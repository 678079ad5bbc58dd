// The same chips after a boot with another order of buses and drivers; the firmware's event log in the clock's memory;
// many requests while chips come and go.
#include "LogStructure.h"
#include "Sensors.h"

namespace {

using testing::AnyOf;
using testing::Contains;
using testing::ElementsAreArray;
using testing::EndsWith;

const char SYSTEM_BOOT[] = "0001 2026-02-17 06:56:45 System boot";
const char LIMIT[] = "0002 2026-02-17 06:56:51 System limit exceeded (data de ad be ef)";
const char NO_VALUE[] = "-2147483648";

class ChipsInOtherOrderTest : public GuestTest {
  protected:
    static void SetUpTestSuite() {
        boot(machineWithChips("chips-in-other-order", structureOf({0x80, 0x40, 0x50, 0, 0x00710070, true}), ""));
    }

    // The log's properties after its lines.
    static Strings log(Strings lines, const std::string& valid, unsigned increment, unsigned window) {
        lines.insert(lines.end(), {"LogValid boolean " + valid, "LogFull boolean true",
                                   "LogMultipleEventCountIncrement uint8 " + std::to_string(increment),
                                   "LogMultipleEventTimeWindow uint8 " + std::to_string(window)});
        return lines;
    }
};

TEST_F(ChipsInOtherOrderTest, NamesAndReadingsAreTheSame) {
    EXPECT_THAT(section("monitored"), Contains(EndsWith("/i2c-1/1-0048"))) << "the bus is the first one again";
    EXPECT_THAT(section("start"), ElementsAreArray(expectedReadings()));
}

TEST_F(ChipsInOtherOrderTest, AnEventLogOfZeroesIsNotValid) {
    EXPECT_THAT(section("no record"), ElementsAreArray(log({}, "false", 0, 0)));
}

TEST_F(ChipsInOtherOrderTest, TheEventLogIsReadThroughPorts) {
    EXPECT_THAT(section("records"), ElementsAreArray(log({SYSTEM_BOOT, LIMIT}, "true", 5, 90)));
}

TEST_F(ChipsInOtherOrderTest, ARecordThatIsBeingWrittenIsLeftOut) {
    EXPECT_THAT(section("record half written"), ElementsAreArray(log({SYSTEM_BOOT, LIMIT}, "false", 5, 90)));
}

TEST_F(ChipsInOtherOrderTest, ARecordMayEndWhereThePortsEnd) {
    std::string last = "0003 2026-02-17 07:00:00 POST error (data";
    for (unsigned i = 0; i < 0x1c - 8; ++i) last += " 00";
    EXPECT_THAT(section("record to the end"), ElementsAreArray(log({SYSTEM_BOOT, LIMIT, last + ")"}, "true", 5, 90)));
    EXPECT_THAT(section("record past the end"), ElementsAreArray(log({SYSTEM_BOOT, LIMIT}, "false", 5, 90)));
}

TEST_F(ChipsInOtherOrderTest, AHeaderThatCannotBeOneMakesTheEventLogNotValid) {
    Strings lines = section("window of no digits");
    ASSERT_EQ(lines.size(), 7U);
    EXPECT_THAT(Strings(lines.begin() + 3, lines.end()), ElementsAreArray(log({}, "false", 0, 0)));
}

TEST_F(ChipsInOtherOrderTest, WhileChipsComeAndGoASensorHasItsOwnValueOrNone) {
    std::map<std::string, std::string> seen;
    for (const std::string& line : section("requests")) {
        const std::size_t colon = line.find(": ");
        seen[line.substr(0, colon)] = line.substr(colon + 2);
    }
    const std::vector<SensorValues> expected = expectedSensors();
    EXPECT_EQ(seen.size(), expected.size());
    for (const SensorValues& sensor : expected) {
        const std::string& reading = sensor.at("CurrentReading");
        EXPECT_THAT(seen[sensor.at("Name")], AnyOf(reading, NO_VALUE + (" " + reading))) << sensor.at("Name");
    }
    for (const char* name : {"CPU(aa7ad106)", "Supply(98781b7e)", "lm85b in4(80e49598)", "Composite(90be0e86)"})
        EXPECT_EQ(seen[name].compare(0, sizeof NO_VALUE - 1, NO_VALUE), 0) << name << " was never gone";
    EXPECT_THAT(section("readings afterwards"), ElementsAreArray(expectedReadings()));
}

TEST_F(ChipsInOtherOrderTest, ChipsThatComeAndGoLeaveNoDescriptorsBehind) {
    EXPECT_EQ(section("descriptors afterwards"), section("descriptors"));
}

}  // namespace
