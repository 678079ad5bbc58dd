// Sensors that fail, go, come back, and change places, while the clock stands still unless the test moves it.
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <thread>

#include "FailingCLibrary.h"
#include "LinuxChipTest.h"
#include "StoppedClock.h"

namespace {

namespace fs = std::filesystem;
using sensortree::addAdapter;
using sensortree::addI2c;
using sensortree::addVirtual;

class LostSensorsTest : public LinuxChipTest {
  protected:
    void SetUp() override {
        LinuxChipTest::SetUp();
        if (!IsSkipped()) addAdapter(0, "SMBus stub driver");
    }

    static fs::path addLm75(int number, unsigned address, const std::string& millidegrees) {
        return addI2c(number, "lm75", 0, address, {{"temp1_input", millidegrees}});
    }

    // A driver that answers nothing.
    static void silence(const fs::path& directory) { fs::resize_file(directory / "temp1_input", 0); }

    StoppedClock m_clock;
};

TEST_F(LostSensorsTest, LastGoodValueStandsInForTenSeconds) {
    const auto directory = addLm75(0, 0x48, "25500");
    const auto chip = initialisedChip();
    const unsigned handle = onlyHandle(*chip);
    m_clock.advanceMilliseconds(60000);
    EXPECT_EQ(valueOf(*chip, handle), 25500);
    silence(directory);
    EXPECT_EQ(valueOf(*chip, handle), 25500);
    m_clock.advanceMilliseconds(10000);
    EXPECT_EQ(valueOf(*chip, handle), 25500);
    m_clock.advanceMilliseconds(1);
    EXPECT_EQ(valueOf(*chip, handle), NO_VALUE);
    m_clock.advanceMilliseconds(1000000);
    EXPECT_EQ(valueOf(*chip, handle), NO_VALUE);
    sensortree::write(directory, "temp1_input", "26000");
    EXPECT_EQ(valueOf(*chip, handle), 26000);
}

TEST_F(LostSensorsTest, ValueIsNotAvailableAsLongAsTheFaultFlagIsSet) {
    const auto directory = addI2c(0, "lm90", 0, 0x4c, {{"temp1_input", "30000"}, {"temp1_fault", "0"}});
    const auto chip = initialisedChip();
    const unsigned handle = onlyHandle(*chip);
    sensortree::write(directory, "temp1_fault", "1");
    sensortree::write(directory, "temp1_input", "-128000");
    EXPECT_EQ(valueOf(*chip, handle), 30000);
    m_clock.advanceMilliseconds(10001);
    EXPECT_EQ(valueOf(*chip, handle), NO_VALUE);
    sensortree::write(directory, "temp1_fault", "0");
    sensortree::write(directory, "temp1_input", "31000");
    EXPECT_EQ(valueOf(*chip, handle), 31000);
}

TEST_F(LostSensorsTest, OtherSensorsAreReadAsEver) {
    const auto first = addLm75(0, 0x48, "25500");
    addLm75(1, 0x4a, "30000");
    const auto chip = initialisedChip();
    const CSensorHandleList handles = handlesOf(*chip);
    sensortree::remove(first);
    m_clock.advanceMilliseconds(20000);
    EXPECT_EQ(valueOf(*chip, handles[0]), NO_VALUE);
    EXPECT_EQ(valueOf(*chip, handles[1]), 30000);
}

TEST_F(LostSensorsTest, ErrorsOfTheDriverAreReadsThatFail) {
    addLm75(0, 0x48, "25500");
    for (const int error : {EIO, ENXIO, ENODEV, ENODATA, EAGAIN, ETIMEDOUT}) {
        const auto chip = initialisedChip();
        const unsigned handle = onlyHandle(*chip);
        const std::string reason = withSystemCallRefused(SYS_read, nextDescriptor(), error, [&] {
            EXPECT_EQ(valueOf(*chip, handle), 25500);
            m_clock.advanceMilliseconds(10001);
            EXPECT_EQ(valueOf(*chip, handle), NO_VALUE);
        });
        if (!reason.empty()) GTEST_SKIP() << reason;
        EXPECT_EQ(valueOf(*chip, handle), 25500);
    }
}

TEST_F(LostSensorsTest, ReadThatFailsOnceIsTriedOnceMore) {
    const auto directory = addLm75(0, 0x48, "25500");
    const auto chip = initialisedChip();
    const unsigned handle = onlyHandle(*chip);
    // A pipe, whose reader gets nothing, and has made way for a file by then.
    sensortree::write(directory, "next", "26000");
    fs::remove(directory / "temp1_input");
    ASSERT_EQ(mkfifo((directory / "temp1_input").c_str(), 0600), 0);
    std::thread driver([&] {
        const int writer = open((directory / "temp1_input").c_str(), O_WRONLY);
        fs::rename(directory / "next", directory / "temp1_input");
        close(writer);
    });
    EXPECT_EQ(valueOf(*chip, handle), 26000);
    driver.join();
}

TEST_F(LostSensorsTest, ReadThatFailsTwiceIsNotTriedAThirdTime) {
    const auto directory = addLm75(0, 0x48, "25500");
    const auto chip = initialisedChip();
    const unsigned handle = onlyHandle(*chip);
    sensortree::write(directory, "next", "26000");
    fs::remove(directory / "temp1_input");
    ASSERT_EQ(mkfifo((directory / "temp1_input").c_str(), 0600), 0);
    ASSERT_EQ(mkfifo((directory / "second").c_str(), 0600), 0);
    std::thread driver([&] {
        const int first = open((directory / "temp1_input").c_str(), O_WRONLY);
        fs::rename(directory / "second", directory / "temp1_input");
        close(first);
        const int second = open((directory / "temp1_input").c_str(), O_WRONLY);
        fs::rename(directory / "next", directory / "temp1_input");
        close(second);
    });
    EXPECT_EQ(valueOf(*chip, handle), 25500);
    driver.join();
    EXPECT_EQ(valueOf(*chip, handle), 26000);
}

TEST_F(LostSensorsTest, ChipsThatChangedNumbersKeepTheirHandles) {
    const auto first = addLm75(0, 0x48, "25500");
    const auto second = addLm75(1, 0x4a, "30000");
    const auto chip = initialisedChip();
    const CSensorHandleList handles = handlesOf(*chip);
    ASSERT_EQ(valueOf(*chip, handles[0]), 25500);
    ASSERT_EQ(valueOf(*chip, handles[1]), 30000);
    sensortree::remove(first);
    sensortree::remove(second);
    addLm75(0, 0x4a, "31000");
    addLm75(1, 0x48, "26500");
    // Too early for a search: each its own last value.
    EXPECT_EQ(valueOf(*chip, handles[0]), 25500);
    EXPECT_EQ(valueOf(*chip, handles[1]), 30000);
    m_clock.advanceMilliseconds(10000);
    EXPECT_EQ(valueOf(*chip, handles[0]), 26500);
    EXPECT_EQ(valueOf(*chip, handles[1]), 31000);
}

TEST_F(LostSensorsTest, AnotherChipInItsPlaceIsNeverRead) {
    const auto first = addLm75(0, 0x48, "25500");
    const auto chip = initialisedChip();
    const unsigned handle = onlyHandle(*chip);
    sensortree::remove(first);
    addLm75(0, 0x4a, "30000");
    for (int i = 0; i < 5; ++i) {
        m_clock.advanceMilliseconds(10001);
        EXPECT_EQ(valueOf(*chip, handle), NO_VALUE);
    }
}

TEST_F(LostSensorsTest, AnotherDriversChipAtTheSamePathIsNeverRead) {
    const auto first = addVirtual(0, "soc", {{"temp1_input", "25500"}});
    const auto chip = initialisedChip();
    const unsigned handle = onlyHandle(*chip);
    sensortree::remove(first);
    addVirtual(0, "other", {{"temp1_input", "30000"}});
    m_clock.advanceMilliseconds(10001);
    EXPECT_EQ(valueOf(*chip, handle), NO_VALUE);
}

TEST_F(LostSensorsTest, ChipThatIsGoneAndBackHasItsValuesAgain) {
    const auto first = addLm75(0, 0x48, "25500");
    const auto chip = initialisedChip();
    const unsigned handle = onlyHandle(*chip);
    sensortree::remove(first);
    EXPECT_EQ(valueOf(*chip, handle), 25500);
    m_clock.advanceMilliseconds(10001);
    EXPECT_EQ(valueOf(*chip, handle), NO_VALUE);
    addLm75(7, 0x48, "26000");
    EXPECT_EQ(valueOf(*chip, handle), NO_VALUE);  // until the next search
    m_clock.advanceMilliseconds(10000);
    EXPECT_EQ(valueOf(*chip, handle), 26000);
}

TEST_F(LostSensorsTest, ChipThatIsBackAtItsPathIsReadAtOnce) {
    const auto first = addLm75(0, 0x48, "25500");
    const auto chip = initialisedChip();
    const unsigned handle = onlyHandle(*chip);
    sensortree::remove(first);
    EXPECT_EQ(valueOf(*chip, handle), 25500);
    addLm75(0, 0x48, "26000");
    EXPECT_EQ(valueOf(*chip, handle), 26000);
}

TEST_F(LostSensorsTest, SearchesAreTenSecondsApart) {
    const auto first = addLm75(0, 0x48, "25500");
    const auto chip = initialisedChip();
    const unsigned handle = onlyHandle(*chip);
    sensortree::remove(first);
    addLm75(3, 0x48, "26000");
    m_clock.advanceMilliseconds(9999);
    EXPECT_EQ(valueOf(*chip, handle), 25500);
    m_clock.advanceMilliseconds(1);
    EXPECT_EQ(valueOf(*chip, handle), 26000);
}

TEST_F(LostSensorsTest, AdaptersNumberMayChange) {
    const auto first = addLm75(0, 0x48, "25500");
    const auto chip = initialisedChip();
    const unsigned handle = onlyHandle(*chip);
    sensortree::remove(first);
    fs::remove_all("/sys/class/i2c-adapter");
    addAdapter(4, "SMBus stub driver");
    addI2c(0, "lm75", 4, 0x48, {{"temp1_input", "26000"}});
    m_clock.advanceMilliseconds(10000);
    EXPECT_EQ(valueOf(*chip, handle), 26000);
}

// Two chips that only their devices' paths tell apart.
class TwinsTest : public LostSensorsTest {
  protected:
    static fs::path addTwin(int number, const std::string& port, const std::string& speed) {
        return sensortree::add(number, "fanhub", "hid", "usb1/" + port + "/0003:1E71:2007.000" + port.back(),
                               {{"fan1_input", speed}});
    }
};

TEST_F(TwinsTest, TwinThatIsLeftIsNotTakenForTheOneThatIsGone) {
    const auto first = addTwin(0, "1-1", "1000");
    addTwin(1, "1-2", "2000");
    const auto chip = initialisedChip();
    const CSensorHandleList handles = handlesOf(*chip);
    ASSERT_EQ(handles.size(), 2U);
    sensortree::remove(first);
    m_clock.advanceMilliseconds(20000);
    EXPECT_EQ(valueOf(*chip, handles[0]), NO_VALUE);
    EXPECT_EQ(valueOf(*chip, handles[1]), 2000);
}

TEST_F(TwinsTest, TwinsThatChangedNumbersKeepTheirHandles) {
    const auto first = addTwin(0, "1-1", "1000");
    const auto second = addTwin(1, "1-2", "2000");
    const auto chip = initialisedChip();
    const CSensorHandleList handles = handlesOf(*chip);
    sensortree::remove(first);
    sensortree::remove(second);
    addTwin(0, "1-2", "2001");
    addTwin(1, "1-1", "1001");
    m_clock.advanceMilliseconds(20000);
    EXPECT_EQ(valueOf(*chip, handles[0]), 1001);
    EXPECT_EQ(valueOf(*chip, handles[1]), 2001);
}

TEST_F(TwinsTest, TwinsThatLookAlikeHaveNoValueOnceTheyAreFoundAnew) {
    const auto first = addVirtual(0, "soc", {{"temp1_input", "1000"}});
    addVirtual(1, "soc", {{"temp1_input", "2000"}});
    const auto chip = initialisedChip();
    const CSensorHandleList handles = handlesOf(*chip);
    EXPECT_EQ(valueOf(*chip, handles[0]), 1000);
    EXPECT_EQ(valueOf(*chip, handles[1]), 2000);
    sensortree::remove(first);
    addVirtual(0, "soc", {{"temp1_input", "3000"}});
    m_clock.advanceMilliseconds(20000);
    EXPECT_EQ(valueOf(*chip, handles[0]), NO_VALUE);
    EXPECT_EQ(valueOf(*chip, handles[1]), 2000);  // whose directory never went
}

}  // namespace
