// The decoder of the firmware's event log, without a system.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "EventLog.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr char VALID = 1;
constexpr char FULL = 2;
constexpr std::size_t HEADER_LENGTH = 16;

std::string bytes(std::initializer_list<unsigned> numbers) {
    std::string text;
    for (const unsigned number : numbers) text += static_cast<char>(number);
    return text;
}

// Of an area with a header of format 1 at its start and the records behind it.
std::string structure(char status = VALID) {
    std::string text = bytes({15, 23, 0, 0xf, 0, 2, 0, 0, HEADER_LENGTH, 0, 3, 0, 7, 0, 0, 0, 0, 0, 1, 0x10});
    text[11] = status;
    return text + bytes({1, 0, 2, 0, 0});
}

std::string header(unsigned window = 0x59, unsigned increment = 200) {
    return bytes({0, 0, 0, 0, 0, window, increment, 0, 0, 0, 0, 0, 0, 0, 0, 1});
}

std::string record(unsigned type, const std::string& data = "",
                   const std::string& time = bytes({0x26, 2, 0x17, 6, 0x56, 0x51})) {
    return bytes({type, static_cast<unsigned>(8 + data.size())}) + time + data;
}

const std::string END = bytes({0xff});

CSystemEventLog decoded(const std::string& records, char status = VALID) {
    return decodeEventLog(structure(status), header() + records);
}

TEST(EventLogTest, RecordIsItsNumberTimeTypeAndData) {
    const CSystemEventLog log = decoded(record(8, bytes({2, 1, 0, 0})) + record(0x17) + END);
    EXPECT_THAT(log.lines, ElementsAre("0001 2026-02-17 06:56:51 POST error (data 02 01 00 00)",
                                       "0002 2026-02-17 06:56:51 System boot"));
    EXPECT_EQ(log.logValid, 1);
    EXPECT_EQ(log.logFull, 0);
}

TEST(EventLogTest, EachTypeHasItsName) {
    const std::map<unsigned, std::string> names = {
        {0x01, "Single-bit ECC memory error"},
        {0x02, "Multi-bit ECC memory error"},
        {0x03, "Parity memory error"},
        {0x04, "Bus time-out"},
        {0x05, "I/O channel check"},
        {0x06, "Software NMI"},
        {0x07, "POST memory resize"},
        {0x08, "POST error"},
        {0x09, "PCI parity error"},
        {0x0a, "PCI system error"},
        {0x0b, "CPU failure"},
        {0x0c, "EISA fail-safe timer time-out"},
        {0x0d, "Correctable memory log disabled"},
        {0x0e, "Logging disabled for an event type"},
        {0x10, "System limit exceeded"},
        {0x11, "Hardware timer expired"},
        {0x12, "System configuration information"},
        {0x13, "Hard disk information"},
        {0x14, "System reconfigured"},
        {0x15, "Uncorrectable CPU-complex error"},
        {0x16, "Log area cleared"},
        {0x17, "System boot"},
        {0x00, "Reserved type 0x00"},
        {0x0f, "Reserved type 0x0f"},
        {0x18, "Reserved type 0x18"},
        {0x7f, "Reserved type 0x7f"},
        {0x80, "OEM type 0x80"},
        {0xe0, "OEM type 0xe0"},
        {0xfe, "OEM type 0xfe"},
    };
    for (const auto& [type, name] : names) {
        EXPECT_THAT(decoded(record(type) + END).lines, ElementsAre("0001 2026-02-17 06:56:51 " + name)) << type;
    }
}

TEST(EventLogTest, YearsFrom80OnAreOfTheLastCentury) {
    const auto lineOf = [](unsigned year) {
        return decoded(record(0x17, "", bytes({year, 2, 0x28, 0x23, 0x59, 0x59})) + END).lines;
    };
    EXPECT_THAT(lineOf(0x79), ElementsAre("0001 2079-02-28 23:59:59 System boot"));
    EXPECT_THAT(lineOf(0x80), ElementsAre("0001 1980-02-28 23:59:59 System boot"));
    EXPECT_THAT(lineOf(0x99), ElementsAre("0001 1999-02-28 23:59:59 System boot"));
    EXPECT_THAT(lineOf(0x00), ElementsAre("0001 2000-02-28 23:59:59 System boot"));
}

