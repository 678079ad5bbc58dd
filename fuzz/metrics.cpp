// The page of metrics. The input is what a terminal answers: sensors with any names, units and numbers, an event log,
// and statuses. A strict reader of the text format must take the page, and find in it the readings, thresholds and
// severities that a naive reckoning gives, under labels that lead back to the names, and nothing else of a sensor.
#include <MetricsReader.h>
#include <format/MetricsFormat.h>

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <map>
#include <set>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "Input.h"
#include "Property.h"

namespace {

using broker::Instance;
using broker::Value;
using host::MetricsChoice;
using host::MetricsRound;
using host::Sensor;
using Families = std::vector<MetricsFamily>;

constexpr const char* THRESHOLDS[] = {"LowerThresholdNonCritical", "LowerThresholdCritical", "LowerThresholdFatal",
                                      "UpperThresholdNonCritical", "UpperThresholdCritical", "UpperThresholdFatal"};

Value numberFrom(Input& input) {
    const std::uint32_t low = input.number32();
    switch (input.choice(6)) {
        case 0:
            return Value::ofUnsigned(low);
        case 1:
            return Value::ofSigned(static_cast<std::int64_t>(std::uint64_t{low} << 32U | input.number32()),
                                   CMPI_sint64);
        case 2:
            return Value::ofUnsigned(std::uint64_t{low} << 32U | input.number32(), CMPI_uint64);
        case 3:
            return Value::null(CMPI_sint32);
        default:
            return Value::ofSigned(static_cast<std::int32_t>(low));
    }
}

Instance sensorFrom(Input& input) {
    Instance sensor;
    const auto add = [&](const char* name, Value value) { sensor.properties.push_back({name, std::move(value)}); };
    add("Name", Value::ofText(input.choice(16) == 0 ? input.longText() : input.text()));
    add("BaseUnits", Value::ofUnsigned(input.byte(), CMPI_uint16));
    if (input.flag()) add("RateUnits", Value::ofUnsigned(input.choice(12), CMPI_uint16));
    if (input.flag()) add("SensorType", Value::ofUnsigned(input.choice(20), CMPI_uint16));
    if (input.flag()) add("UnitModifier", input.flag() ? numberFrom(input) : Value::ofSigned(input.byte() - 128));
    if (!input.flag()) add("CurrentReading", numberFrom(input));
    const unsigned present = input.byte();
    for (unsigned i = 0; i < 6; ++i) {
        if ((present >> i & 1U) != 0) add(THRESHOLDS[i], numberFrom(input));
    }
    return sensor;
}

MetricsRound roundFrom(Input& input) {
    MetricsRound round;
    if (input.flag()) round.sensors.status.rc = static_cast<CMPIrc>(input.byte());
    round.eventLog.status.rc = static_cast<CMPIrc>(input.byte());
    if (input.flag()) round.eventLog.log.emplace();
    if (round.eventLog.log && input.flag()) round.eventLog.log->isValid = input.flag();
    if (round.eventLog.log) round.eventLog.log->lines.resize(input.byte());
    if (input.flag()) round.eventLog.newLines = input.number32();
    round.sensorsDuration = std::chrono::nanoseconds(input.number32());
    while (!input.isEmpty()) round.sensors.sensors.push_back(Sensor::of(sensorFrom(input)));
    return round;
}

// The bytes that the label stands for.
std::string unescaped(const std::string& label) {
    std::string name;
    for (std::size_t i = 0; i < label.size(); ++i) {
        const std::string digits = label.substr(i, 2) == "\\x" ? label.substr(i + 2, 2) : "";
        if (digits.size() == 2 && digits.find_first_not_of("0123456789abcdefABCDEF") == std::string::npos) {
            name += static_cast<char>(std::strtol(digits.c_str(), nullptr, 16));
            i += 3;
        } else {
            name += label[i];
        }
    }
    return name;
}

bool isNear(double left, double right, double scale) {
    return std::abs(left - right) <= 1e-14 * (std::abs(right) + scale);
}

// Of one sensor: family and further labels, with the value.
using Shown = std::map<std::pair<std::string, std::map<std::string, std::string>>, double>;

std::map<std::string, Shown> sensorsIn(const Families& page) {
    std::map<std::string, Shown> sensors;
    for (const MetricsFamily& family : page) {
        for (const MetricsSample& sample : family.samples) {
            std::map<std::string, std::string> labels = sample.labels;
            const auto label = labels.find("sensor");
            if (label == labels.end()) continue;
            const std::string name = unescaped(label->second);
            labels.erase(label);
            require(sensors[name].emplace(std::pair(family.name, labels), sample.number).second,
                    "each sensor has a label of its own");
        }
    }
    return sensors;
}

// The quantity's part of the name and its unit's.
std::pair<std::string, std::string> familyOf(const Sensor& sensor) {
    if (sensor.unit == "°C" || sensor.unit == "°F" || sensor.unit == "K") return {"temperature", "celsius"};
    if (sensor.unit == "V") return {"voltage", "volts"};
    if (sensor.unit == "A") return {"current", "amperes"};
    if (sensor.unit == "W") return {"power", "watts"};
    if (sensor.unit == "rpm") return {"fan_speed", "rpm"};
    return {"sensor", "value"};
}

class Expectation {
  public:
    Expectation(const Sensor& sensor, Shown shown) : m_sensor(sensor), m_shown(std::move(shown)) {}

