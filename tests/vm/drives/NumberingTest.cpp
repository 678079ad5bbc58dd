// Eleven drives, and what is left of them when some are taken away.
#include "Guest.h"

namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::Not;

const char OTHERS[] = "others: 48, 12048, 2 log lines";

class NumberingTest : public GuestTest {
  protected:
    static void SetUpTestSuite() { boot({"numbering", 11}); }

    static std::string sensor(unsigned number, const std::string& hexadecimal, int reading = 50) {
        return "SSD" + std::to_string(number) + " Temperature(0000000" + hexadecimal + "), device " +
               std::to_string(number) + ": " + std::to_string(reading) + ", limits -273 to 70";
    }

    static Strings notOpened(unsigned number) {
        const std::string node = "/dev/nvme" + std::to_string(number);
        return {"Error NvmeSsd::getSsdTemperature - Error while read " + node + " file",
                node + ": No such file or directory"};
    }
};

TEST_F(NumberingTest, TenDrivesAreTakenAndTheEleventhIsNot) {
    EXPECT_THAT(section("eleven drives"),
                ElementsAre(sensor(1, "1"), sensor(2, "2"), sensor(3, "3"), sensor(4, "4"), sensor(5, "5"),
                            sensor(6, "6"), sensor(7, "7"), sensor(8, "8"), sensor(9, "9"), sensor(10, "a")));
    Strings identified;
    for (const std::string& line : section("eleven drives log")) {
        if (line.compare(0, 21, "Debug Serial Number: ") == 0) identified.push_back(line.substr(21));
    }
    // The kernel numbers the drives as it meets them.
    const Strings serials = section("serial numbers");
    EXPECT_EQ(serials.size(), 10U);
    EXPECT_THAT(identified, ElementsAreArray(serials));
    EXPECT_THAT(section("read the tenth"), ElementsAre("SSD10: 50"));
    EXPECT_THAT(section("others"), ElementsAre(OTHERS));
}

TEST_F(NumberingTest, ADriveThatIsRemovedAfterTheStartShowsZeroFromThenOn) {
    const Strings lost = notOpened(2);
    EXPECT_THAT(section("removed after start"),
                ElementsAre("SSD3: 0", lost[0], lost[1], "SSD2: 50", "SSD4: 50", OTHERS));
}

TEST_F(NumberingTest, ReadingGoesByThePositionAndNotByTheDrivesNumber) {
    const Strings lost = notOpened(2);
    EXPECT_THAT(section("started with a gap"),
                ElementsAre(sensor(1, "1"), sensor(2, "2"), sensor(3, "3", 0), sensor(4, "4"), sensor(5, "5"),
                            sensor(6, "6"), sensor(7, "7"), sensor(8, "8"), sensor(9, "9"), lost[0], lost[1], "SSD3: 0",
                            lost[0], lost[1], "SSD9: 50"));
}

TEST_F(NumberingTest, AnEnumerationAsksTheChipForTheDrivesSensors) {
    const Strings lines = section("enumeration");
    ASSERT_GE(lines.size(), 5U);
    EXPECT_THAT(Strings(lines.end() - 5, lines.end()),
                ElementsAre("CPU Temperature(00000010): 48", "+12 V(00000021): 12048", "status 1",
                            "Error SensorProvider::UpdateReading - failed to read sensor 0x00000000, "
                            "sscode=0xe0000003",
                            "Error SensorProvider::enumerateInstances -  Unknown Exception"));
}

TEST_F(NumberingTest, AloneTheSecondDriveIsTheFirstSensorAndCannotBeRead) {
    const Strings lost = notOpened(0);
    EXPECT_THAT(section("only nvme1 and nvme10"), ElementsAre("nvme1", "nvme10", sensor(1, "1", 0), lost[0], lost[1],
                                                              "SSD1: 0", lost[0], lost[1], OTHERS));
}

TEST_F(NumberingTest, AloneTheEleventhDriveIsNoSensor) {
    EXPECT_THAT(section("only nvme10"), ElementsAre("no drive sensors", OTHERS));
}

}  // namespace
