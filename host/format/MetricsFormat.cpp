#include "format/MetricsFormat.h"

#include <prometheus/metric_family.h>
#include <prometheus/text_serializer.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>
#include <system_error>
#include <unordered_set>
#include <utility>
#include <vector>

#include "text/Utf8.h"

namespace host {
namespace {

using prometheus::ClientMetric;
using prometheus::MetricFamily;
using prometheus::MetricType;

// In the order of the page.
enum FamilyNumber : std::size_t {
    TemperatureReading,
    VoltageReading,
    CurrentReading,
    PowerReading,
    FanReading,
    OtherReading,
    TemperatureThreshold,
    VoltageThreshold,
    CurrentThreshold,
    PowerThreshold,
    FanThreshold,
    OtherThreshold,
    SensorSeverity,
    SensorPastThreshold,
    GravestSeverity,
    Sensors,
    SensorsFailed,
    EventLogValid,
    EventLogFull,
    EventLogLines,
    EventLogNewLines,
    ScrapeSuccess,
    ScrapeStatus,
    ScrapeDuration,
    BuildInfo,
};

struct Description {
    const char* name;
    const char* help;  // without backslashes and newlines: it is written as it is
    MetricType type = MetricType::Gauge;
};

constexpr std::array DESCRIPTIONS{
    Description{"zelsensors_temperature_celsius", "Temperature that a sensor reads."},
    Description{"zelsensors_voltage_volts", "Voltage that a sensor reads."},
    Description{"zelsensors_current_amperes", "Current that a sensor reads."},
    Description{"zelsensors_power_watts", "Power that a sensor reads."},
    Description{"zelsensors_fan_speed_rpm", "Speed of a fan."},
    Description{"zelsensors_sensor_value",
                "What a sensor of another quantity reads, in the unit that the label names."},
    Description{"zelsensors_temperature_threshold_celsius", "Threshold of a temperature."},
    Description{"zelsensors_voltage_threshold_volts", "Threshold of a voltage."},
    Description{"zelsensors_current_threshold_amperes", "Threshold of a current."},
    Description{"zelsensors_power_threshold_watts", "Threshold of a power."},
    Description{"zelsensors_fan_speed_threshold_rpm", "Threshold of the speed of a fan."},
    Description{"zelsensors_sensor_threshold_value",
                "Threshold of a sensor of another quantity, in the unit of its reading."},
    Description{"zelsensors_sensor_severity",
                "The gravest threshold that a reading is past: 0 none, 1 non-critical, 2 critical, 3 fatal."},
    Description{"zelsensors_sensor_past_threshold",
                "The severity of the sensors that are past a threshold, and of no others."},
    Description{"zelsensors_severity", "The gravest severity of all sensors."},
    Description{"zelsensors_sensors", "Sensors that the provider names."},
    Description{"zelsensors_sensors_failed", "Of these, the sensors without a reading."},
    Description{"zelsensors_event_log_valid", "Whether the event log is valid."},
    Description{"zelsensors_event_log_full", "Whether the event log is full."},
    Description{"zelsensors_event_log_lines", "Lines in the event log."},
    Description{"zelsensors_event_log_new_lines_total", "Lines that came into the event log since the program started.",
                MetricType::Counter},
    Description{"zelsensors_scrape_success", "Whether the provider answered without an error."},
    Description{"zelsensors_scrape_status", "CIM status of the provider's answer; 0 is success."},
    Description{"zelsensors_scrape_duration_seconds", "Time that the provider took to answer."},
    Description{"zelsensors_build_info", "Always 1; the version of zelhost, and whose chip library is read."},
};
static_assert(DESCRIPTIONS.size() == BuildInfo + 1);

// A unit as unitText() names it, without a rate, and where readings in it and their thresholds belong.
struct Quantity {
    std::string_view unit;
    FamilyNumber reading;
    FamilyNumber threshold;
};
constexpr std::array QUANTITIES{
    Quantity{"°C", TemperatureReading, TemperatureThreshold},
    Quantity{"°F", TemperatureReading, TemperatureThreshold},
    Quantity{"K", TemperatureReading, TemperatureThreshold},
    Quantity{"V", VoltageReading, VoltageThreshold},
    Quantity{"A", CurrentReading, CurrentThreshold},
    Quantity{"W", PowerReading, PowerThreshold},
    Quantity{"rpm", FanReading, FanThreshold},
};
constexpr Quantity OTHER_QUANTITY{"", OtherReading, OtherThreshold};

struct ThresholdKind {
    const char* bound;
    const char* level;
    Number Sensor::*number;
};
constexpr std::array THRESHOLDS{
    ThresholdKind{"lower", "noncritical", &Sensor::lowerNonCritical},
    ThresholdKind{"lower", "critical", &Sensor::lowerCritical},
    ThresholdKind{"lower", "fatal", &Sensor::lowerFatal},
    ThresholdKind{"upper", "noncritical", &Sensor::upperNonCritical},
    ThresholdKind{"upper", "critical", &Sensor::upperCritical},
    ThresholdKind{"upper", "fatal", &Sensor::upperFatal},
};

const Quantity& quantityOf(const Sensor& sensor) {
    const auto* const found = std::find_if(QUANTITIES.begin(), QUANTITIES.end(),
                                           [&](const Quantity& quantity) { return quantity.unit == sensor.unit; });
    return found == QUANTITIES.end() ? OTHER_QUANTITY : *found;
}

// Without regard to the locale. None where no double is near enough to be called the same number.
std::optional<double> doubleIn(std::string_view decimal) {
    double number = 0;
    const auto result = std::from_chars(decimal.data(), decimal.data() + decimal.size(), number);
    return result.ec == std::errc() ? std::optional(number) : std::nullopt;
}

// The double nearest to value × 10^modifier.
std::optional<double> scaledNumber(std::int64_t value, std::int64_t modifier) {
    constexpr std::int64_t exact = std::int64_t{1} << 53U;  // up to here every whole number is a double
    constexpr std::array powers{1e0, 1e1, 1e2, 1e3, 1e4, 1e5, 1e6, 1e7, 1e8, 1e9};
    if (value == 0) return 0;
    // One rounding alone, since both numbers are exact; multiplying by 0.1 would round twice.
    if (modifier <= 0 && modifier > -static_cast<std::int64_t>(powers.size()) && value < exact && value > -exact) {
        return static_cast<double>(value) / powers.at(static_cast<std::size_t>(-modifier));
    }
    return doubleIn(std::to_string(value) + 'e' + std::to_string(modifier));
}

// What the conversion of a unit adds beyond 15 digits is not the sensor's.
std::optional<double> rounded(double number) {
    constexpr int mostDigits = 15;
    std::array<char, 32> text{};
    const char* end = std::to_chars(text.begin(), text.end(), number, std::chars_format::general, mostDigits).ptr;
    return doubleIn({text.data(), static_cast<std::size_t>(end - text.data())});
}

// In the base unit of its quantity.
std::optional<double> baseValue(const Sensor& sensor, Number number) {
    const std::optional<double> value = number ? scaledNumber(*number, sensor.modifier) : std::nullopt;
    if (value && sensor.unit == "°F") return rounded((*value - 32) * 5 / 9);
    if (value && sensor.unit == "K") return rounded(*value - 273.15);
    return value;
}

// The shortest of the usual forms that is read as the same number. The serializer's own 16 digits make 99.85
// 99.84999999999999.
std::string shortest(double number) {
    constexpr int sureDigits = 15;  // of a decimal that short, every digit comes back
    constexpr int allDigits = 17;
    std::array<char, 32> text{};
    const auto write = [&](int digits) {
        const char* end = std::to_chars(text.begin(), text.end(), number, std::chars_format::general, digits).ptr;
        return std::string_view(text.data(), static_cast<std::size_t>(end - text.data()));
    };
    const std::string_view sure = write(sureDigits);
    return std::string(doubleIn(sure) == number ? sure : write(allDigits));
}

bool isHexadecimal(char sign) {
    return std::isxdigit(static_cast<unsigned char>(sign)) != 0;
}

bool looksEscaped(std::string_view text) {
    return text.size() >= 4 && text[0] == '\\' && text[1] == 'x' && isHexadecimal(text[2]) && isHexadecimal(text[3]);
}

// As the tables show it, but for a backslash that would look like the beginning of an escape, which becomes one itself:
// so different texts stay different.
std::string labelText(const std::string& name) {
    const auto isPlain = [](char sign) { return sign >= ' ' && sign <= '~' && sign != '\\'; };
    if (std::all_of(name.begin(), name.end(), isPlain)) return name;
    const std::string_view text = name;
    std::string label;
    for (std::size_t begin = 0;;) {
        std::size_t backslash = text.find('\\', begin);
        while (backslash != std::string_view::npos && !looksEscaped(text.substr(backslash))) {
            backslash = text.find('\\', backslash + 1);
        }
        if (backslash == std::string_view::npos) return label + printable(text.substr(begin));
        label += printable(text.substr(begin, backslash - begin)) + escaped("\\");
        begin = backslash + 1;
    }
}

std::vector<std::string> labelsOf(const std::vector<Sensor>& sensors) {
    std::vector<std::string> labels;
    labels.reserve(sensors.size());
    for (const Sensor& sensor : sensors) labels.push_back(labelText(sensor.name));
    return labels;
}

const char* chipWord(std::optional<bool> isSimulated) {
    if (!isSimulated) return "unknown";
    return *isSimulated ? "simulated" : "system";
}

}  // namespace

// The series of one page, and the text that they had in the last one.
class MetricsPages::Family {
  public:
    explicit Family(const Description& description) {
        m_family.name = description.name;
        m_family.help = description.help;
        m_family.type = description.type;
    }

