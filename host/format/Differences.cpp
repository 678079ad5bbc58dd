#include "format/Differences.h"

#include <algorithm>
#include <cstdio>
#include <map>
#include <nlohmann/json.hpp>
#include <set>
#include <string_view>

#include "health/Decimal.h"
#include "health/Units.h"
#include "source/Request.h"
#include "text/TextTable.h"
#include "text/Utf8.h"

namespace host {
namespace {

std::string providedName(const ScenarioSensor& sensor) {
    char handle[16];
    std::snprintf(handle, sizeof handle, "(%08x)", sensor.handle);
    return sensor.name + handle;
}

std::string amountOf(int number, const ScenarioSensor& sensor) {
    const std::string unit = unitText(sensor.baseUnits, sensor.rateUnits);
    return scaledDecimal(number, sensor.unitModifier) + (unit.empty() ? "" : " " + unit);
}

std::string readingsOf(const ScenarioSensor& sensor) {
    if (sensor.lowest == sensor.highest) return amountOf(sensor.lowest, sensor);
    return scaledDecimal(sensor.lowest, sensor.unitModifier) + " to " + amountOf(sensor.highest, sensor);
}

// What is compared of a sensor, by its words; a missing one is empty.
std::map<std::string, std::string> propertiesOf(const ScenarioSensor& sensor) {
    std::map<std::string, std::string> properties{{"name", sensor.name},
                                                  {"sensor-type", std::to_string(sensor.sensorType)},
                                                  {"base-units", std::to_string(sensor.baseUnits)},
                                                  {"rate-units", std::to_string(sensor.rateUnits)},
                                                  {"unit-modifier", std::to_string(sensor.unitModifier)},
                                                  {"is-linear", sensor.isLinear ? "true" : "false"},
                                                  {"other-sensor-type-description", sensor.otherSensorTypeDescription},
                                                  {"readings", readingsOf(sensor)}};
    // CIM's Accuracy is in hundredths of a percent, not in the sensor's units.
    for (const auto& [key, number] : sensor.numbers) {
        properties[key] = std::string_view(key) == "accuracy" ? std::to_string(number) : amountOf(number, sensor);
    }
    return properties;
}

const ScenarioSensor* findIn(const ScenarioContents& contents, unsigned handle) {
    const auto found = std::find_if(contents.sensors.begin(), contents.sensors.end(),
                                    [handle](const ScenarioSensor& sensor) { return sensor.handle == handle; });
    return found == contents.sensors.end() ? nullptr : &*found;
}

void compare(const ScenarioSensor& before, const ScenarioSensor& after, std::vector<Difference>& differences) {
    std::map<std::string, std::string> ours = propertiesOf(before);
    std::map<std::string, std::string> theirs = propertiesOf(after);
    std::set<std::string> keys;
    for (const auto& [key, value] : ours) keys.insert(key);
    for (const auto& [key, value] : theirs) keys.insert(key);
    for (const std::string& key : keys) {
        if (ours[key] != theirs[key]) differences.push_back({providedName(before), key, ours[key], theirs[key]});
    }
}

// Of one what the other does not have, as often.
std::vector<std::string> textsBesides(std::vector<std::string> texts, const std::vector<std::string>& others) {
    std::map<std::string, std::size_t> known;
    for (const std::string& text : others) ++known[text];
    const auto isKnown = [&known](const std::string& text) {
        const auto found = known.find(text);
        return found != known.end() && found->second > 0 && found->second-- > 0;
    };
    texts.erase(std::remove_if(texts.begin(), texts.end(), isKnown), texts.end());
    return texts;
}

void compareTexts(const char* what, const std::vector<std::string>& before, const std::vector<std::string>& after,
                  std::vector<Difference>& differences) {
    for (const std::string& text : textsBesides(before, after)) differences.push_back({"", what, text, ""});
    for (const std::string& text : textsBesides(after, before)) differences.push_back({"", what, "", text});
}

void compareSettings(const ScenarioContents& before, const ScenarioContents& after,
                     std::vector<Difference>& differences) {
    for (std::size_t i = 0; i < before.settings.size() && i < after.settings.size(); ++i) {
        const auto& [key, value] = before.settings[i];
        if (value != after.settings[i].second) differences.push_back({"", key, value, after.settings[i].second});
    }
}

// Whose it is where it is no sensor's.
std::string ownerOf(const std::string& what) {
    return what == "model" || what == "fault" ? "terminal" : "event log";
}

}  // namespace

std::vector<Difference> differencesBetween(const ScenarioContents& before, const ScenarioContents& after) {
    std::vector<Difference> differences;
    for (const ScenarioSensor& sensor : before.sensors) {
        if (const ScenarioSensor* other = findIn(after, sensor.handle)) {
            compare(sensor, *other, differences);
        } else {
            differences.push_back({providedName(sensor), "sensor", readingsOf(sensor), ""});
        }
    }
    for (const ScenarioSensor& sensor : after.sensors) {
        if (findIn(before, sensor.handle) != nullptr) continue;
        differences.push_back({providedName(sensor), "sensor", "", readingsOf(sensor)});
    }
    compareSettings(before, after, differences);
    compareTexts("fault", before.faults, after.faults, differences);
    compareTexts("line", before.eventLog, after.eventLog, differences);
    return differences;
}

std::string differencesText(const std::vector<Difference>& differences, Charset charset) {
    if (differences.empty()) return "Nothing is different.\n";
    const auto cell = [](const std::string& text) { return text.empty() ? "-" : printable(text); };
    TextTable table({{"Sensor"}, {"What"}, {"Before"}, {"After"}}, charset);
    for (const Difference& each : differences) {
        const std::string about = each.sensor.empty() ? ownerOf(each.what) : each.sensor;
        table.add({printable(about), each.what, cell(each.before), cell(each.after)});
    }
    return table.text();
}

std::string differencesJson(const std::vector<Difference>& differences) {
    using Node = nlohmann::ordered_json;
    const auto textOrNull = [](const std::string& text) { return text.empty() ? Node() : Node(text); };
    Node list = Node::array();
    for (const Difference& each : differences) {
        list.push_back(Node{{"sensor", textOrNull(each.sensor)},
                            {"what", each.what},
                            {"before", textOrNull(each.before)},
                            {"after", textOrNull(each.after)}});
    }
    Node document{{"format", 1}, {"command", nameOf(Command::Diff)}, {"differences", std::move(list)}};
    return document.dump(2, ' ', true, Node::error_handler_t::replace) + '\n';
}

}  // namespace host
