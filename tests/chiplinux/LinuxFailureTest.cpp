// Every allocation and every system call in turn fails: at the start, in a search, and in each request.
#include <sys/syscall.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <fstream>

#include "../faults/FailingMemory.h"
#include "LinuxChipTest.h"
#include "OpenDescriptors.h"
#include "OutputCapture.h"
#include "RefusedCall.h"
#include "StoppedClock.h"

namespace {

namespace fs = std::filesystem;
using testing::AnyOf;

constexpr unsigned FAR_MORE_THAN_THERE_ARE = 20000;
constexpr sscode NO_LIBRARY = 0xE1000003;
constexpr sscode NO_HWMON = 0xE1000004;
constexpr sscode SHORTAGE = 0xE1000005;
constexpr sscode SETTINGS = 0xE1000009;
constexpr std::size_t SENSORS = 4;

class LinuxFailureTest : public LinuxChipTest {
  protected:
    void SetUp() override {
        LinuxChipTest::SetUp();
        if (IsSkipped()) return;
        sandbox::writeLibsensorsConfiguration("chip \"lm85-*\"\n label in0 \"+12V\"\n compute in0 @ * 4, @ / 4\n");
        sensortree::addAdapter(0, "SMBus stub driver");
        sensortree::addI2c(0, "lm75", 0, 0x48, {{"temp1_input", "25500"}, {"temp1_max", "80000"}});
        sensortree::addI2c(1, "lm85", 0, 0x2e, {{"in0_input", "3000"}, {"fan1_input", "900"}});
        sensortree::addVirtual(2, "soc",
                               {{"temp1_input", "40000"}, {"temp1_label", "A label longer than a short text"}});
        const fs::path entry = "/sys/firmware/dmi/entries/15-0";
        fs::create_directories(entry / "system_event_log");
        std::ofstream(entry / "raw", std::ios::binary)
            << std::string("\x0f\x17\x00\x0f\x10\x00\x00\x00\x00\x00\x03\x01\x07\x00\x00\x00\x00\x00\x00\x00\x01", 21);
        std::ofstream(entry / "system_event_log/raw_event_log", std::ios::binary)
            << std::string("\x17\x08\x26\x02\x17\x06\x56\x51\xff", 9);
        m_expected = valuesOf(*initialisedChip());
        ASSERT_EQ(m_expected.size(), SENSORS);
    }

    // A start that failed leaves nothing behind, and the next one works.
    void expectAStartNow(CChip& chip) {
        ASSERT_EQ(chip.Initialise(), 0U);
        EXPECT_EQ(valuesOf(chip), m_expected);
    }

    // How many copies of libsensors the loader has. Where memory fails it at two of its own steps, it never lets go of
    // a copy again, and that is its own doing.
    static std::size_t loadedCopies() {
        std::ifstream maps("/proc/self/maps");
        std::size_t copies = 0;
        for (std::string line; std::getline(maps, line);)
            if (line.find("libsensors") != std::string::npos && line.find(" r-xp ") != std::string::npos) ++copies;
        return copies;
    }

    // Calls `attempt(n, shortage)` for n = 1, 2, ... until it answers that no allocation failed. Gives the blocks that
    // were gained.
    template <typename Attempt>
    static long gainedAtEveryAllocation(Attempt attempt, Shortage shortage) {
        long gained = 0;
        bool hasFailed = true;
        unsigned nth = 1;
        for (; nth < FAR_MORE_THAN_THERE_ARE && hasFailed && !HasFailure(); ++nth) {
            SCOPED_TRACE(testing::Message()
                         << "allocation " << nth << (shortage == Shortage::OneAllocation ? "" : " and all after it"));
            const std::size_t copies = loadedCopies();
            const long before = liveBlocks();
            hasFailed = attempt(nth, shortage);
            if (loadedCopies() == copies) gained += liveBlocks() - before;
        }
        EXPECT_GT(nth, 2U) << "nothing failed";
        EXPECT_LT(nth, FAR_MORE_THAN_THERE_ARE);
        return gained;
    }

