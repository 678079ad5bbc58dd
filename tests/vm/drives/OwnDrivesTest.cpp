// The emulator's own two drives: 50 degrees, limits of -273 and 70, and 256 namespaces.
#include <nlohmann/json.hpp>
#include <set>
#include <sstream>

#include "Guest.h"
#include "HostAnswer.h"
#include "SensorProperties.h"

namespace {

using nlohmann::json;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;
using testing::IsSupersetOf;

class OwnDrivesTest : public GuestTest {
  protected:
    static void SetUpTestSuite() { boot({"own-drives", 2, true}); }

    static json answer(const std::string& title) { return answerIn(section(title)); }

    // The commands between the guest's marks, each with what the emulator records of it until it is completed.
    static std::vector<Strings> commandsBetweenMarks() {
        std::vector<Strings> parts(1);
        std::string command;
        for (const std::string& line : trace()) {
            const std::string text = essenceOf(line);
            if (text.compare(0, 9, "admin_cmd") == 0) command.clear();
            command += text + "; ";
            if (text.compare(0, 22, "enqueue_req_completion") != 0) continue;
            if (command.find("fid 0x7 sel 0x2") != std::string::npos)
                parts.emplace_back();
            else
                parts.back().push_back(command);
        }
        return parts;
    }

  private:
    // A record without the numbers of queues and commands, and without addresses, which differ from run to run.
    static std::string essenceOf(const std::string& record) {
        static const std::set<std::string> clutter{"cid", "sqid", "cqid", "trans_len", "prp1", "prp2", "num_prps"};
        std::istringstream words(record.substr(record.find("pci_nvme_") + 9));
        std::string text;
        std::string word;
        while (words >> word) {
            if (clutter.count(word) == 0)
                text += (text.empty() ? "" : " ") + word;
            else
                words >> word;
        }
        return text;
    }
};

TEST_F(OwnDrivesTest, AreShownWithTheirTemperaturesAndDefaultThresholds) {
    EXPECT_THAT(section("sensors"), ElementsAre("SSD1 Temperature(00000001), device 1: 50, limits -273 to 70",
                                                "SSD2 Temperature(00000002), device 2: 50, limits -273 to 70"));
}

TEST_F(OwnDrivesTest, AreIdentifiedWithTextsOfFullLength) {
    EXPECT_THAT(section("start log"),
                IsSupersetOf({"Debug Model Number: QEMU NVMe Ctrl                          ",
                              "Debug Serial Number: ZEL0                ",
                              "Debug SsdDevice::initialise - drive nvme0 devPath /dev/nvme0",
                              "Debug Serial Number: ZEL1                ",
                              "Debug SsdDevice::initialise - drive nvme1 devPath /dev/nvme1",
                              "Debug NvmeSsd::getIdentifyNVMeData - Under Temperature Threshold RESULT: 0",
                              "Debug NvmeSsd::getIdentifyNVMeData - Over Temperature Threshold RESULT: 343"}));
}

TEST_F(OwnDrivesTest, FollowTheChipSensors) {
    EXPECT_THAT(section("names"), ElementsAre("CPU Temperature(00000010)", "+12 V(00000021)",
                                              "SSD1 Temperature(00000001)", "SSD2 Temperature(00000002)"));
    EXPECT_THAT(section("others"), ElementsAre("others: 48, 12048, 2 log lines"));
}

TEST_F(OwnDrivesTest, AreReadAgainAfterASecond) {
    EXPECT_THAT(section("read"), ElementsAre("SSD1: 50", "SSD2: 50"));
    EXPECT_THAT(section("at once"), ElementsAre("SSD2: 50"));
    const std::string reading = "Debug NvmeSsd::getSsdTemperature - starting";
    EXPECT_THAT(section("read log"), testing::Contains(reading).Times(2));
    EXPECT_THAT(section("at once log"), testing::Not(testing::Contains(reading)));
}

// The exact sequence that reached the two controllers; each command with status 0, so that none was added to a drive's
// error log.
TEST_F(OwnDrivesTest, AreSentTheCommandsNeededAndNoOthers) {
    const std::string identify =
        "admin_cmd opc 0x6 opname 'NVME_ADM_CMD_IDENTIFY'; identify cns 0x1 ctrlid 0 csi 0x0; map_prp len 4096; "
        "enqueue_req_completion dw0 0x0 dw1 0x0 status 0x0; ";
    const std::string under =
        "admin_cmd opc 0xa opname 'NVME_ADM_CMD_GET_FEATURES'; getfeat nsid 0xffffffff fid 0x4 sel 0x1 cdw11 0x100000; "
        "enqueue_req_completion dw0 0x0 dw1 0x0 status 0x0; ";
    const std::string over =
        "admin_cmd opc 0xa opname 'NVME_ADM_CMD_GET_FEATURES'; getfeat nsid 0xffffffff fid 0x4 sel 0x1 cdw11 0x0; "
        "enqueue_req_completion dw0 0x157 dw1 0x0 status 0x0; ";
    const std::string health =
        "admin_cmd opc 0x2 opname 'NVME_ADM_CMD_GET_LOG_PAGE'; get_log lid 0x2 lsp 0x0 rae 0x0 len 512 off 0; "
        "map_prp len 512; enqueue_req_completion dw0 0x0 dw1 0x0 status 0x0; ";
    const std::vector<Strings> parts = commandsBetweenMarks();
    ASSERT_EQ(parts.size(), 5U);
    EXPECT_THAT(parts[1], ElementsAre(identify, under, over, identify, under, over, health, health)) << "the start";
    EXPECT_THAT(parts[2], ElementsAre(health)) << "one drive's reading";
    EXPECT_THAT(parts[3], IsEmpty()) << "names, a reading within a second, and all other instances";
}

TEST_F(OwnDrivesTest, AreShownByTheCommandLineHost) {
    EXPECT_THAT(section("zelhost names"), ElementsAre("Name", "CPU Temperature(00000010)", "+12 V(00000021)",
                                                      "SSD1 Temperature(00000001)", "SSD2 Temperature(00000002)"));
    for (const unsigned number : {1U, 2U}) {
        const json shown = answer("zelhost get " + std::to_string(number));
        ASSERT_TRUE(shown.is_object());
        EXPECT_EQ(shown["status"]["rc"], 0);
        ASSERT_EQ(shown["instances"].size(), 1U);
        EXPECT_EQ(valuesIn(shown["instances"][0]["properties"]),
                  withoutTypes(sensorProperties(driveSensorValues(number, 50, -273, 70))));
    }
}

TEST_F(OwnDrivesTest, LeaveTheEventLogAsItIs) {
    const json shown = answer("zelhost log");
    ASSERT_TRUE(shown.is_object());
    EXPECT_EQ(shown["instances"][0]["properties"]["LogLines"],
              json({"0001 System: power on", "0002 System: operating system started"}));
}

}  // namespace
