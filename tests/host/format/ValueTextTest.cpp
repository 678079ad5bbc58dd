#include <gtest/gtest.h>

#include <limits>
#include <memory>

#include "format/ValueText.h"

namespace {

using broker::ObjectPath;
using broker::Value;
using host::pathText;
using host::realText;
using host::valueText;

TEST(ValueTextTest, NumbersBooleansAndNullAreWrittenOut) {
    EXPECT_EQ(valueText(Value::ofSigned(-5)), "-5");
    EXPECT_EQ(valueText(Value::ofUnsigned(18446744073709551615U, CMPI_uint64)), "18446744073709551615");
    EXPECT_EQ(valueText(Value::ofBoolean(true)), "true");
    EXPECT_EQ(valueText(Value::ofBoolean(false)), "false");
    EXPECT_EQ(valueText(Value::null(CMPI_string)), "null");
    EXPECT_EQ(valueText(Value::ofUnsigned(0x1b, CMPI_char16)), "U+001b");
}

TEST(ValueTextTest, TextIsMadeFitForATerminal) {
    EXPECT_EQ(valueText(Value::ofText("a\x1b[0m", CMPI_chars)), "a\\x1b[0m");
    EXPECT_EQ(valueText(Value::ofText("")), "");
}

TEST(ValueTextTest, ArrayIsWrittenInBraces) {
    EXPECT_EQ(valueText(Value::ofArray({Value::ofText("a"), Value::null(CMPI_string)}, CMPI_string)), "{a, null}");
    EXPECT_EQ(valueText(Value::ofArray({}, CMPI_uint8)), "{}");
}

TEST(ValueTextTest, RealsReadBackAndHaveAPoint) {
    EXPECT_EQ(realText(0.1), "0.1");
    EXPECT_EQ(realText(3), "3.0");
    EXPECT_EQ(realText(1e300), "1.0e+300");
    EXPECT_EQ(realText(-std::numeric_limits<double>::infinity()), "-inf");
    EXPECT_EQ(valueText(Value::ofReal(2.5)), "2.5");
}

TEST(PathTextTest, TextsInKeysAreQuotedAndOthersNot) {
    ObjectPath path{"", "root/cimv2", "C", {{"Name", Value::ofText("a\"b\\c")}, {"Number", Value::ofSigned(-1)}}};
    path.keys.push_back({"Flag", Value::ofBoolean(true)});
    EXPECT_EQ(pathText(path), "root/cimv2:C.Name=\"a\\\"b\\\\c\",Number=-1,Flag=TRUE");
}

TEST(PathTextTest, HostStandsInFront) {
    EXPECT_EQ(pathText({"till7", "root", "C", {}}), "//till7/root:C");
}

TEST(PathTextTest, ReferenceKeyIsQuotedOnceMore) {
    Value reference = Value::ofText("", CMPI_ref);
    reference.path = std::make_shared<ObjectPath>(ObjectPath{"", "root", "D", {{"K", Value::ofText("v")}}});
    EXPECT_EQ(pathText({"", "root", "C", {{"Of", reference}}}), "root:C.Of=\"root:D.K=\\\"v\\\"\"");
    EXPECT_EQ(valueText(reference), "root:D.K=\"v\"");
}

}  // namespace