    struct Label {
        const char* name;
        std::string_view value;  // must stay until the text has been made
    };
    void add(double value, Label first = {}, Label second = {}, Label third = {}) {
        m_series.push_back({value, {first, second, third}});
        for (const Label& label : m_series.back().labels) {
            m_key += label.value;
            m_key += '\xff';  // which no label contains
        }
    }

    // Ends the page's series. Empty where there was none. Only other series are serialized, other values put in.
    const std::string& text() {
        std::vector<double> values;
        values.reserve(m_series.size());
        for (const Series& series : m_series) values.push_back(series.value);
        const bool isOther = m_key != m_keyOfText;
        if (isOther) m_serialized = serialized();
        if (isOther || values != m_valuesOfText) m_text = withValues(values);
        m_valuesOfText = std::move(values);
        std::swap(m_key, m_keyOfText);
        m_key.clear();
        m_series.clear();
        return m_text;
    }

  private:
    struct Series {
        double value;
        std::array<Label, 3> labels;  // those without a name are none
    };

    std::string serialized() {
        if (m_series.empty()) return "";
        m_family.metric.clear();
        m_family.metric.reserve(m_series.size());
        for (const Series& series : m_series) {
            ClientMetric& metric = m_family.metric.emplace_back();
            for (const Label& label : series.labels) {
                if (label.name != nullptr) metric.label.push_back({label.name, std::string(label.value)});
            }
        }
        return prometheus::TextSerializer().Serialize({m_family});
    }