    // All of it twice: what is kept for ever is there after the first time.
    template <typename Attempt>
    static void atEveryAllocation(Attempt attempt) {
        OutputCapture error(STDERR_FILENO);
        gainedAtEveryAllocation(attempt, Shortage::OneAllocation);
        const std::size_t descriptors = openDescriptors();
        EXPECT_EQ(gainedAtEveryAllocation(attempt, Shortage::OneAllocation), 0);
        EXPECT_EQ(gainedAtEveryAllocation(attempt, Shortage::AllFromThere), 0);
        EXPECT_EQ(openDescriptors(), descriptors);
        EXPECT_EQ(error.take(), "");
    }

    std::map<std::string, int> m_expected;
};

TEST_F(LinuxFailureTest, StartWithoutMemoryFailsOrIsWhole) {
    atEveryAllocation([this](unsigned nth, Shortage shortage) {
        CChip chip;
        sscode status = 0;
        bool failed = false;
        {
            const FailingMemory failing(nth, shortage);
            status = chip.Initialise();
            failed = failing.hasFailed();
        }
        EXPECT_THAT(status, AnyOf(0U, NO_LIBRARY, SHORTAGE));
        expectAStartNow(chip);
        return failed;
    });
}

#ifndef HAS_SANITIZERS_MALLOC  // a read takes memory through malloc alone
TEST_F(LinuxFailureTest, ReadWithoutMemoryGivesTheLastValue) {
    const auto chip = initialisedChip();
    for (const unsigned handle : handlesOf(*chip)) {
        const int value = valueOf(*chip, handle);
        atEveryAllocation([&](unsigned nth, Shortage shortage) {
            const FailingMemory failing(nth, shortage);
            CSensorReading reading{0, READING_PRESET};
            EXPECT_EQ(chip->ReadSensor(handle, reading), 0U);
            EXPECT_EQ(reading.value, value);
            return failing.hasFailed();
        });
    }
}
#endif

TEST_F(LinuxFailureTest, SearchWithoutMemoryLosesValuesUntilTheNextOne) {
    StoppedClock clock;
    const auto chip = initialisedChip();
    const unsigned handle = handlesByName(*chip).at("lm75 temp1");
    int number = 10;
    fs::path directory = "/sys/devices/pci0000:00/0000:00:1f.3/i2c-0/0-0048/hwmon/hwmon0";
    atEveryAllocation([&](unsigned nth, Shortage shortage) {
        sensortree::remove(directory);
        directory = sensortree::addI2c(++number, "lm75", 0, 0x48, {{"temp1_input", "25500"}, {"temp1_max", "80000"}});
        clock.advanceMilliseconds(10001);
        bool failed = false;
        CSensorReading reading{0, READING_PRESET};
        {
            const FailingMemory failing(nth, shortage);
            EXPECT_EQ(chip->ReadSensor(handle, reading), 0U);
            failed = failing.hasFailed();
        }
        EXPECT_THAT(reading.value, AnyOf(NO_VALUE, 25500));
        clock.advanceMilliseconds(10001);
        EXPECT_EQ(valueOf(*chip, handle), 25500);
        EXPECT_EQ(valuesOf(*chip), m_expected);
        return failed;
    });
}

TEST_F(LinuxFailureTest, RequestsWithoutMemoryFailAndChangeNothing) {
    const auto chip = initialisedChip();
    const unsigned handle = handlesByName(*chip).at("A label longer than a short text");
    atEveryAllocation([&](unsigned nth, Shortage shortage) {
        CSensorHandleList handles;
        const FailingMemory failing(nth, shortage);
        const sscode status = chip->EnumerateSensorHandles(handles);
        EXPECT_EQ(status, failing.hasFailed() ? SHORTAGE : 0U);
        EXPECT_EQ(handles.size(), failing.hasFailed() ? 0U : SENSORS);
        return failing.hasFailed();
    });
    atEveryAllocation([&](unsigned nth, Shortage shortage) {
        CSensorInformation information{};
        const FailingMemory failing(nth, shortage);
        const sscode status = chip->GetSensorInformation(handle, information);
        EXPECT_EQ(status, failing.hasFailed() ? SHORTAGE : 0U);
        EXPECT_EQ(information.sensorType, failing.hasFailed() ? 0 : 2);
        return failing.hasFailed();
    });
    atEveryAllocation([&](unsigned nth, Shortage shortage) {
        CSystemEventLog log{};
        const FailingMemory failing(nth, shortage);
        const sscode status = chip->GetSystemEventLog(log);
        EXPECT_EQ(status, failing.hasFailed() ? SHORTAGE : 0U);
        EXPECT_EQ(log.lines.size(), failing.hasFailed() ? 0U : 1U);
        return failing.hasFailed();
    });
}

struct Call {
    int number;
    std::vector<int> errors;
};

const std::vector<Call> CALLS = {
    {SYS_openat, {EMFILE, ENFILE, ENOMEM, EACCES, EIO, ENOENT}},
    {SYS_read, {EIO, ENXIO, EAGAIN}},
    {SYS_newfstatat, {EACCES, EIO}},
    {SYS_getdents64, {EIO, ENOENT}},
    {SYS_readlink, {EACCES, EIO}},
    {SYS_statfs, {EIO}},
};

bool isShortage(int error) {
    return error == EMFILE || error == ENFILE || error == ENOMEM;
}

// Calls `attempt(refuse, error)` with each call refused, where `refuse` takes the action.
template <typename Attempt>
void atEveryCall(Attempt attempt) {
    for (const Call& call : CALLS) {
        for (const int error : call.errors) {
            Refusal refusal{"", true};
            for (unsigned nth = 1; refusal.hasCome && !testing::Test::HasFailure(); ++nth) {
                SCOPED_TRACE(testing::Message()
                             << "system call " << call.number << ", " << nth << ". time, errno " << error);
                attempt(
                    [&](const std::function<void()>& action) { refusal = refuseCall(call.number, nth, error, action); },
                    error);
                if (!refusal.whyImpossible.empty()) GTEST_SKIP() << refusal.whyImpossible;
                ASSERT_LT(nth, FAR_MORE_THAN_THERE_ARE);
            }
        }
    }
}

TEST_F(LinuxFailureTest, StartWhoseCallsAreRefusedFailsOrFindsSensors) {
    const std::size_t descriptors = openDescriptors();
    atEveryCall([this](const auto& refuse, int error) {
        CChip chip;
        sscode status = 0;
        refuse([&] { status = chip.Initialise(); });
        EXPECT_THAT(status, AnyOf(0U, NO_LIBRARY, NO_HWMON, SETTINGS, SHORTAGE));
        if (status == 0 && isShortage(error)) {
            EXPECT_EQ(valuesOf(chip).size(), SENSORS);
        }
        CChip next;
        expectAStartNow(next);
    });
    EXPECT_EQ(openDescriptors(), descriptors);
}

TEST_F(LinuxFailureTest, ReadWhoseCallIsRefusedIsTriedOnceMore) {
    const auto chip = initialisedChip();
    for (const auto& [name, handle] : handlesByName(*chip)) {
        for (const Call& call : CALLS) {
            // Not the file's own name, which tells whether it is there, nor its end.
            if (call.number != SYS_openat && call.number != SYS_read) continue;
            for (const int error : call.errors) {
                const Refusal refusal = refuseCall(call.number, 1, error, [&, one = handle] {
                    EXPECT_EQ(valueOf(*chip, one), m_expected.at(informationOf(*chip, one).name));
                });
                if (!refusal.whyImpossible.empty()) GTEST_SKIP() << refusal.whyImpossible;
                EXPECT_TRUE(refusal.hasCome);
            }
        }
    }
}

TEST_F(LinuxFailureTest, EventLogWhoseCallsAreRefusedFailsOrIsWhole) {
    const auto chip = initialisedChip();
    const std::size_t descriptors = openDescriptors();
    atEveryCall([&](const auto& refuse, int error) {
        CSystemEventLog log{};
        sscode status = 0;
        refuse([&] { status = chip->GetSystemEventLog(log); });
        if (status != 0) {
            EXPECT_THAT(status, AnyOf(SHORTAGE, 0xE1000006U, 0xE1000007U));
        } else if (error != ENOENT && error != EIO) {
            EXPECT_EQ(log.lines.size(), 1U);
        }
    });
    EXPECT_EQ(openDescriptors(), descriptors);
}

}  // namespace