TEST(EventLogTest, TimeThatCannotBeEndsTheListAndTheLogIsNotValid) {
    const std::string impossible[] = {
        bytes({0x26, 0, 0x17, 6, 0x56, 0x51}),       bytes({0x26, 0x13, 0x17, 6, 0x56, 0x51}),
        bytes({0x26, 2, 0, 6, 0x56, 0x51}),          bytes({0x26, 2, 0x29, 6, 0x56, 0x51}),
        bytes({0x26, 4, 0x31, 6, 0x56, 0x51}),       bytes({0x26, 1, 0x32, 6, 0x56, 0x51}),
        bytes({0x26, 2, 0x17, 0x24, 0x56, 0x51}),    bytes({0x26, 2, 0x17, 6, 0x60, 0x51}),
        bytes({0x26, 2, 0x17, 6, 0x56, 0x60}),       bytes({0x2a, 2, 0x17, 6, 0x56, 0x51}),
        bytes({0xa2, 2, 0x17, 6, 0x56, 0x51}),       bytes({0x26, 2, 0x17, 6, 0x5a, 0x51}),
        bytes({0xff, 0xff, 0xff, 0xff, 0xff, 0xff}),
    };
    for (const std::string& time : impossible) {
        const CSystemEventLog log = decoded(record(0x17) + record(8, "", time) + record(0x16) + END);
        EXPECT_THAT(log.lines, ElementsAre("0001 2026-02-17 06:56:51 System boot")) << testing::PrintToString(time);
        EXPECT_EQ(log.logValid, 0);
    }
}

TEST(EventLogTest, LeapDaysAreThoseOfTheCalendar) {
    const auto isTaken = [](unsigned year) {
        return decoded(record(0x17, "", bytes({year, 2, 0x29, 0, 0, 0})) + END).logValid == 1;
    };
    EXPECT_TRUE(isTaken(0x24));
    EXPECT_TRUE(isTaken(0x00));
    EXPECT_TRUE(isTaken(0x96));
    EXPECT_FALSE(isTaken(0x23));
}

TEST(EventLogTest, LengthThatCannotBeEndsTheListAndTheLogIsNotValid) {
    const std::string time = bytes({0x26, 2, 0x17, 6, 0x56, 0x51});
    for (const unsigned length : {0U, 1U, 7U, 9U, 127U, 0x80U}) {
        const CSystemEventLog log = decoded(record(0x17) + bytes({8, length}) + time);
        EXPECT_THAT(log.lines, ElementsAre("0001 2026-02-17 06:56:51 System boot")) << length;
        EXPECT_EQ(log.logValid, 0);
    }
}

TEST(EventLogTest, TornRecordEndsTheListAndTheLogIsNotValid) {
    const std::string whole = record(0x17) + record(8, bytes({1, 2, 3, 4}));
    for (std::size_t cut = 9; cut < whole.size(); ++cut) {
        const CSystemEventLog log = decoded(whole.substr(0, cut));
        EXPECT_EQ(log.lines.size(), 1U) << cut;
        EXPECT_EQ(log.logValid, 0) << cut;
    }
    EXPECT_EQ(decoded(whole).lines.size(), 2U);
}

TEST(EventLogTest, MarkOfARecordThatWasReadIsNoPartOfItsLength) {
    std::string marked = record(0x17, bytes({5}));
    marked[1] = static_cast<char>(marked[1] | 0x80);
    EXPECT_THAT(decoded(marked + END).lines, ElementsAre("0001 2026-02-17 06:56:51 System boot (data 05)"));
}

TEST(EventLogTest, NothingBehindTheEndIsTaken) {
    const CSystemEventLog log = decoded(END + record(0x17));
    EXPECT_THAT(log.lines, IsEmpty());
    EXPECT_EQ(log.logValid, 1);
}

TEST(EventLogTest, LogThatFillsItsAreaNeedsNoEnd) {
    const CSystemEventLog log = decoded(record(0x17), VALID | FULL);
    EXPECT_EQ(log.lines.size(), 1U);
    EXPECT_EQ(log.logValid, 1);
    EXPECT_EQ(log.logFull, 1);
}

TEST(EventLogTest, StructureSaysWhetherTheLogIsValid) {
    EXPECT_EQ(decoded(END, 0).logValid, 0);
    EXPECT_EQ(decoded(END, FULL).logValid, 0);
    EXPECT_EQ(decoded(END, FULL).logFull, 1);
    EXPECT_EQ(decoded(record(0x17) + END, 0).lines.size(), 1U);
}

