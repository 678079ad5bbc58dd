#include "format/SensorsJson.h"

#include <array>
#include <nlohmann/json.hpp>
#include <utility>
#include <vector>

#include "broker/Names.h"
#include "health/Decimal.h"

namespace host {
namespace {

// Version 1 of the shape; see docs/json.md for what counts as another.
constexpr int FORMAT_VERSION = 1;

// Members by name. Numbers are written digit by digit, since the library would pass them through floating point.
class Members {
  public:
    explicit Members(std::string indent) : m_indent(std::move(indent)) {}

    Members& add(const char* name, const std::string& json) {
        m_text += (m_text.empty() ? "{\n" : ",\n") + m_indent + "  \"" + name + "\": " + json;
        return *this;
    }
    std::string text() const { return m_text + '\n' + m_indent + '}'; }

  private:
    std::string m_indent;
    std::string m_text;
};

std::string jsonOf(const std::string& text) {
    return nlohmann::json(text).dump(-1, ' ', true, nlohmann::json::error_handler_t::replace);
}

std::string textOrNull(const std::string& text) {
    return text.empty() ? "null" : jsonOf(text);
}

std::string numberOrNull(const std::string& number) {
    return number.empty() ? "null" : number;
}

// Exactly, in JSON's and CSV's form; empty for none.
std::string exactNumber(Number number, std::int64_t modifier) {
    if (!number) return "";
    const bool isWritten = modifier >= -LARGEST_SHIFT && modifier <= LARGEST_SHIFT;
    return isWritten ? scaledDecimal(*number, modifier) : std::to_string(*number) + 'e' + std::to_string(modifier);
}

std::string utcTime(std::time_t time) {
    std::tm parts{};
    gmtime_r(&time, &parts);
    std::array<char, 32> text{};
    std::strftime(text.data(), text.size(), "%Y-%m-%dT%H:%M:%SZ", &parts);
    return text.data();
}

struct NamedLimit {
    const char* jsonName;
    const char* column;
    Number Sensor::*limit;
};
constexpr std::array LIMITS{
    NamedLimit{"lowerNonCritical", "lower_non_critical", &Sensor::lowerNonCritical},
    NamedLimit{"lowerCritical", "lower_critical", &Sensor::lowerCritical},
    NamedLimit{"lowerFatal", "lower_fatal", &Sensor::lowerFatal},
    NamedLimit{"upperNonCritical", "upper_non_critical", &Sensor::upperNonCritical},
    NamedLimit{"upperCritical", "upper_critical", &Sensor::upperCritical},
    NamedLimit{"upperFatal", "upper_fatal", &Sensor::upperFatal},
};

std::string limitsJson(const Sensor& sensor, const std::string& indent) {
    Members limits(indent);
    for (const NamedLimit& each : LIMITS) {
        limits.add(each.jsonName, numberOrNull(exactNumber(sensor.*each.limit, sensor.modifier)));
    }
    return limits.text();
}

std::string severityOf(const Sensor& sensor) {
    return sensor.reading ? severityWord(sensor.state.severity) : "";
}

std::string sideOf(const Sensor& sensor) {
    if (sensor.state.severity == Severity::Normal) return "";
    return sensor.state.isHigh ? "high" : "low";
}

std::string sensorJson(const Sensor& sensor, const std::string& indent) {
    return Members(indent)
        .add("name", jsonOf(sensor.name))
        .add("kind", jsonOf(sensor.kind()))
        .add("value", numberOrNull(exactNumber(sensor.reading, sensor.modifier)))
        .add("unit", textOrNull(sensor.unit))
        .add("raw", numberOrNull(exactNumber(sensor.rawReading, 0)))
        .add("limits", limitsJson(sensor, indent + "  "))
        .add("severity", textOrNull(severityOf(sensor)))
        .add("side", textOrNull(sideOf(sensor)))
        .add("reason", textOrNull(sensor.reason))
        .text();
}

// `indent` is that of the line in which the list begins, so for those below.
template <typename Element, typename Write>
std::string listJson(const std::vector<Element>& elements, const std::string& indent, const Write& write) {
    const std::string inner = indent + "  ";
    std::string text;
    for (const Element& each : elements) text += (text.empty() ? "\n" : ",\n") + inner + write(each, inner);
    return text.empty() ? "[]" : '[' + text + '\n' + indent + ']';
}

std::string statusJson(const broker::Status& status, const std::string& indent) {
    return Members(indent)
        .add("rc", std::to_string(static_cast<int>(status.rc)))
        .add("name", jsonOf(broker::nameOfStatus(status.rc)))
        .add("message", status.message ? jsonOf(*status.message) : "null")
        .text();
}

std::string chipJson(const std::optional<AnsweringChip>& chip) {
    if (!chip) return "null";
    return Members("  ")
        .add("library", textOrNull(chip->library))
        .add("simulated", chip->isSimulated ? "true" : "false")
        .text();
}

std::string document(const char* command, const Round& round, const std::string& nameSpace, std::time_t time,
                     const std::optional<AnsweringChip>& chip) {
    return Members("")
        .add("format", std::to_string(FORMAT_VERSION))
        .add("command", jsonOf(command))
        .add("time", jsonOf(utcTime(time)))
        .add("namespace", jsonOf(nameSpace))
        .add("chip", chipJson(chip))
        .add("status", statusJson(round.status, "  "))
        .add("sensors", listJson(round.sensors, "  ", sensorJson))
        .text();
}

std::string terminalJson(const Terminal& terminal, const std::string& indent) {
    const Sensor* worst = terminal.worst();
    const std::string inner = indent + "  ";
    return Members(indent)
        .add("server", jsonOf(terminal.url))
        .add("failure", textOrNull(terminal.failure))
        .add("status", terminal.isAnswered ? statusJson(terminal.round.status, inner) : "null")
        .add("worst", worst == nullptr ? "null" : jsonOf(worst->name))
        .add("sensors", listJson(terminal.round.sensors, inner, sensorJson))
        .text();
}

// Texts in JSON have no line feeds: each is one of the layout, with blanks behind it.
std::string inOneLine(const std::string& json) {
    std::string text;
    for (std::size_t i = 0; i < json.size(); ++i) {
        if (json[i] != '\n') {
            text += json[i];
            continue;
        }
        if (!text.empty() && text.back() == ',') text += ' ';
        i = json.find_first_not_of(' ', i + 1) - 1;
    }
    return text;
}

std::string csvField(const std::string& text) {
    if (text.find_first_of(",\"\r\n") == std::string::npos) return text;
    std::string field = "\"";
    for (const char c : text) field += c == '"' ? "\"\"" : std::string(1, c);
    return field + '"';
}

std::string csvLine(const std::vector<std::string>& fields) {
    std::string line;
    for (const std::string& field : fields) line += csvField(field) + ',';
    line.back() = '\n';
    return line;
}

// What stands in a line beside the columns of sensors.
std::vector<std::string> withServer(const std::string& server, std::vector<std::string> fields) {
    fields.insert(fields.begin(), server);
    return fields;
}

std::vector<std::string> columnNames() {
    std::vector<std::string> names{"name", "kind", "value", "unit", "raw"};
    for (const NamedLimit& each : LIMITS) names.emplace_back(each.column);
    names.insert(names.end(), {"severity", "side", "reason"});
    return names;
}

std::vector<std::string> fieldsOf(const Sensor& sensor) {
    std::vector<std::string> fields{sensor.name, sensor.kind(), exactNumber(sensor.reading, sensor.modifier),
                                    sensor.unit, exactNumber(sensor.rawReading, 0)};
    for (const NamedLimit& each : LIMITS) fields.push_back(exactNumber(sensor.*each.limit, sensor.modifier));
    fields.insert(fields.end(), {severityOf(sensor), sideOf(sensor), sensor.reason});
    return fields;
}

}  // namespace

const char* severityWord(Severity severity) {
    switch (severity) {
        case Severity::Normal:
            return "ok";
        case Severity::NonCritical:
            return "non-critical";
        case Severity::Critical:
            return "critical";
        case Severity::Fatal:
            return "fatal";
    }
    return "";
}

std::string sensorsJson(const Round& round, const std::string& nameSpace, std::time_t time,
                        const std::optional<AnsweringChip>& chip) {
    return document("sensors", round, nameSpace, time, chip) + '\n';
}

std::string watchJson(const Round& round, const std::string& nameSpace, std::time_t time,
                      const std::optional<AnsweringChip>& chip) {
    return inOneLine(document("watch", round, nameSpace, time, chip)) + '\n';
}

std::string sensorsCsv(const std::vector<Sensor>& sensors, bool hasHeader) {
    std::string text = hasHeader ? csvLine(columnNames()) : "";
    for (const Sensor& sensor : sensors) text += csvLine(fieldsOf(sensor));
    return text;
}

std::string terminalsJson(const std::vector<Terminal>& terminals, const std::string& nameSpace, std::time_t time) {
    return Members("")
               .add("format", std::to_string(FORMAT_VERSION))
               .add("command", jsonOf("sensors"))
               .add("time", jsonOf(utcTime(time)))
               .add("namespace", jsonOf(nameSpace))
               .add("servers", listJson(terminals, "  ", terminalJson))
               .text() +
           '\n';
}

std::string terminalsCsv(const std::vector<Terminal>& terminals, bool hasHeader) {
    const std::vector<std::string> names = columnNames();
    std::string text = hasHeader ? csvLine(withServer("server", names)) : "";
    for (const Terminal& terminal : terminals) {
        for (const Sensor& sensor : terminal.round.sensors) {
            text += csvLine(withServer(terminal.url, fieldsOf(sensor)));
        }
        if (!terminal.round.sensors.empty()) continue;
        std::vector<std::string> fields(names.size());
        fields.back() = terminal.failure;
        text += csvLine(withServer(terminal.url, fields));
    }
    return text;
}

}  // namespace host
