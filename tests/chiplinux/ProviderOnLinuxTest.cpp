// The provider as it is delivered, on this chip library: zelhost loads both, in the sandbox of this program.
#include <filesystem>
#include <fstream>

#include "LinuxChipTest.h"
#include "Symbols.h"

namespace {

using testing::HasSubstr;
using testing::Not;

class ProviderOnLinuxTest : public LinuxChipTest {
  protected:
    static std::string answerTo(const std::string& command) {
        return outputOf(ZELHOST " " + command + " --chip linux 2>/dev/null");
    }
};

TEST_F(ProviderOnLinuxTest, SensorsOfTheTreeAreInstances) {
    sensortree::addAdapter(0, "SMBus stub driver");
    sensortree::addI2c(0, "lm75", 0, 0x48, {{"temp1_input", "25500"}, {"temp1_max", "80000"}});
    sensortree::addI2c(1, "meter", 0, 0x44, {{"power1_input", "43210000"}});
    const std::string answer = answerTo("instances --format json");
    EXPECT_THAT(answer, HasSubstr("lm75 temp1(aa7ad106)"));
    EXPECT_THAT(answer, HasSubstr("25500"));
    EXPECT_THAT(answer, HasSubstr("80000"));
    EXPECT_THAT(answer, HasSubstr("meter power1("));
    EXPECT_THAT(answer, HasSubstr("43210"));
}

TEST_F(ProviderOnLinuxTest, AnswersFitTheSchema) {
    sensortree::addI2c(0, "lm85", 0, 0x2e, {{"in0_input", "3000"}, {"fan1_input", "900"}, {"temp1_input", "1"}});
    EXPECT_NO_THROW(answerTo("verify"));
}

TEST_F(ProviderOnLinuxTest, RecordingPlaysTheSameInstances) {
    sensortree::addI2c(0, "lm85", 0, 0x2e, {{"in0_input", "3000"}, {"fan1_input", "900"}, {"temp1_input", "1"}});
    std::filesystem::create_directories("/etc/tarn");
    const std::string file = "/etc/tarn/recorded.toml";
    EXPECT_EQ(answerTo("record " + file), "");
    const auto instances = [](std::string answer) { return answer.substr(answer.find("\"path\"")); };
    const std::string here = instances(answerTo("instances --format json"));
    EXPECT_THAT(here, HasSubstr("lm85 fan1("));
    EXPECT_EQ(instances(outputOf(ZELHOST " instances --format json --scenario " + file)), here);
}

TEST_F(ProviderOnLinuxTest, FirmwaresLogIsTheEventLog) {
    std::filesystem::create_directories("/sys/class/hwmon");
    const std::filesystem::path entry = "/sys/firmware/dmi/entries/15-0";
    std::filesystem::create_directories(entry / "system_event_log");
    std::ofstream(entry / "raw", std::ios::binary)
        << std::string("\x0f\x17\x00\x0f\x10\x00\x00\x00\x00\x00\x03\x01\x07\x00\x00\x00\x00\x00\x00\x00\x01", 21);
    std::ofstream(entry / "system_event_log/raw_event_log", std::ios::binary)
        << std::string("\x08\x0c\x26\x02\x17\x06\x56\x51\x02\x01\x00\x00\xff", 13);
    EXPECT_THAT(answerTo("log"), HasSubstr("0001 2026-02-17 06:56:51 POST error (data 02 01 00 00)"));
}

}  // namespace
