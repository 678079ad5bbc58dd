#include <gtest/gtest.h>

#include <limits>
#include <memory>
#include <nlohmann/json.hpp>

#include "Instances.h"
#include "format/JsonFormat.h"

namespace {

using broker::Reply;
using broker::Value;
using host::Command;
using host::JsonLayout;
using nlohmann::json;

json parsed(const host::Answer& answer) {
    return json::parse(host::jsonText(answer, JsonLayout::Indented));
}

json property(Value value) {
    const Reply reply = replyOf(CMPI_RC_OK, {instanceOf("C", "N", {{"P", std::move(value)}})});
    return parsed(answerOf(Command::Get, reply))["instances"][0]["properties"]["P"];
}

TEST(JsonFormatTest, DocumentHasAllMembers) {
    const json expected = json::parse(R"({
        "command": "instances", "namespace": "root/cimv2", "class": "TQS_NumericSensor", "simulated": null,
        "status": {"rc": 0, "name": "CMPI_RC_OK"},
        "paths": [],
        "instances": [{
            "path": {"namespace": "root/cimv2", "class": "TQS_NumericSensor", "keys": {"Name": "CPU"}},
            "properties": {"BaseUnits": 2, "CurrentReading": -7, "Name": "CPU", "UnitModifier": 0}
        }]
    })");
    EXPECT_EQ(parsed(answerOf(Command::Instances, replyOf(CMPI_RC_OK, {sensorOf("CPU", -7, 2, 0)}))), expected);
}

TEST(JsonFormatTest, MembersAreTheSameWithoutData) {
    Reply reply;
    reply.status = {CMPI_RC_ERR_NOT_SUPPORTED, "read-only"};
    const json document = parsed(answerOf(Command::Create, reply));
    EXPECT_EQ(document["command"], "create");
    EXPECT_EQ(document["status"],
              json::parse(R"({"rc": 7, "name": "CMPI_RC_ERR_NOT_SUPPORTED", "message": "read-only"})"));
    EXPECT_EQ(document["paths"], json::array());
    EXPECT_EQ(document["instances"], json::array());
}

TEST(JsonFormatTest, PartialListComesWithItsError) {
    const json document = parsed(answerOf(Command::Instances, replyOf(CMPI_RC_ERR_FAILED, {sensorOf("A", 1, 0, 0)})));
    EXPECT_EQ(document["status"]["rc"], 1);
    EXPECT_EQ(document["instances"].size(), 1U);
}

TEST(JsonFormatTest, PathsAreListedWithTheirKeys) {
    Reply reply;
    reply.paths.push_back({"till7", "root/cimv2", "C", {{"Name", Value::ofText("A")}, {"Slot", Value::ofSigned(3)}}});
    EXPECT_EQ(parsed(answerOf(Command::Names, reply))["paths"],
              json::parse(R"([{"host": "till7", "namespace": "root/cimv2", "class": "C",
                               "keys": {"Name": "A", "Slot": 3}}])"));
}

TEST(JsonFormatTest, NumbersAreNumbersAndExact) {
    EXPECT_EQ(property(Value::ofUnsigned(std::numeric_limits<std::uint64_t>::max(), CMPI_uint64)).get<std::uint64_t>(),
              std::numeric_limits<std::uint64_t>::max());
    EXPECT_EQ(property(Value::ofSigned(std::numeric_limits<std::int64_t>::min(), CMPI_sint64)).get<std::int64_t>(),
              std::numeric_limits<std::int64_t>::min());
    EXPECT_TRUE(property(Value::ofUnsigned(3, CMPI_uint8)).is_number_unsigned());
    EXPECT_EQ(property(Value::ofReal(0.5)), 0.5);
    EXPECT_EQ(property(Value::ofUnsigned(65, CMPI_char16)), 65);
}

TEST(JsonFormatTest, OtherTypesHaveTheirJsonForm) {
    EXPECT_EQ(property(Value::ofBoolean(true)), true);
    EXPECT_TRUE(property(Value::null(CMPI_string)).is_null());
    EXPECT_EQ(property(Value::ofArray({Value::ofText("a"), Value::null(CMPI_string), Value::ofText("")}, CMPI_string)),
              json::parse(R"(["a", null, ""])"));
    EXPECT_EQ(property(Value::ofText("20260101000000.000000+000", CMPI_dateTime)), "20260101000000.000000+000");
}

TEST(JsonFormatTest, ReferencesArePathsAndEmbeddedInstancesAreInstances) {
    Value reference = Value::ofText("", CMPI_ref);
    reference.path = std::make_shared<broker::ObjectPath>(broker::ObjectPath{"", "root", "D", {}});
    EXPECT_EQ(property(reference), json::parse(R"({"namespace": "root", "class": "D", "keys": {}})"));
    Value embedded = Value::ofText("", CMPI_instance);
    embedded.instance = std::make_shared<broker::Instance>(instanceOf("D", "E", {{"Q", Value::ofSigned(1)}}));
    EXPECT_EQ(property(embedded)["properties"], json::parse(R"({"Q": 1})"));
}

TEST(JsonFormatTest, AnyBytesGiveValidJson) {
    EXPECT_EQ(property(Value::ofText("a\"\\\n\x1b°")), "a\"\\\n\x1b°");
    EXPECT_EQ(property(Value::ofText("a\xff")), "a\xef\xbf\xbd");
}

TEST(JsonFormatTest, TerminalControlsAreEscaped) {
    const Reply reply = replyOf(CMPI_RC_OK, {sensorOf("\x1b\x7f\xc2\x9b", 1, 0, 0)});
    EXPECT_NE(host::jsonText(answerOf(Command::Get, reply), JsonLayout::Indented).find("\"\\u001b\\u007f\\u009b\""),
              std::string::npos);
}

TEST(JsonFormatTest, RoundIsOneLine) {
    const std::string text = host::jsonText(answerOf(Command::Watch, replyOf(CMPI_RC_OK, {})), JsonLayout::OneLine);
    EXPECT_EQ(text.find('\n'), text.size() - 1);
    EXPECT_EQ(json::parse(text)["command"], "watch");
}

}  // namespace
