#include "ScenarioContents.h"

#include <algorithm>
#include <cstdio>

#include "ScenarioCheck.h"
#include "ScenarioError.h"
#include "ScenarioFile.h"

namespace {

ScenarioSensor sensorOf(const SimulatedSensor& sensor) {
    const CSensorInformation& information = sensor.information;
    ScenarioSensor contents;
    contents.handle = sensor.handle;
    contents.name = information.name;
    contents.sensorType = information.sensorType;
    contents.baseUnits = information.baseUnits;
    contents.rateUnits = information.rateUnits;
    contents.unitModifier = information.unitModifier;
    contents.isLinear = information.isLinear;
    contents.otherSensorTypeDescription = information.otherSensorTypeDescription;
    for (const NumberKey& number : optionalNumbers()) {
        const int value = information.*number.member;
        if (value != NOT_AVAILABLE) contents.numbers.emplace_back(number.key.data(), value);
    }
    const auto [lowest, highest] = std::minmax_element(sensor.movement.values->begin(), sensor.movement.values->end());
    contents.lowest = *lowest;
    contents.highest = *highest;
    return contents;
}

std::string codeText(unsigned code) {
    char text[16];
    std::snprintf(text, sizeof text, "0x%08x", code);
    return text;
}

std::string truthOf(unsigned char value) {
    return value != 0 ? "true" : "false";
}

std::string faultText(const SimulatedFault& fault) {
    std::string text(wordOf(fault.operation));
    const auto add = [&text](const std::string& key, const std::string& value) { text += ", " + key + " = " + value; };
    if (fault.handle) add("handle", codeText(*fault.handle));
    if (fault.fromCall > 1) add("from-call", std::to_string(fault.fromCall));
    if (fault.calls) add("calls", std::to_string(*fault.calls));
    if (fault.fromMilliseconds > 0) add("from-ms", std::to_string(fault.fromMilliseconds));
    if (fault.milliseconds) add("for-ms", std::to_string(*fault.milliseconds));
    if (fault.status != 0) add("status", codeText(static_cast<unsigned>(fault.status)));
    if (fault.delayMilliseconds > 0) add("delay-ms", std::to_string(fault.delayMilliseconds));
    return text;
}

void addTerminal(const Scenario& scenario, ScenarioContents& contents) {
    const CSystemEventLog& log = scenario.eventLog;
    contents.settings = {{"model", std::string(wordOf(scenario.model))},
                         {"valid", truthOf(log.logValid)},
                         {"full", truthOf(log.logFull)},
                         {"multiple-event-count-increment", std::to_string(log.multipleEventCountIncrement)},
                         {"multiple-event-time-window", std::to_string(log.multipleEventTimeWindow)}};
    for (const SimulatedFault& fault : scenario.faults) contents.faults.push_back(faultText(fault));
    contents.eventLog = log.lines;
}

}  // namespace

ScenarioContents contentsOfScenario(const std::string& path) {
    ScenarioContents contents;
    try {
        const Scenario scenario = readScenario(path);
        for (const SimulatedSensor& sensor : scenario.sensors) contents.sensors.push_back(sensorOf(sensor));
        addTerminal(scenario, contents);
    } catch (const ScenarioError& error) {
        contents.mistakes = linesOf(error);
    }
    return contents;
}