    // What was serialized has no values yet: a 0 follows the last blank of each sample's line.
    std::string withValues(const std::vector<double>& values) const {
        const std::string& page = m_serialized;
        std::string text;
        text.reserve(page.size());
        std::size_t sample = 0;
        for (std::size_t begin = 0; begin < page.size();) {
            const std::size_t end = page.find('\n', begin);
            if (page[begin] == '#') {
                text.append(page, begin, end + 1 - begin);
            } else {
                text.append(page, begin, page.rfind(' ', end) + 1 - begin);
                text += shortest(values[sample++]) + '\n';
            }
            begin = end + 1;
        }
        return text;
    }

    MetricFamily m_family;
    std::vector<Series> m_series;
    std::string m_key;  // the labels of all series
    std::string m_keyOfText;
    std::vector<double> m_valuesOfText;
    std::string m_serialized;
    std::string m_text;
};

MetricsPages::MetricsPages(const MetricsChoice& choice)
    : m_choice(choice), m_families(DESCRIPTIONS.begin(), DESCRIPTIONS.end()) {}

MetricsPages::~MetricsPages() = default;

MetricsPages::Family& MetricsPages::family(std::size_t number) {
    return m_families[number];
}

void MetricsPages::addReading(const Sensor& sensor, const std::string& label) {
    if (!sensor.reading) return;
    const FamilyNumber number = quantityOf(sensor).reading;
    const Family::Label unit = number == OtherReading ? Family::Label{"unit", sensor.unit} : Family::Label{};
    if (const std::optional<double> value = baseValue(sensor, sensor.reading)) {
        family(number).add(*value, {"sensor", label}, unit);
    }
    const auto severity = static_cast<int>(sensor.state.severity);
    family(SensorSeverity).add(severity, {"sensor", label});
    if (severity > 0) family(SensorPastThreshold).add(severity, {"sensor", label});
}

void MetricsPages::addThresholds(const Sensor& sensor, const std::string& label) {
    Family& thresholds = family(quantityOf(sensor).threshold);
    for (const auto& [bound, level, number] : THRESHOLDS) {
        if (const std::optional<double> value = baseValue(sensor, sensor.*number)) {
            thresholds.add(*value, {"sensor", label}, {"bound", bound}, {"level", level});
        }
    }
}

void MetricsPages::addSensors(const std::vector<Sensor>& sensors, const std::vector<std::string>& labels) {
    std::unordered_set<std::string_view> names;
    std::size_t failed = 0;
    Severity gravest = Severity::Normal;
    for (std::size_t i = 0; i < sensors.size(); ++i) {
        if (!names.insert(sensors[i].name).second) continue;
        if (!sensors[i].reading) ++failed;
        gravest = std::max(gravest, sensors[i].state.severity);
        addReading(sensors[i], labels[i]);
        if (m_choice.hasThresholds) addThresholds(sensors[i], labels[i]);
    }
    if (failed < names.size()) family(GravestSeverity).add(static_cast<int>(gravest));
    family(Sensors).add(static_cast<double>(names.size()));
    family(SensorsFailed).add(static_cast<double>(failed));
}

void MetricsPages::addEventLog(const EventLogRound& round) {
    if (round.log->isValid) family(EventLogValid).add(*round.log->isValid ? 1 : 0);
    if (round.log->isFull) family(EventLogFull).add(*round.log->isFull ? 1 : 0);
    family(EventLogLines).add(static_cast<double>(round.log->lines.size()));
    if (round.newLines) family(EventLogNewLines).add(static_cast<double>(*round.newLines));
}

void MetricsPages::addScrape(const char* collector, bool isSuccess, CMPIrc status,
                             std::chrono::duration<double> duration) {
    const Family::Label label{"collector", collector};
    family(ScrapeSuccess).add(isSuccess ? 1 : 0, label);
    family(ScrapeStatus).add(status, label);
    family(ScrapeDuration).add(duration.count(), label);
}

std::string MetricsPages::next(const MetricsRound& round) {
    const bool hasSensors = round.sensors.status.rc == CMPI_RC_OK;
    const std::vector<std::string> labels = labelsOf(round.sensors.sensors);
    if (hasSensors) addSensors(round.sensors.sensors, labels);
    if (round.eventLog.log) addEventLog(round.eventLog);
    addScrape("sensors", hasSensors, round.sensors.status.rc, round.sensorsDuration);
    addScrape("event_log", round.eventLog.log.has_value(), round.eventLog.status.rc, round.eventLogDuration);
    family(BuildInfo).add(1, {"version", ZELHOST_VERSION}, {"chip", chipWord(m_choice.isChipSimulated)});
    std::string page;
    for (Family& each : m_families) page += each.text();
    return page;
}

}  // namespace host
