#include <gtest/gtest.h>

#include <limits>
#include <memory>

#include "Instances.h"
#include "format/MofFormat.h"

namespace {

using broker::Reply;
using broker::Value;
using host::Command;
using host::mofString;
using host::mofText;

std::string declared(Value value) {
    return mofText(answerOf(Command::Get, replyOf(CMPI_RC_OK, {instanceOf("C", "N", {{"P", std::move(value)}})})));
}

std::string around(const std::string& value) {
    return "instance of C {\n    P = " + value + ";\n};\n";
}

TEST(MofFormatTest, EachInstanceIsADeclaration) {
    EXPECT_EQ(mofText(answerOf(Command::Instances,
                               replyOf(CMPI_RC_OK, {sensorOf("CPU", -7, 2, 0), instanceOf("Other", "O", {})}))),
              "instance of TQS_NumericSensor {\n"
              "    BaseUnits = 2;\n"
              "    CurrentReading = -7;\n"
              "    Name = \"CPU\";\n"
              "    UnitModifier = 0;\n"
              "};\n"
              "instance of Other {\n"
              "};\n");
}

TEST(MofFormatTest, NamesGiveTheKeys) {
    Reply reply;
    reply.paths.push_back({"", "root/cimv2", "C", {{"Name", Value::ofText("A")}}});
    EXPECT_EQ(mofText(answerOf(Command::Names, reply)), "instance of C {\n    Name = \"A\";\n};\n");
}

TEST(MofFormatTest, ErrorIsAComment) {
    Reply reply = replyOf(CMPI_RC_ERR_FAILED, {});
    reply.status.message = "line\nbreak";
    EXPECT_EQ(mofText(answerOf(Command::Instances, reply)),
              "// The provider ended with 1 CMPI_RC_ERR_FAILED: line\\x0abreak\n");
}

TEST(MofFormatTest, ValuesOfAllKindsAreWrittenAsMof) {
    EXPECT_EQ(declared(Value::ofBoolean(true)), around("TRUE"));
    EXPECT_EQ(declared(Value::ofBoolean(false)), around("FALSE"));
    EXPECT_EQ(declared(Value::null(CMPI_sint32)), around("NULL"));
    EXPECT_EQ(declared(Value::ofUnsigned(255, CMPI_uint8)), around("255"));
    EXPECT_EQ(declared(Value::ofReal(3)), around("3.0"));
    EXPECT_EQ(declared(Value::ofReal(std::numeric_limits<double>::quiet_NaN())), around("NULL"));
    EXPECT_EQ(declared(Value::ofUnsigned(0x41, CMPI_char16)), around("'\\x0041'"));
    EXPECT_EQ(declared(Value::ofArray({Value::ofText("a"), Value::ofText("")}, CMPI_string)), around("{\"a\", \"\"}"));
    EXPECT_EQ(declared(Value::ofText("20260101000000.000000+000", CMPI_dateTime)),
              around("\"20260101000000.000000+000\""));
}

TEST(MofFormatTest, EmbeddedInstanceIsAStringOfMof) {
    Value embedded = Value::ofText("", CMPI_instance);
    embedded.instance = std::make_shared<broker::Instance>(instanceOf("D", "E", {{"Q", Value::ofText("x")}}));
    EXPECT_EQ(declared(embedded), around("\"instance of D {\\n    Q = \\\"x\\\";\\n};\\n\""));
}

TEST(MofStringTest, SpecialCharactersAreEscaped) {
    EXPECT_EQ(mofString("a\"b\\c\b\t\n\f\r"), "\"a\\\"b\\\\c\\b\\t\\n\\f\\r\"");
}

TEST(MofStringTest, ControlsHaveFourDigitsSoThatNoneFollows) {
    EXPECT_EQ(mofString("\x1b"
                        "1"),
              "\"\\x001B1\"");
    EXPECT_EQ(mofString("\x7f"), "\"\\x007F\"");
    EXPECT_EQ(mofString("\xc2\x9b"), "\"\\x009B\"");
}

TEST(MofStringTest, TextStaysAndStrayBytesAreEscaped) {
    EXPECT_EQ(mofString("42 °C\xff"), "\"42 °C\\x00FF\"");
}

}  // namespace
