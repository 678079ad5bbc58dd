// Many threads at once, for the thread sanitizer above all, while chips go and come and searches are due all the time.
#include <atomic>
#include <thread>

#include "LinuxChipTest.h"
#include "StoppedClock.h"

namespace {

constexpr unsigned READERS = 6;
constexpr int CHIPS = 4;
constexpr unsigned SENSORS = 2 * CHIPS;

class LinuxRaceTest : public LinuxChipTest {
  protected:
    // The chip's first sensor shows its number, its second the tenfold.
    static std::filesystem::path addChip(int number, int chip) {
        return sensortree::addI2c(
            number, "lm85", 0, static_cast<unsigned>(0x20 + chip),
            {{"in0_input", std::to_string(chip + 1)}, {"in1_input", std::to_string(10 * (chip + 1))}});
    }
};

TEST_F(LinuxRaceTest, ReadersGetTheirOwnSensorsValueOrNoneWhileChipsChangeNumbers) {
    std::vector<std::filesystem::path> directories;
    for (int chip = 0; chip < CHIPS; ++chip) directories.push_back(addChip(chip, chip));
    StoppedClock clock;
    const auto chip = initialisedChip();
    const CSensorHandleList handles = handlesOf(*chip);
    ASSERT_EQ(handles.size(), SENSORS);
    std::vector<int> expected;
    for (const unsigned handle : handles) expected.push_back(valueOf(*chip, handle));

    std::atomic<unsigned> rounds{0};
    std::vector<std::thread> readers;
    for (unsigned reader = 0; reader < READERS; ++reader) {
        readers.emplace_back([&, reader] {
            while (rounds < 30) {
                for (unsigned i = 0; i < SENSORS; ++i) {
                    const unsigned sensor = (i + reader) % SENSORS;
                    const int value = valueOf(*chip, handles[sensor]);
                    if (value != NO_VALUE) {
                        EXPECT_EQ(value, expected[sensor]);
                    }
                    EXPECT_EQ(informationOf(*chip, handles[sensor]).sensorType, 3);
                }
                CSystemEventLog log{};
                EXPECT_EQ(chip->GetSystemEventLog(log), 0U);
                EXPECT_EQ(handlesOf(*chip), handles);
            }
        });
    }
    for (; rounds < 30; ++rounds) {
        const unsigned moved = rounds % CHIPS;
        sensortree::remove(directories[moved]);
        clock.advanceMilliseconds(6000);
        directories[moved] = addChip(static_cast<int>(100 + rounds), static_cast<int>(moved));
        clock.advanceMilliseconds(6000);
        std::this_thread::yield();
    }
    for (std::thread& reader : readers) reader.join();
    clock.advanceMilliseconds(20000);
    for (unsigned i = 0; i < SENSORS; ++i) EXPECT_EQ(valueOf(*chip, handles[i]), expected[i]);
}

}  // namespace
