#include "ScenarioContents.h"

#include <algorithm>

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
    for (const NumberKey& number : optionalNumbers()) {
        const int value = information.*number.member;
        if (value != NOT_AVAILABLE) contents.numbers.emplace_back(number.key.data(), value);
    }
    const auto [lowest, highest] = std::minmax_element(sensor.movement.values->begin(), sensor.movement.values->end());
    contents.lowest = *lowest;
    contents.highest = *highest;
    return contents;
}

}  // namespace

ScenarioContents contentsOfScenario(const std::string& path) {
    ScenarioContents contents;
    try {
        const Scenario scenario = readScenario(path);
        for (const SimulatedSensor& sensor : scenario.sensors) contents.sensors.push_back(sensorOf(sensor));
        contents.eventLog = scenario.eventLog.lines;
    } catch (const ScenarioError& error) {
        contents.mistakes = linesOf(error);
    }
    return contents;
}
