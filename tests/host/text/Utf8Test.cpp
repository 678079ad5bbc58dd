#include <gtest/gtest.h>

#include <string>

#include "text/Utf8.h"

namespace {

using host::columnsOf;
using host::cutToColumns;
using host::isFitForXml;
using host::printable;
using host::utf8Of;

TEST(PrintableTest, OrdinaryTextStays) {
    EXPECT_EQ(printable("CPU(0000001a) 42 °C, 10 µs, \U0001F321"), "CPU(0000001a) 42 °C, 10 µs, \U0001F321");
}

TEST(PrintableTest, ControlBytesAreEscaped) {
    EXPECT_EQ(printable("a\x1b[2Jb\n\t\x7f"), "a\\x1b[2Jb\\x0a\\x09\\x7f");
    EXPECT_EQ(printable(std::string("a\0b", 3)), "a\\x00b");
}

TEST(PrintableTest, EightBitControlsAreEscapedByteByByte) {
    EXPECT_EQ(printable("\xc2\x9b"
                        "2J"),
              "\\xc2\\x9b2J");
    EXPECT_EQ(printable("\xc2\xa0"), "\xc2\xa0");
}

TEST(PrintableTest, BytesThatAreNoUtf8AreEscaped) {
    EXPECT_EQ(printable("\x80"), "\\x80");                    // a continuation alone
    EXPECT_EQ(printable("\x9b"), "\\x9b");                    // the eight-bit form of ESC [
    EXPECT_EQ(printable("\xe2\x82"), "\\xe2\\x82");           // cut off
    EXPECT_EQ(printable("\xe2\x28\xa1"), "\\xe2(\\xa1");      // broken in the middle
    EXPECT_EQ(printable("\xc0\x9b"), "\\xc0\\x9b");           // overlong
    EXPECT_EQ(printable("\xe0\x80\x9b"), "\\xe0\\x80\\x9b");  // overlong
    EXPECT_EQ(printable("\xed\xa0\x80"), "\\xed\\xa0\\x80");  // a surrogate
    EXPECT_EQ(printable("\xf4\x90\x80\x80"), "\\xf4\\x90\\x80\\x80");
    EXPECT_EQ(printable("\xff"), "\\xff");
}

TEST(FitForXmlTest, ControlsAndBytesThatAreNoUtf8AreNot) {
    for (const char* text : {"", "a b", "\t\r\n", "\xc2\xb0\xe2\x82\xac\xf0\x9f\x98\x80", "\x7f"}) {
        EXPECT_TRUE(isFitForXml(text)) << text;
    }
    for (const char* text :
         {"\x01", "a\x1f", "\x0b", "\x80", "\xc3", "\xc0\x80", "\xed\xa0\x80", "\xef\xbf\xbe", "\xef\xbf\xbf"}) {
        EXPECT_FALSE(isFitForXml(text)) << testing::PrintToString(text);
    }
    EXPECT_FALSE(isFitForXml(std::string(1, '\0')));
}

TEST(Utf8OfTest, GivesWhatIsReadAsTheSameCharacter) {
    for (const char32_t code : {U'\x1', U'\x7f', U'\x80', U'\x7ff', U'\x800', U'\xffff', U'\x10000', U'\x10ffff'}) {
        const std::string text = utf8Of(code);
        const host::Character read = host::firstCharacter(text);
        EXPECT_TRUE(read.isUtf8);
        EXPECT_EQ(read.codePoint, code);
        EXPECT_EQ(read.length, text.size());
    }
}

TEST(Utf8OfTest, SurrogateIsNoUtf8) {
    EXPECT_FALSE(host::firstCharacter(utf8Of(0xd800)).isUtf8);
}

TEST(ColumnsTest, CountCharactersNotBytes) {
    EXPECT_EQ(columnsOf(""), 0U);
    EXPECT_EQ(columnsOf("42 °C"), 5U);
}

TEST(ColumnsTest, CutNeverSplitsACharacter) {
    EXPECT_EQ(cutToColumns("4°C", 2), "4°");
    EXPECT_EQ(cutToColumns("4°C", 3), "4°C");
    EXPECT_EQ(cutToColumns("4°C", 9), "4°C");
    EXPECT_EQ(cutToColumns("4°C", 0), "");
}

}  // namespace
