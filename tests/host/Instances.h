// Instances for the tests of formatting.
#ifndef ZELSENSORS_TESTS_HOST_INSTANCES_H
#define ZELSENSORS_TESTS_HOST_INSTANCES_H

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "source/Answer.h"

inline broker::Instance instanceOf(const std::string& className, const std::string& name,
                                   std::vector<broker::NamedValue> properties) {
    return {{"", "root/cimv2", className, {{"Name", broker::Value::ofText(name)}}}, std::move(properties)};
}

// A sensor with BaseUnits and UnitModifier, and further 32-bit properties.
inline broker::Instance sensorOf(const std::string& name, int reading, unsigned short baseUnits, int modifier,
                                 const std::vector<std::pair<std::string, int>>& more = {}) {
    using broker::Value;
    broker::Instance sensor = instanceOf("TQS_NumericSensor", name,
                                         {{"BaseUnits", Value::ofUnsigned(baseUnits, CMPI_uint16)},
                                          {"CurrentReading", Value::ofSigned(reading)},
                                          {"Name", Value::ofText(name)},
                                          {"UnitModifier", Value::ofSigned(modifier)}});
    for (const auto& [property, number] : more) sensor.properties.push_back({property, Value::ofSigned(number)});
    return sensor;
}

inline host::Answer answerOf(host::Command command, broker::Reply reply,
                             const std::string& className = "TQS_NumericSensor") {
    return {command, "root/cimv2", className, std::move(reply)};
}

inline broker::Reply replyOf(CMPIrc rc, std::vector<broker::Instance> instances) {
    broker::Reply reply;
    reply.status.rc = rc;
    reply.instances = std::move(instances);
    return reply;
}

#endif
