#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "Instances.h"
#include "JsonKeys.h"
#include "format/SensorsJson.h"

namespace {

using broker::Value;
using host::AnsweringChip;
using host::Round;
using host::Sensor;
using host::sensorsCsv;
using host::sensorsJson;
using nlohmann::json;
using testing::HasSubstr;

constexpr std::time_t TIME = 1700000000;

Round roundOf(std::vector<Sensor> sensors) {
    Round round;
    round.sensors = std::move(sensors);
    return round;
}

Sensor supply() {
    broker::Instance instance = sensorOf("Supply, \"B\"(00000013)", 8710, 2, -2, {{"UpperThresholdCritical", 8500}});
    instance.properties.push_back({"SensorType", Value::ofUnsigned(2, CMPI_uint16)});
    return Sensor::of(instance);
}

Sensor lost() {
    return Sensor::withoutReading("Lost", "the provider answered 1");
}

constexpr const char* WHOLE_DOCUMENT = R"JSON({
  "format": 1,
  "command": "sensors",
  "time": "2023-11-14T22:13:20Z",
  "namespace": "root/cimv2",
  "chip": {
    "library": "/lib/chip.so",
    "simulated": true
  },
  "status": {
    "rc": 0,
    "name": "CMPI_RC_OK",
    "message": null
  },
  "sensors": [
    {
      "name": "Supply, \"B\"(00000013)",
      "kind": "temperature",
      "value": 87.10,
      "unit": "\u00b0C",
      "raw": 8710,
      "limits": {
        "lowerNonCritical": null,
        "lowerCritical": null,
        "lowerFatal": null,
        "upperNonCritical": null,
        "upperCritical": 85.00,
        "upperFatal": null
      },
      "severity": "critical",
      "side": "high",
      "reason": null
    }
  ]
}
)JSON";

TEST(SensorsJsonTest, WholeDocument) {
    EXPECT_EQ(sensorsJson(roundOf({supply()}), "root/cimv2", TIME, AnsweringChip{"/lib/chip.so", true}),
              WHOLE_DOCUMENT);
}

TEST(SensorsJsonTest, WithoutReadingValueSeverityAndSideAreNull) {
    const json sensor = json::parse(sensorsJson(roundOf({lost()}), "root/cimv2", TIME, std::nullopt))["sensors"][0];
    for (const char* key : {"value", "raw", "unit", "severity", "side"}) EXPECT_TRUE(sensor.at(key).is_null()) << key;
    EXPECT_EQ(sensor["reason"], "the provider answered 1");
}

TEST(SensorsJsonTest, UnknownChipIsNullAndSoIsTheNameOfTheSystems) {
    EXPECT_TRUE(json::parse(sensorsJson({}, "n", TIME, std::nullopt))["chip"].is_null());
    const json system = json::parse(sensorsJson({}, "n", TIME, AnsweringChip{"", false}))["chip"];
    EXPECT_TRUE(system["library"].is_null());
    EXPECT_EQ(system["simulated"], false);
}

TEST(SensorsJsonTest, FailureOfTheRoundIsItsStatus) {
    Round round;
    round.status = {CMPI_RC_ERR_FAILED, "no\tluck\xff"};
    const json document = json::parse(sensorsJson(round, "n", TIME, std::nullopt));
    EXPECT_EQ(document["status"]["rc"], 1);
    EXPECT_EQ(document["status"]["name"], "CMPI_RC_ERR_FAILED");
    EXPECT_EQ(document["status"]["message"], "no\tluck\xEF\xBF\xBD");
    EXPECT_EQ(document["sensors"], json::array());
}

// More digits than floating point has, and powers of ten that need none written out.
TEST(SensorsJsonTest, NumbersAreExact) {
    const auto valueOf = [](std::int64_t value, int modifier) {
        broker::Instance instance = sensorOf("S", 0, 2, modifier);
        instance.properties[1].value = Value::ofSigned(value, CMPI_sint64);
        const std::string text = sensorsJson(roundOf({Sensor::of(instance)}), "n", TIME, std::nullopt);
        const std::size_t start = text.find("\"value\": ") + 9;
        return text.substr(start, text.find(',', start) - start);
    };
    EXPECT_EQ(valueOf(9007199254740993, -3), "9007199254740.993");
    EXPECT_EQ(valueOf(-5, -3), "-0.005");
    EXPECT_EQ(valueOf(0, -2), "0.00");
    EXPECT_EQ(valueOf(0, 2), "0");
    EXPECT_EQ(valueOf(-7, 18), "-7000000000000000000");
    EXPECT_EQ(valueOf(5, 25), "5e25");
    EXPECT_EQ(valueOf(5, -25), "5e-25");
}

TEST(SensorsCsvTest, LineForEachSensorWithQuotesWhereNeeded) {
    EXPECT_EQ(
        sensorsCsv({supply(), lost()}, true),
        "name,kind,value,unit,raw,lower_non_critical,lower_critical,lower_fatal,upper_non_critical,upper_critical,"
        "upper_fatal,severity,side,reason\n"
        "\"Supply, \"\"B\"\"(00000013)\",temperature,87.10,°C,8710,,,,,85.00,,critical,high,\n"
        "Lost,unknown,,,,,,,,,,,,the provider answered 1\n");
    EXPECT_EQ(sensorsCsv({}, false), "");
    EXPECT_EQ(sensorsCsv({Sensor::withoutReading("", "a\nb")}, false), ",unknown,,,,,,,,,,,,\"a\nb\"\n");
}

TEST(SensorsJsonTest, KeysAreExactlyThoseDocumented) {
    const std::string document = sensorsJson(roundOf({supply()}), "n", TIME, AnsweringChip{"c", true});
    EXPECT_EQ(keysIn(json::parse(document)), documentedKeys(DOCS "/json.md", "zelhost sensors"));
}

}  // namespace