TEST(EventLogTest, HeaderHoldsWindowInDecimalDigitsAndIncrement) {
    const CSystemEventLog log = decodeEventLog(structure(), header(0x59, 200) + END);
    EXPECT_EQ(log.multipleEventTimeWindow, 59);
    EXPECT_EQ(log.multipleEventCountIncrement, 200);
}

TEST(EventLogTest, WindowThatIsNoNumberMakesTheLogNotValid) {
    const CSystemEventLog log = decodeEventLog(structure(), header(0x5a, 200) + record(0x17) + END);
    EXPECT_EQ(log.multipleEventTimeWindow, 0);
    EXPECT_EQ(log.multipleEventCountIncrement, 0);
    EXPECT_EQ(log.logValid, 0);
    EXPECT_EQ(log.lines.size(), 1U);
}

TEST(EventLogTest, WithoutAHeaderWindowAndIncrementAreZero) {
    std::string without = structure();
    without[20] = 0;
    const CSystemEventLog log = decodeEventLog(without, header() + record(0x17) + END);
    EXPECT_EQ(log.multipleEventTimeWindow, 0);
    EXPECT_EQ(log.multipleEventCountIncrement, 0);
    EXPECT_EQ(log.logValid, 1);
    EXPECT_EQ(log.lines.size(), 1U);
}

TEST(EventLogTest, StructureOfTheFirstVersionHasNoHeaderFormat) {
    std::string first = structure().substr(0, 20);
    first[1] = 20;
    const CSystemEventLog log = decodeEventLog(first + bytes({1, 1, 1}), header() + record(0x17) + END);
    EXPECT_EQ(log.multipleEventCountIncrement, 0);
    EXPECT_EQ(log.logValid, 1);
    EXPECT_EQ(log.lines.size(), 1U);
}

TEST(EventLogTest, OffsetsAreThoseOfTheStructure) {
    std::string moved = structure();
    moved[6] = 4;  // the header
    moved[8] = 40;
    const CSystemEventLog log =
        decodeEventLog(moved, std::string(4, '\0') + header(0x12, 3) + std::string(20, '\0') + record(0x17) + END);
    EXPECT_EQ(log.multipleEventTimeWindow, 12);
    EXPECT_EQ(log.multipleEventCountIncrement, 3);
    EXPECT_EQ(log.lines.size(), 1U);
    EXPECT_EQ(log.logValid, 1);
}

TEST(EventLogTest, OffsetsBeyondTheAreaMakeTheLogNotValid) {
    std::string far = structure();
    far[9] = 0x7f;
    EXPECT_EQ(decodeEventLog(far, header() + END).logValid, 0);
    far = structure();
    far[7] = 0x7f;
    EXPECT_EQ(decodeEventLog(far, header() + END).logValid, 0);
}

TEST(EventLogTest, PlaceholderOfFirmwareWithoutALogIsNotValidAndEmpty) {
    std::string placeholder = structure(0);
    placeholder[4] = 4;
    placeholder[5] = 0;
    placeholder[8] = 0;
    const CSystemEventLog log = decodeEventLog(placeholder, std::string(4, '\0'));
    EXPECT_THAT(log.lines, IsEmpty());
    EXPECT_EQ(log.logValid, 0);
}

TEST(EventLogTest, RubbishIsNotValid) {
    std::string rubbish;
    unsigned state = 1;
    for (int i = 0; i < 4096; ++i) rubbish += static_cast<char>((state = state * 1103515245 + 12345) >> 16);
    const CSystemEventLog log = decodeEventLog(structure(), rubbish);
    EXPECT_EQ(log.logValid, 0);
    EXPECT_THAT(log.lines, IsEmpty());
}

TEST(EventLogTest, StructureThatIsTooShortIsNone) {
    for (std::size_t length = 0; length < 20; ++length) {
        const CSystemEventLog log = decodeEventLog(structure(VALID | FULL).substr(0, length), header() + END);
        EXPECT_EQ(log.logValid, 0);
        EXPECT_EQ(log.logFull, 0);
        EXPECT_THAT(log.lines, IsEmpty());
    }
}

TEST(EventLogTest, EmptyAreaIsNotValid) {
    EXPECT_EQ(decodeEventLog(structure(), "").logValid, 0);
}

}  // namespace