    void check(bool hasThresholds) {
        const auto [quantity, unit] = familyOf(m_sensor);
        const std::string reading = "zelsensors_" + quantity + "_" + unit;
        const std::string threshold = "zelsensors_" + quantity + "_threshold_" + unit;
        take(reading, unit == "value" ? Labels{{"unit", m_sensor.unit}} : Labels{}, m_sensor.reading);
        if (hasThresholds) {
            takeThresholds(threshold, "lower",
                           {m_sensor.lowerNonCritical, m_sensor.lowerCritical, m_sensor.lowerFatal});
            takeThresholds(threshold, "upper",
                           {m_sensor.upperNonCritical, m_sensor.upperCritical, m_sensor.upperFatal});
        }
        takeSeverity("zelsensors_sensor_severity", m_sensor.reading.has_value());
        takeSeverity("zelsensors_sensor_past_threshold",
                     m_sensor.reading && m_sensor.state.severity != host::Severity::Normal);
        require(m_shown.empty(), "nothing else is shown of a sensor");
    }

  private:
    using Labels = std::map<std::string, std::string>;

    void takeThresholds(const std::string& family, const char* bound, const std::vector<host::Number>& numbers) {
        constexpr const char* LEVELS[] = {"noncritical", "critical", "fatal"};
        for (std::size_t i = 0; i < numbers.size(); ++i) {
            take(family, {{"bound", bound}, {"level", LEVELS[i]}}, numbers[i]);
        }
    }
    void takeSeverity(const char* family, bool isDue) {
        const auto severity = m_shown.find({family, {}});
        require((severity != m_shown.end()) == isDue, family);
        if (severity == m_shown.end()) return;
        requireSame(static_cast<long long>(severity->second), static_cast<long long>(m_sensor.state.severity), family);
        m_shown.erase(severity);
    }
    void take(const std::string& family, const Labels& labels, host::Number number) {
        const auto shown = m_shown.find({family, labels});
        if (!number) {
            require(shown == m_shown.end(), "what the chip does not give is not shown");
            return;
        }
        const std::string decimal = std::to_string(*number) + "e" + std::to_string(m_sensor.modifier);
        double value = std::strtod(decimal.c_str(), nullptr);
        const bool isHeld = std::isfinite(value) && (*number == 0 || std::abs(value) >= 2.3e-308);
        if (m_sensor.unit == "°F") value = (value - 32) / 1.8;
        if (m_sensor.unit == "K") value -= 273.15;
        require(!isHeld || shown != m_shown.end(), "what a double holds is shown");
        if (shown == m_shown.end()) return;
        require(isNear(shown->second, value, familyOf(m_sensor).first == "temperature" ? 300 : 0),
                "the value is the chip's");
        m_shown.erase(shown);
    }

    const Sensor& m_sensor;
    Shown m_shown;
};

Families read(const std::string& page) {
    try {
        return readMetrics(page);
    } catch (const std::runtime_error& error) {
        fail(std::string("the page is read: ") + error.what());
    }
}

void check(const MetricsRound& round, const MetricsChoice& choice) {
    host::MetricsPages pages(choice);
    const std::string text = pages.next(round);
    requireSame(pages.next(round), text, "the page of the same round");
    // What is left of one page must not get into another.
    MetricsRound fewer = round;
    if (!fewer.sensors.sensors.empty()) fewer.sensors.sensors.pop_back();
    requireSame(pages.next(fewer), host::MetricsPages(choice).next(fewer), "the page of another round");
    const Families page = read(text);
    const bool isSuccess = round.sensors.status.rc == CMPI_RC_OK;
    const MetricsSample success = sampleIn(page, "zelsensors_scrape_success", {{"collector", "sensors"}});
    requireSame(success.value, isSuccess ? "1" : "0", "success");
    std::map<std::string, Shown> shown = sensorsIn(page);
    std::set<std::string> names;
    std::string gravest;
    for (const Sensor& sensor : round.sensors.sensors) {
        if (!isSuccess || !names.insert(sensor.name).second) continue;
        if (sensor.reading) {
            gravest = std::max(gravest, std::to_string(static_cast<int>(sensor.state.severity)));
        }
        Expectation(sensor, shown[sensor.name]).check(choice.hasThresholds);
        shown.erase(sensor.name);
    }
    require(shown.empty(), "each label leads back to a sensor");
    const std::string count = sampleIn(page, "zelsensors_sensors").value;
    requireSame(count, isSuccess ? std::to_string(names.size()) : "", "the number of sensors");
    requireSame(sampleIn(page, "zelsensors_severity").value, gravest, "the gravest severity");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Input input(data, size);
    const MetricsChoice choice{input.flag(), input.flag()};
    check(roundFrom(input), choice);
    return 0;
}
