#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Instances.h"
#include "format/TableFormat.h"

namespace {

using broker::Reply;
using broker::Value;
using host::Command;
using testing::HasSubstr;

std::string textOf(const host::Answer& answer) {
    return host::tableText(answer, host::Charset::Utf8);
}

TEST(TableFormatTest, SensorsAreShownWithReadingStateAndLimits) {
    const broker::Instance cpu = sensorOf("CPU(0000001a)", 4200, 2, -2,
                                          {{"LowerThresholdNonCritical", 500},
                                           {"UpperThresholdNonCritical", 4000},
                                           {"UpperThresholdCritical", 9000},
                                           {"UpperThresholdFatal", 10000}});
    const broker::Instance fan = sensorOf("Fan(00000002)", 900, 19, 0);
    EXPECT_EQ(textOf(answerOf(Command::Instances, replyOf(CMPI_RC_OK, {cpu, fan}))),
              "Sensor          Reading  State  Lower limits (n/c/f)  Upper limits (n/c/f)\n"
              "CPU(0000001a)  42.00 °C  high   5.00 / - / -          40.00 / 90.00 / 100.00\n"
              "Fan(00000002)   900 rpm  ok     -                     -\n");
}

TEST(TableFormatTest, AsciiKeepsTheColumnsStraight) {
    const broker::Instance cpu = sensorOf("T\u00fcr(0000001a)", 4200, 2, -2, {{"UpperThresholdCritical", 9000}});
    const broker::Instance fan = sensorOf("Fan(00000002)", 900, 19, 0);
    EXPECT_EQ(host::tableText(answerOf(Command::Instances, replyOf(CMPI_RC_OK, {cpu, fan})), host::Charset::Ascii),
              "Sensor                   Reading  State  Lower limits (n/c/f)  Upper limits (n/c/f)\n"
              "T\\xc3\\xbcr(0000001a)  42.00 degC  ok     -                     - / 90.00 / -\n"
              "Fan(00000002)            900 rpm  ok     -                     -\n");
}

TEST(TableFormatTest, AsciiIsAllThatStandsAroundTheTablesToo) {
    const broker::Instance cpu = sensorOf("T\u00fcr", 4200, 2, -2);
    broker::Reply reply = replyOf(CMPI_RC_ERR_FAILED, {cpu});
    reply.status.message = "zu hei\u00df";
    EXPECT_EQ(host::tableText(answerOf(Command::Get, reply), host::Charset::Ascii),
              "root/cimv2:TQS_NumericSensor.Name=\"T\\xc3\\xbcr\"\n"
              "\n"
              "Property        Type    Value\n"
              "BaseUnits       uint16  2\n"
              "CurrentReading  sint32  4200 (42.00 degC)\n"
              "Name            string  T\\xc3\\xbcr\n"
              "UnitModifier    sint32  -2\n"
              "\n"
              "State: ok\n"
              "\n"
              "Incomplete: the provider ended with 1 CMPI_RC_ERR_FAILED: zu hei\\xc3\\x9f.\n");
}

TEST(TableFormatTest, PartialListSaysSo) {
    const std::string text =
        textOf(answerOf(Command::Instances, replyOf(CMPI_RC_ERR_FAILED, {sensorOf("A", 1, 0, 0)})));
    EXPECT_THAT(text, HasSubstr("A             1  ok"));
    EXPECT_THAT(text, HasSubstr("\nIncomplete: the provider ended with 1 CMPI_RC_ERR_FAILED.\n"));
}

TEST(TableFormatTest, ErrorWithoutDataLeavesNothingToShow) {
    EXPECT_EQ(textOf(answerOf(Command::Names, replyOf(CMPI_RC_ERR_FAILED, {}))), "");
}

TEST(TableFormatTest, SuccessWithoutDataIsSaid) {
    EXPECT_EQ(textOf(answerOf(Command::Delete, replyOf(CMPI_RC_OK, {}))),
              "The provider answered 0 CMPI_RC_OK, without data.\n");
}

TEST(TableFormatTest, NamesAreShownInAColumnForEachKey) {
    Reply reply;
    reply.paths.push_back({"", "root/cimv2", "C", {{"Name", Value::ofText("A")}}});
    reply.paths.push_back({"", "root/cimv2", "C", {{"name", Value::ofText("B\n")}, {"Slot", Value::ofSigned(3)}}});
    EXPECT_EQ(textOf(answerOf(Command::Names, reply)),
              "Name   Slot\n"
              "A\n"
              "B\\x0a  3\n");
}

TEST(TableFormatTest, OneInstanceIsShownWithAllItsProperties) {
    broker::Instance sensor =
        sensorOf("CPU", 4200, 2, -2, {{"MinReadable", 0}, {"MaxReadable", 8400}, {"Accuracy", 5}});
    sensor.properties.push_back({"IsLinear", Value::ofBoolean(true)});
    EXPECT_EQ(textOf(answerOf(Command::Get, replyOf(CMPI_RC_OK, {sensor}))),
              "root/cimv2:TQS_NumericSensor.Name=\"CPU\"\n"
              "\n"
              "Property        Type     Value\n"
              "BaseUnits       uint16   2\n"
              "CurrentReading  sint32   4200 (42.00 °C)\n"
              "Name            string   CPU\n"
              "UnitModifier    sint32   -2\n"
              "MinReadable     sint32   0 (0.00 °C)\n"
              "MaxReadable     sint32   8400 (84.00 °C)\n"
              "Accuracy        sint32   5\n"
              "IsLinear        boolean  true\n"
              "\n"
              "State: ok\n"
              "Between its limits: [--------------------|-------------------]\n");
}

TEST(TableFormatTest, EventLogIsShownWithLinesAndState) {
    const broker::Instance log = instanceOf(
        "TQS_SystemEventLog", "L",
        {{"LogFull", Value::ofBoolean(false)},
         {"LogLines", Value::ofArray({Value::ofText("first", CMPI_chars), Value::ofText("", CMPI_chars)}, CMPI_chars)},
         {"LogMultipleEventCountIncrement", Value::ofUnsigned(1, CMPI_uint8)},
         {"LogMultipleEventTimeWindow", Value::ofUnsigned(60, CMPI_uint8)},
         {"LogValid", Value::ofBoolean(true)}});
    EXPECT_EQ(textOf(answerOf(Command::Log, replyOf(CMPI_RC_OK, {log}))),
              "No.  Line\n"
              "  1  first\n"
              "  2\n"
              "\n"
              "LogValid: true\n"
              "LogFull: false\n"
              "LogMultipleEventCountIncrement: 1\n"
              "LogMultipleEventTimeWindow: 60\n");
}

TEST(TableFormatTest, LinesThatBeginWithANumberGetNoSecondOne) {
    const broker::Instance log = instanceOf(
        "TQS_SystemEventLog", "L",
        {{"LogLines",
          Value::ofArray({Value::ofText("01 a", CMPI_chars), Value::ofText("02 b", CMPI_chars)}, CMPI_chars)}});
    EXPECT_EQ(textOf(answerOf(Command::Log, replyOf(CMPI_RC_OK, {log}))), "Line\n01 a\n02 b\n\n");
}

TEST(TableFormatTest, EventLogWithoutLinesSaysSo) {
    const broker::Instance log = instanceOf("TQS_SystemEventLog", "L", {{"LogValid", Value::ofBoolean(true)}});
    EXPECT_EQ(textOf(answerOf(Command::Log, replyOf(CMPI_RC_OK, {log}))),
              "The event log has no lines.\n\nLogValid: true\n");
}

TEST(TableFormatTest, InstancesOfOtherClassesShowTheirProperties) {
    const broker::Instance other = instanceOf("Other", "O\x1b", {{"Size", Value::ofUnsigned(3)}});
    EXPECT_EQ(textOf(answerOf(Command::Instances, replyOf(CMPI_RC_OK, {other, other}))),
              "root/cimv2:Other.Name=\"O\\x1b\"\n\nProperty  Type    Value\nSize      uint32  3\n"
              "\n"
              "root/cimv2:Other.Name=\"O\\x1b\"\n\nProperty  Type    Value\nSize      uint32  3\n");
}

TEST(StatusTextTest, HasNumberNameAndMessage) {
    EXPECT_EQ(host::statusText({CMPI_RC_ERR_METHOD_NOT_AVAILABLE, {}}), "16 CMPI_RC_ERR_METHOD_NOT_AVAILABLE");
    EXPECT_EQ(host::statusText({CMPI_RC_ERR_FAILED, "no\x07"}), "1 CMPI_RC_ERR_FAILED: no\\x07");
}

}  // namespace
