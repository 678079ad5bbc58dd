#include <chrono>

#include "ChipTest.h"

namespace {

using Statuses = std::vector<sscode>;
using std::chrono::milliseconds;

class FaultTest : public ChipTest {
  protected:
    static std::string fault(const std::string& keys) { return "[[fault]]\n" + keys + "\n"; }

    static Statuses readStatuses(CChip& chip, unsigned handle, unsigned count) {
        Statuses statuses;
        for (unsigned i = 0; i < count; ++i) statuses.push_back(readStatus(chip, handle));
        return statuses;
    }

    // Two sensors, 1 and 2, and faults.
    std::unique_ptr<CChip> chipWith(const std::string& faults) const {
        return chipOn(sensor("1", "5") + sensor("2", "6") + faults);
    }

    template <typename Call>
    static milliseconds timeOf(Call call) {
        const auto start = std::chrono::steady_clock::now();
        call();
        return std::chrono::duration_cast<milliseconds>(std::chrono::steady_clock::now() - start);
    }
};

TEST_F(FaultTest, InitialiseFails) {
    useScenario(fault("operation = \"initialise\"\nstatus = 0xffffffff"));
    CChip chip;
    EXPECT_EQ(chip.Initialise(), 0xffffffffU);
    EXPECT_EQ(chip.Initialise(), 0xffffffffU);
}

TEST_F(FaultTest, InitialiseMaySucceedLater) {
    useScenario(sensor("1", "5") + fault("operation = \"initialise\"\nstatus = 7\ncalls = 1"));
    CChip chip;
    EXPECT_EQ(chip.Initialise(), 7U);
    EXPECT_EQ(chip.Initialise(), 0U);
    EXPECT_EQ(valueOf(chip, 1), 5);
}

TEST_F(FaultTest, EnumerateFailsAndLeavesTheList) {
    const auto chip = chipWith(fault("operation = \"enumerate\"\nstatus = 3"));
    CSensorHandleList handles;
    EXPECT_EQ(chip->EnumerateSensorHandles(handles), 3U);
    EXPECT_TRUE(handles.empty());
    EXPECT_EQ(readStatus(*chip, 1), 0U);
}

TEST_F(FaultTest, InformationFailsAndLeavesTheRecord) {
    const auto chip = chipWith(fault("operation = \"information\"\nstatus = 4"));
    CSensorInformation information{};
    EXPECT_EQ(chip->GetSensorInformation(1, information), 4U);
    EXPECT_EQ(information.name, "");
    EXPECT_EQ(readStatus(*chip, 1), 0U);
}

TEST_F(FaultTest, ReadFailsAndLeavesTheRecord) {
    const auto chip = chipWith(fault("operation = \"read\"\nstatus = 5"));
    CSensorReading reading{77, READING_PRESET};
    EXPECT_EQ(chip->ReadSensor(1, reading), 5U);
    EXPECT_EQ(reading.value, 77);
    EXPECT_EQ(informationOf(*chip, 1).name, "S");
}

TEST_F(FaultTest, EventLogFailsAndLeavesTheRecord) {
    const auto chip = chipWith(fault("operation = \"event-log\"\nstatus = 6"));
    CSystemEventLog log{};
    log.lines = {"old"};
    EXPECT_EQ(chip->GetSystemEventLog(log), 6U);
    EXPECT_EQ(log.lines, std::vector<std::string>{"old"});
}

TEST_F(FaultTest, WithoutCallsItGoesOnForEver) {
    const auto chip = chipWith(fault("operation = \"read\"\nhandle = 1\nstatus = 5\nfrom-call = 3"));
    EXPECT_EQ(readStatuses(*chip, 1, 6), (Statuses{0, 0, 5, 5, 5, 5}));
}

TEST_F(FaultTest, CallsLimitIt) {
    const auto chip = chipWith(fault("operation = \"read\"\nhandle = 1\nstatus = 5\nfrom-call = 2\ncalls = 2"));
    EXPECT_EQ(readStatuses(*chip, 1, 5), (Statuses{0, 5, 5, 0, 0}));
}

TEST_F(FaultTest, HandleLimitsItToOneSensorAndItsCalls) {
    const auto chip = chipWith(fault("operation = \"read\"\nhandle = 2\nstatus = 5\nfrom-call = 2"));
    EXPECT_EQ(readStatuses(*chip, 1, 3), (Statuses{0, 0, 0}));
    EXPECT_EQ(readStatuses(*chip, 2, 2), (Statuses{0, 5}));
}

TEST_F(FaultTest, HandleLimitsInformationToo) {
    const auto chip = chipWith(fault("operation = \"information\"\nhandle = 2\nstatus = 5"));
    CSensorInformation information{};
    EXPECT_EQ(chip->GetSensorInformation(1, information), 0U);
    EXPECT_EQ(chip->GetSensorInformation(2, information), 5U);
}

TEST_F(FaultTest, WithoutHandleTheCallsOnAllSensorsCount) {
    const auto chip = chipWith(fault("operation = \"read\"\nstatus = 5\nfrom-call = 3\ncalls = 1"));
    EXPECT_EQ(readStatus(*chip, 1), 0U);
    EXPECT_EQ(readStatus(*chip, 2), 0U);
    EXPECT_EQ(readStatus(*chip, 1), 5U);
    EXPECT_EQ(readStatus(*chip, 2), 0U);
}

TEST_F(FaultTest, WithoutHandleAnUnknownOneIsHitToo) {
    const auto chip = chipWith(fault("operation = \"read\"\nstatus = 5\ncalls = 1"));
    EXPECT_EQ(readStatuses(*chip, 9, 2), (Statuses{5, UNKNOWN_HANDLE}));
}

TEST_F(FaultTest, FirstStatusInTheFileWins) {
    const auto chip = chipWith(fault("operation = \"read\"\ndelay-ms = 0\nfrom-call = 1") +
                               fault("operation = \"read\"\nstatus = 5\nfrom-call = 2\ncalls = 1") +
                               fault("operation = \"read\"\nstatus = 6\nfrom-call = 1\ncalls = 3"));
    EXPECT_EQ(readStatuses(*chip, 1, 4), (Statuses{6, 5, 6, 0}));
}

TEST_F(FaultTest, FailedReadsMoveTheReadingOn) {
    const auto chip = chipOn(sensor("1", "{ kind = \"series\", values = [1, 2, 3], every = \"call\" }") +
                             fault("operation = \"read\"\nstatus = 5\nfrom-call = 2\ncalls = 1"));
    EXPECT_EQ(valueOf(*chip, 1), 1);
    EXPECT_EQ(readStatus(*chip, 1), 5U);
    EXPECT_EQ(valueOf(*chip, 1), 3);
}

TEST_F(FaultTest, DelayAloneIsLateButGood) {
    const auto chip = chipWith(fault("operation = \"read\"\ndelay-ms = 60\nfrom-call = 2\ncalls = 1"));
    EXPECT_EQ(valueOf(*chip, 1), 5);
    EXPECT_GE(timeOf([&] { EXPECT_EQ(valueOf(*chip, 1), 5); }), milliseconds(60));
}

TEST_F(FaultTest, DelayComesBeforeTheStatus) {
    const auto chip = chipWith(fault("operation = \"event-log\"\ndelay-ms = 60\nstatus = 8"));
    CSystemEventLog log{};
    EXPECT_GE(timeOf([&] { EXPECT_EQ(chip->GetSystemEventLog(log), 8U); }), milliseconds(60));
}

TEST_F(FaultTest, DelaysAddUp) {
    const auto chip = chipWith(fault("operation = \"enumerate\"\ndelay-ms = 40") +
                               fault("operation = \"enumerate\"\ndelay-ms = 50\nstatus = 8"));
    CSensorHandleList handles;
    EXPECT_GE(timeOf([&] { EXPECT_EQ(chip->EnumerateSensorHandles(handles), 8U); }), milliseconds(90));
}

TEST_F(FaultTest, EachChipCountsAnew) {
    const auto first = chipWith(fault("operation = \"read\"\nstatus = 5\ncalls = 1"));
    EXPECT_EQ(readStatuses(*first, 1, 2), (Statuses{5, 0}));
    EXPECT_EQ(readStatuses(*initialisedChip(), 1, 2), (Statuses{5, 0}));
}

class TimedFaultTest : public FaultTest {
  protected:
    // Of reads of sensor 1, so many milliseconds after the chip was initialised.
    Statuses statusesAt(const std::vector<long>& times, const std::string& keys) const {
        fakeclock::set({1000, 0});
        const auto chip = chipWith(fault("operation = \"read\"\nhandle = 1\nstatus = 9\n" + keys));
        return fakeclock::at(times, [&] { return readStatus(*chip, 1); });
    }
};

TEST_F(TimedFaultTest, HitsWithinItsTimesAlone) {
    EXPECT_EQ(statusesAt({0, 499, 500, 1499, 1500}, "from-ms = 500\nfor-ms = 1000"), (Statuses{0, 0, 9, 9, 0}));
    EXPECT_EQ(statusesAt({0, 500, 9000000}, "from-ms = 500"), (Statuses{0, 9, 9}));
    EXPECT_EQ(statusesAt({0, 499, 500}, "for-ms = 500"), (Statuses{9, 9, 0}));
}

TEST_F(TimedFaultTest, CallsAndTimesMustBothFit) {
    EXPECT_EQ(statusesAt({0, 0, 500, 500}, "from-call = 2\nfor-ms = 500"), (Statuses{0, 9, 0, 0}));
    EXPECT_EQ(statusesAt({0, 600, 600, 600}, "from-ms = 500\ncalls = 2"), (Statuses{0, 9, 0, 0}));
}

TEST_F(TimedFaultTest, ClockSetBackIsTheBeginning) {
    EXPECT_EQ(statusesAt({600, -1000, 600}, "from-ms = 500"), (Statuses{9, 0, 9}));
}

}  // namespace
