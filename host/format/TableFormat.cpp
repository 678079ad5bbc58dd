#include "format/TableFormat.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <optional>
#include <utility>
#include <vector>

#include "broker/Names.h"
#include "format/ValueText.h"
#include "health/EventLines.h"
#include "health/Sensor.h"
#include "text/TextTable.h"
#include "text/Utf8.h"

namespace host {
namespace {

using broker::Instance;
using broker::NamedValue;
using broker::ObjectPath;
using broker::Value;

constexpr std::size_t BAR_CELLS = 40;

// A column for each key, in the order in which the keys first come.
std::string namesTable(const std::vector<ObjectPath>& paths, Charset charset) {
    ObjectPath seen;
    std::vector<TextTable::Column> columns;
    for (const ObjectPath& path : paths) {
        for (const NamedValue& key : path.keys) {
            if (seen.findKey(key.name) != nullptr) continue;
            seen.keys.push_back(key);
            columns.push_back({printable(key.name)});
        }
    }
    TextTable table(columns, charset);
    for (const ObjectPath& path : paths) {
        std::vector<std::string> cells;
        for (const NamedValue& key : seen.keys) {
            const Value* value = path.findKey(key.name);
            cells.push_back(value == nullptr ? "" : valueText(*value));
        }
        table.add(std::move(cells));
    }
    return table.text();
}

std::string limitsText(const Sensor& sensor, const std::array<Number, 3>& limits) {
    if (std::none_of(limits.begin(), limits.end(), [](const Number& limit) { return limit.has_value(); })) return "-";
    return sensor.scaled(limits[0]) + " / " + sensor.scaled(limits[1]) + " / " + sensor.scaled(limits[2]);
}

std::string sensorsTable(const std::vector<Instance>& instances, Charset charset) {
    TextTable table(
        {{"Sensor"}, {"Reading", Align::Right}, {"State"}, {"Lower limits (n/c/f)"}, {"Upper limits (n/c/f)"}},
        charset);
    for (const Instance& instance : instances) {
        const Sensor sensor = Sensor::asGiven(instance);
        table.add({printable(sensor.name), sensor.withUnit(sensor.rawReading), Sensor::of(instance).stateWord(),
                   limitsText(sensor, {sensor.lowerNonCritical, sensor.lowerCritical, sensor.lowerFatal}),
                   limitsText(sensor, {sensor.upperNonCritical, sensor.upperCritical, sensor.upperFatal})});
    }
    return table.text();
}

// Whether a property's number is counted in the sensor's units.
bool isInSensorUnits(const std::string& property) {
    static const std::array<std::string, 6> inUnits{"CurrentReading", "Hysteresis",     "MaxReadable",
                                                    "MinReadable",    "NominalReading", "Resolution"};
    return std::find(inUnits.begin(), inUnits.end(), property) != inUnits.end() ||
           property.find("Threshold") != std::string::npos;
}

std::string propertyText(const NamedValue& property, const std::optional<Sensor>& sensor) {
    std::string text = valueText(property.value);
    const Number number = numberIn(property.value);
    if (sensor && number && isInSensorUnits(property.name)) text += " (" + sensor->withUnit(*number) + ')';
    return text;
}

std::optional<Sensor> sensorIn(const Instance& instance) {
    return isSensor(instance) ? std::make_optional(Sensor::asGiven(instance)) : std::nullopt;
}

std::string propertiesTable(const Instance& instance, Charset charset) {
    const std::optional<Sensor> sensor = sensorIn(instance);
    TextTable table({{"Property"}, {"Type"}, {"Value"}}, charset);
    for (const NamedValue& property : instance.properties) {
        table.add({printable(property.name), broker::nameOfType(property.value.type), propertyText(property, sensor)});
    }
    std::string text = printable(pathText(instance.path)) + "\n\n" + table.text();
    if (!sensor) return text;
    const Sensor meant = Sensor::of(instance);
    text += "\nState: " + meant.stateWord() + '\n';
    if (const std::string bar = limitsBar(meant, BAR_CELLS); !bar.empty()) text += "Between its limits: " + bar + '\n';
    return text;
}

// Each line with its place in the log, but where it begins with a number of its own.
std::string linesText(const std::vector<Value>& lines, const std::optional<LineChoice>& choice, Charset charset) {
    std::vector<std::string> numbers;
    for (std::size_t i = 0; i < lines.size(); ++i) {
        const std::size_t place = choice ? choice->places.at(i) : i + 1;
        numbers.push_back(hasOwnNumber(lines[i].text) ? "" : std::to_string(place));
    }
    const bool isNumbered = std::any_of(numbers.begin(), numbers.end(), [](const auto& each) { return !each.empty(); });
    TextTable table(isNumbered ? std::vector<TextTable::Column>{{"No.", Align::Right}, {"Line"}}
                               : std::vector<TextTable::Column>{{"Line"}},
                    charset);
    for (std::size_t i = 0; i < lines.size(); ++i) {
        std::vector<std::string> cells{valueText(lines[i])};
        if (isNumbered) cells.insert(cells.begin(), numbers[i]);
        table.add(std::move(cells));
    }
    return table.text();
}

std::string eventLogText(const Instance& log, const std::optional<LineChoice>& choice, Charset charset) {
    std::string text;
    const Value* lines = log.findProperty("LogLines");
    if (lines != nullptr && !lines->elements.empty()) {
        text += linesText(lines->elements, choice, charset);
    } else if (choice && choice->total > 0) {
        text +=
            "None of the event log's lines is among those asked for; it has " + std::to_string(choice->total) + ".\n";
    } else {
        text += "The event log has no lines.\n";
    }
    text += '\n';
    for (const char* state : {"LogValid", "LogFull", "LogMultipleEventCountIncrement", "LogMultipleEventTimeWindow"}) {
        const Value* value = log.findProperty(state);
        if (value != nullptr) text += std::string(state) + ": " + valueText(*value) + '\n';
    }
    return text;
}

// One line for each sensor where all are sensors; otherwise all properties of each instance.
std::string instancesText(const std::vector<Instance>& instances, Charset charset) {
    if (std::all_of(instances.begin(), instances.end(), isSensor)) return sensorsTable(instances, charset);
    std::string text;
    for (const Instance& instance : instances) {
        if (!text.empty()) text += '\n';
        text += propertiesTable(instance, charset);
    }
    return text;
}

std::string instancesTextOf(const Answer& answer, Charset charset) {
    const std::vector<Instance>& instances = answer.reply.instances;
    if (answer.command == Command::Get) return propertiesTable(instances.front(), charset);
    if (answer.command == Command::Log) return eventLogText(instances.front(), answer.lines, charset);
    return instancesText(instances, charset);
}

}  // namespace

std::string tableText(const Answer& answer, Charset charset) {
    const broker::Reply& reply = answer.reply;
    const bool isEmpty = reply.paths.empty() && reply.instances.empty();
    const bool isFine = reply.status.rc == CMPI_RC_OK;
    if (isEmpty && !isFine) return "";
    std::string text;
    if (isEmpty) text += "The provider answered " + statusText(reply.status) + ", without data.\n";
    if (!reply.paths.empty()) text += namesTable(reply.paths, charset);
    if (!reply.instances.empty()) text += instancesTextOf(answer, charset);
    if (!isFine) text += "\nIncomplete: the provider ended with " + statusText(reply.status) + ".\n";
    return shownIn(charset, text);  // the tables are already
}

}  // namespace host
