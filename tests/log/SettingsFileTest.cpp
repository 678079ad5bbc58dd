#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <climits>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "OpenDescriptors.h"
#include "SettingsFile.h"
#include "TemporaryDirectory.h"

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

namespace {

using Settings = std::vector<std::pair<std::string, std::string>>;

class SettingsFileTest : public testing::Test {
  protected:
    void write(const std::string& contents) const { std::ofstream(m_path, std::ios::binary) << contents; }

    Settings read() const {
        Settings settings;
        readSettings(m_path.c_str(),
                     [&](const std::string& key, const std::string& value) { settings.emplace_back(key, value); });
        return settings;
    }

    Settings settingsIn(const std::string& contents) const {
        write(contents);
        return read();
    }

    const TemporaryDirectory m_directory;
    const std::string m_path = m_directory.path() / "settings";
};

TEST_F(SettingsFileTest, SettingsComeInTheFilesOrder) {
    EXPECT_THAT(settingsIn("b=1\na=2\nb=3\n"), ElementsAre(Pair("b", "1"), Pair("a", "2"), Pair("b", "3")));
}

TEST_F(SettingsFileTest, LinesThatAreNoSettingsAreSkipped) {
    EXPECT_THAT(settingsIn("\nword\n=1\n=\na=1\n"), ElementsAre(Pair("a", "1")));
}

TEST_F(SettingsFileTest, NothingIsTrimmedAndNothingIsAComment) {
    EXPECT_THAT(settingsIn("a =1\n\tb= 2 \n#c=3 # three\n"),
                ElementsAre(Pair("a ", "1"), Pair("\tb", " 2 "), Pair("#c", "3 # three")));
}

TEST_F(SettingsFileTest, FirstEqualsSignSeparates) {
    EXPECT_THAT(settingsIn("a=b=c\na==\n"), ElementsAre(Pair("a", "b=c"), Pair("a", "=")));
}

TEST_F(SettingsFileTest, ValueMayBeEmpty) {
    EXPECT_THAT(settingsIn("a=\nb="), ElementsAre(Pair("a", ""), Pair("b", "")));
}

TEST_F(SettingsFileTest, LastLineWithoutNewlineLosesItsLastCharacter) {
    EXPECT_THAT(settingsIn("a=1"), ElementsAre(Pair("a", "")));
    EXPECT_THAT(settingsIn("a=10"), ElementsAre(Pair("a", "1")));
}

TEST_F(SettingsFileTest, CarriageReturnStaysInTheValue) {
    EXPECT_THAT(settingsIn("a=1\r\n"), ElementsAre(Pair("a", "1\r")));
}

TEST_F(SettingsFileTest, LineIsCutAtItsFirstNulByte) {
    using namespace std::string_literals;
    EXPECT_THAT(settingsIn("a=12\0 34\nb\0=5\nc=6\n"s), ElementsAre(Pair("a", "1"), Pair("c", "6")));
}

TEST_F(SettingsFileTest, LinesMayBeOfAnyLength) {
    const std::string key(200'000, 'k');
    const std::string value(1'000'000, 'v');
    EXPECT_THAT(settingsIn(key + "=" + value + "\na=1\n"), ElementsAre(Pair(key, value), Pair("a", "1")));
}

TEST_F(SettingsFileTest, EmptyFileHasNoSettings) {
    EXPECT_THAT(settingsIn(""), IsEmpty());
}

TEST_F(SettingsFileTest, MissingFileHasNoSettings) {
    EXPECT_THAT(read(), IsEmpty());
}

TEST_F(SettingsFileTest, FileThatCannotBeReadHasNoSettings) {
    std::filesystem::create_directory(m_path);
    EXPECT_THAT(read(), IsEmpty());
}

TEST_F(SettingsFileTest, FileIsClosedAtItsEnd) {
    const std::size_t before = openDescriptors();
    settingsIn("a=1\n");
    EXPECT_EQ(openDescriptors(), before);
}

TEST_F(SettingsFileTest, FileIsClosedWhenTheReceiverThrows) {
    write("a=1\nb=2\n");
    const std::size_t before = openDescriptors();
    const auto refuse = [](const std::string& key, const std::string&) { throw std::runtime_error(key); };
    EXPECT_THROW(readSettings(m_path.c_str(), refuse), std::runtime_error);
    EXPECT_EQ(openDescriptors(), before);
}

// Whether it is a number, and which, as scanf says it.
void expectAsScanfReadsIt(const std::string& value, bool isNumber) {
    unsigned long expected = 99;
    ASSERT_EQ(std::sscanf(value.c_str(), "%lu", &expected) == 1, isNumber) << "'" << value << "'";
    unsigned long number = 99;
    EXPECT_EQ(scanUnsigned(value, number), isNumber) << "'" << value << "'";
    EXPECT_EQ(number, expected) << "'" << value << "'";
}

TEST(ScanUnsignedTest, NumbersAreReadAsScanfDoes) {
    for (const char* value : {"0", "1", "+7", "010", "4294967296", "18446744073709551615", "-1", "-0"})
        expectAsScanfReadsIt(value, true);
}

TEST(ScanUnsignedTest, NumbersThatAreTooLargeAreReadAsScanfDoes) {
    for (const char* value : {"18446744073709551616", "-18446744073709551616", "99999999999999999999999999"})
        expectAsScanfReadsIt(value, true);
}

TEST(ScanUnsignedTest, WhatFollowsANumberIsLeft) {
    for (const char* value : {" \t\n\v\f\r7", "7 # seven", "7\r", "7.9", "0x1f", "1e3", "1,000"})
        expectAsScanfReadsIt(value, true);
}

TEST(ScanUnsignedTest, WhatIsNoNumberLeavesTheOldOne) {
    for (const char* value : {"", " ", "x", "x1", "-", "+", "+-1", "--1", "- 1", ".5", "\2401"})
        expectAsScanfReadsIt(value, false);
}

TEST(ScanUnsignedTest, NegativeNumberWrapsAround) {
    unsigned long number = 0;
    EXPECT_TRUE(scanUnsigned("-1", number));
    EXPECT_EQ(number, ULONG_MAX);
}

}  // namespace
