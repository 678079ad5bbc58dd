// The delivered units under systemd: with their sandbox the drive of the emulator is read, the page for Prometheus
// comes and goes with its service, and each line of the event log comes into the journal once.
#include "Guest.h"

namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::Not;

constexpr const char* RUNNING = "ActiveState=active ExecMainStatus=0 NRestarts=0 Result=success SubState=running ";
constexpr const char* RESTARTED = "ActiveState=active ExecMainStatus=0 NRestarts=1 Result=success SubState=running ";

class ServicesTest : public GuestTest {
  protected:
    static void SetUpTestSuite() { boot({"services", 1}); }
};

TEST_F(ServicesTest, PageHoldsTheDriveThatTheSandboxLetsThrough) {
    const Strings page = section("page");
    EXPECT_THAT(page, Contains("zelsensors_temperature_celsius{sensor=\"SSD1 Temperature(00000001)\"} 50"));
    EXPECT_THAT(page, Contains("zelsensors_temperature_celsius{sensor=\"CPU Temperature(00000010)\"} 48"));
    EXPECT_THAT(page, Contains("zelsensors_scrape_success{collector=\"sensors\"} 1"));
    EXPECT_THAT(page, Contains("zelsensors_scrape_success{collector=\"event_log\"} 1"));
    EXPECT_THAT(page, Contains("zelsensors_event_log_lines 2"));
    EXPECT_THAT(section("mode"), ElementsAre("644 0"));
}

TEST_F(ServicesTest, BothRunAndTheProviderWritesItsLog) {
    EXPECT_THAT(section("running"), ElementsAre(RUNNING, RUNNING));
    EXPECT_THAT(section("provider's log"), ElementsAre(Not("0")));
}

TEST_F(ServicesTest, StoppedServiceTakesItsPageAway) {
    EXPECT_THAT(
        section("stopped"),
        ElementsAre("ActiveState=inactive ExecMainStatus=0 NRestarts=0 Result=success SubState=dead ", "no directory"));
    EXPECT_THAT(section("restarted"), ElementsAre("2", RUNNING));
}

TEST_F(ServicesTest, KilledServiceTakesItsPageAwayAndIsStartedAgain) {
    EXPECT_THAT(section("killed"), ElementsAre("no directory"));
    EXPECT_THAT(section("after it was killed"), ElementsAre("2", RESTARTED));
}

TEST_F(ServicesTest, EachLineOfTheEventLogComesIntoTheJournalOnce) {
    const std::string first = "0001 System: power on";
    const std::string second = "0002 System: operating system started";
    const std::string third = "0003 Cabinet: opened";
    EXPECT_THAT(section("first lines"), ElementsAre(first, second));
    EXPECT_THAT(section("lines over a restart"), ElementsAre(first, second, third));
    EXPECT_THAT(section("lines over a kill"), ElementsAre(first, second, third, "0004 Cabinet: closed", RESTARTED));
}

TEST_F(ServicesTest, WrongOptionsEndTheServiceForGood) {
    EXPECT_THAT(section("wrong options"),
                ElementsAre("ActiveState=failed ExecMainStatus=2 NRestarts=0 Result=exit-code SubState=failed ",
                            "no directory"));
}

}  // namespace
