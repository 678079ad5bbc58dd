#include "format/ScenarioText.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <functional>
#include <map>
#include <optional>
#include <regex>
#include <set>
#include <string_view>
#include <utility>

#include "chipsim/Words.h"
#include "text/Utf8.h"

namespace host {
namespace {

constexpr const char* FAILED_READ = "0x00010005";   // as chip libraries answer for a sensor that is not there
constexpr const char* FAILED_START = "0x00010002";  // as they answer without the kernel's driver
constexpr std::size_t LINE_COLUMNS = 110;

struct NumberKey {
    const char* key;
    const char* property;
};
constexpr NumberKey NUMBERS[] = {{"unit-modifier", "UnitModifier"},
                                 {"accuracy", "Accuracy"},
                                 {"hysteresis", "Hysteresis"},
                                 {"max-readable", "MaxReadable"},
                                 {"min-readable", "MinReadable"},
                                 {"nominal-reading", "NominalReading"},
                                 {"resolution", "Resolution"},
                                 {"lower-threshold-non-critical", "LowerThresholdNonCritical"},
                                 {"lower-threshold-critical", "LowerThresholdCritical"},
                                 {"lower-threshold-fatal", "LowerThresholdFatal"},
                                 {"upper-threshold-non-critical", "UpperThresholdNonCritical"},
                                 {"upper-threshold-critical", "UpperThresholdCritical"},
                                 {"upper-threshold-fatal", "UpperThresholdFatal"}};

// As the chip gave it, where CIM takes the same 32 bits for an unsigned number.
std::int64_t signedOf(std::int64_t number) {
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(number));
}

Number propertyNumber(const broker::Instance& instance, const char* property) {
    const broker::Value* value = instance.findProperty(property);
    return value == nullptr ? std::nullopt : numberIn(*value);
}

std::string propertyText(const broker::Instance& instance, const char* property) {
    const broker::Value* value = instance.findProperty(property);
    return value == nullptr || value->isNull ? "" : value->text;
}

bool isTrue(const broker::Instance& instance, const char* property, bool otherwise) {
    const broker::Value* value = instance.findProperty(property);
    return value == nullptr || value->isNull ? otherwise : value->unsignedNumber != 0;
}

// A basic string of TOML.
std::string quoted(std::string_view text) {
    std::string quotedText = "\"";
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte < 0x20 || byte == 0x7f) {
            char code[8];
            std::snprintf(code, sizeof code, "\\u%04x", byte);
            quotedText += code;
        } else {
            if (c == '"' || c == '\\') quotedText += '\\';
            quotedText += c;
        }
    }
    return quotedText + '"';
}

// The word where there is one.
std::string codeText(std::int64_t number, const WordList& words) {
    for (const Word& word : words) {
        if (word.number == number) return '"' + std::string(word.word) + '"';
    }
    return std::to_string(number);
}

// "[1, 2, 3]", in as many lines as it takes.
template <typename Numbers>
std::string arrayText(const Numbers& numbers) {
    std::string text = "[";
    std::size_t columns = LINE_COLUMNS;
    bool isFirst = true;
    for (const auto number : numbers) {
        const std::string digits = std::to_string(number);
        if (!isFirst) text += ',';
        if (columns + digits.size() > LINE_COLUMNS) {
            text += "\n    ";
            columns = 4;
        } else {
            text += ' ';
        }
        text += digits;
        columns += digits.size() + 2;
        isFirst = false;
    }
    return text + "]";
}

// "CPU Fan(00000040)": the chip's label and handle. Nothing where the name has another form.
struct Label {
    std::string text;
    unsigned handle;
};
std::optional<Label> labelIn(const std::string& name) {
    constexpr std::size_t digits = 8;
    if (name.size() < digits + 2 || name.back() != ')' || name[name.size() - digits - 2] != '(') return std::nullopt;
    const std::string handle = name.substr(name.size() - digits - 1, digits);
    if (handle.find_first_not_of("0123456789abcdef") != std::string::npos) return std::nullopt;
    return Label{name.substr(0, name.size() - digits - 2), static_cast<unsigned>(std::stoul(handle, nullptr, 16))};
}

// Numbered words, the same for the same text.
class Words {
  public:
    explicit Words(std::string word) : m_word(std::move(word)) {}

    std::string of(const std::string& text) {
        if (text.empty()) return text;
        const auto [known, isNew] = m_numbers.emplace(text, m_numbers.size() + 1);
        return m_word + ' ' + std::to_string(known->second);
    }

  private:
    std::string m_word;
    std::map<std::string, std::size_t> m_numbers;
};

// From a round on, so many rounds.
struct Stretch {
    std::size_t begin;
    std::size_t end;
};

std::vector<Stretch> stretchesOf(const std::vector<bool>& isHit) {
    std::vector<Stretch> stretches;
    for (std::size_t i = 0; i < isHit.size(); ++i) {
        if (!isHit[i]) continue;
        if (!stretches.empty() && stretches.back().end == i) {
            ++stretches.back().end;
        } else {
            stretches.push_back({i, i + 1});
        }
    }
    return stretches;
}

class Writer {
  public:
    Writer(const Recording& recording, const ScenarioChoice& choice) : m_recording(recording), m_choice(choice) {
        for (const std::string& loss : recording.losses) m_losses.push_back(printable(loss));
    }

    ScenarioText text() {
        m_text = "# " + m_choice.heading + '\n';
        if (m_recording.times.size() > 1) addTimes();
        reserveHandles();
        for (const RecordedSensor& sensor : m_recording.sensors) addSensor(sensor);
        if (m_recording.eventLog) addEventLog(*m_recording.eventLog);
        if (isPlayedAsStarted()) {
            addFaults("event-log", "", m_recording.eventLogFailures);
        } else {
            m_text += "\n[[fault]]\noperation = \"initialise\"\nstatus = " + std::string(FAILED_START) + '\n';
        }
        for (const auto& [round, fault] : m_faults) m_text += fault;
        return {m_text, m_losses};
    }

  private:
    bool isPlayedAsStarted() const { return m_recording.start.rc != CMPI_RC_ERR_METHOD_NOT_AVAILABLE; }

    void addTimes() {
        std::vector<std::int64_t> times;
        for (const std::chrono::milliseconds time : m_recording.times) times.push_back(time.count());
        m_text += "\n[recording]\ntimes-ms = " + arrayText(times) + '\n';
    }

    void add(const char* key, const std::string& value) { m_text += std::string(key) + " = " + value + '\n'; }

    // As it is shown on a terminal where TOML cannot hold it.
    std::string holdable(const std::string& text, const std::string& what) {
        if (isUtf8(text)) return text;
        m_losses.push_back(what + " has bytes that are no UTF-8; they are written as \\xNN");
        return printable(text);
    }

    static bool isUtf8(std::string_view text) {
        while (!text.empty()) {
            const Character character = firstCharacter(text);
            if (!character.isUtf8) return false;
            text.remove_prefix(character.length);
        }
        return true;
    }

    // What stands in a name is taken before a sensor without a handle gets one.
    void reserveHandles() {
        for (const RecordedSensor& sensor : m_recording.sensors) {
            if (const std::optional<Label> label = labelIn(sensor.name)) m_reserved.insert(label->handle);
        }
    }

    unsigned freeHandle() const {
        unsigned handle = 1;
        while (m_handles.count(handle) != 0 || m_reserved.count(handle) != 0) ++handle;
        return handle;
    }

    Label labelOf(const std::string& name) {
        std::optional<Label> label = labelIn(name);
        if (!label || m_handles.count(label->handle) != 0) {
            label = Label{name, freeHandle()};
            m_losses.push_back(printable(name) +
                               " does not end in a handle of its own; played back, it has another name");
        }
        m_handles.insert(label->handle);
        return *label;
    }

    void addSensor(const RecordedSensor& sensor) {
        const std::string& whole = sensor.name;
        if (isNameOfDriveSensor(whole)) {
            m_losses.push_back(printable(whole) + " is a drive's; played back, it is the chip's");
        }
        const Label label = labelOf(whole);
        char handle[16];
        std::snprintf(handle, sizeof handle, "0x%08x", label.handle);
        m_text += "\n[[sensor]]\n";
        add("handle", handle);
        add("name", quoted(m_choice.isRedacted ? m_names.of(label.text) : holdable(label.text, printable(whole))));
        addDescription(sensor.instance, printable(whole));
        addReadings(sensor, handle);
    }

    void addDescription(const broker::Instance& instance, const std::string& name) {
        add("sensor-type", codeText(propertyNumber(instance, "SensorType").value_or(0), sensorTypeWords()));
        if (const std::string other = propertyText(instance, "OtherSensorTypeDescription"); !other.empty()) {
            add("other-sensor-type-description",
                quoted(m_choice.isRedacted ? m_texts.of(other) : holdable(other, "the description of " + name)));
        }
        add("base-units", codeText(propertyNumber(instance, "BaseUnits").value_or(0), baseUnitsWords()));
        if (const Number units = propertyNumber(instance, "RateUnits"); units.value_or(0) != 0) {
            add("rate-units", codeText(*units, rateUnitsWords()));
        }
        if (!isTrue(instance, "IsLinear", true)) add("is-linear", "false");
        for (const NumberKey& each : NUMBERS) {
            const Number number = propertyNumber(instance, each.property);
            const bool isDefault = std::string_view(each.key) == "unit-modifier" && number.value_or(0) == 0;
            if (number && !isDefault) add(each.key, std::to_string(signedOf(*number)));
        }
    }

    // Where a reading failed the one before stands, or the first, and the fault hides it.
    void addReadings(const RecordedSensor& sensor, const char* handle) {
        Number last;
        for (const Number reading : sensor.readings) {
            if (reading && !last) last = reading;
        }
        std::vector<std::int64_t> values;
        std::vector<bool> isFailed;
        for (const Number reading : sensor.readings) {
            if (reading) last = reading;
            values.push_back(last.value_or(0));
            isFailed.push_back(!reading);
        }
        const bool isConstant = std::adjacent_find(values.begin(), values.end(), std::not_equal_to<>()) == values.end();
        add("reading", isConstant ? std::to_string(values.empty() ? 0 : values.front())
                                  : "{ kind = \"recorded\", values = " + arrayText(values) + " }");
        addFaults("read", handle, isFailed);
    }

    // The provider reads each sensor when it starts, which has to succeed.
    void addFaults(const char* operation, const std::string& handle, const std::vector<bool>& isFailed) {
        const std::vector<std::chrono::milliseconds>& times = m_recording.times;
        for (const Stretch& stretch : stretchesOf(isFailed)) {
            std::string fault = "\n[[fault]]\noperation = \"" + std::string(operation) + "\"\n";
            if (!handle.empty()) fault += "handle = " + handle + "\nfrom-call = 2\n";
            if (stretch.begin > 0) fault += "from-ms = " + std::to_string(times[stretch.begin].count()) + '\n';
            if (stretch.end < times.size()) {
                fault += "for-ms = " + std::to_string((times[stretch.end] - times[stretch.begin]).count()) + '\n';
            }
            m_faults.emplace(stretch.begin, fault + "status = " + FAILED_READ + '\n');
        }
    }

    void addEventLog(const broker::Instance& log) {
        m_text += "\n[event-log]\n";
        if (!isTrue(log, "LogValid", true)) add("valid", "false");
        if (isTrue(log, "LogFull", false)) add("full", "true");
        for (const NumberKey& each : {NumberKey{"multiple-event-count-increment", "LogMultipleEventCountIncrement"},
                                      NumberKey{"multiple-event-time-window", "LogMultipleEventTimeWindow"}}) {
            if (const Number number = propertyNumber(log, each.property); number.value_or(0) != 0) {
                add(each.key, std::to_string(*number));
            }
        }
        const broker::Value* lines = log.findProperty("LogLines");
        if (lines == nullptr || lines->elements.empty()) return;
        m_text += "lines = [\n";
        for (const broker::Value& line : lines->elements) m_text += "    " + quoted(lineText(line.text)) + ",\n";
        m_text += "]\n";
    }

    // A redacted line keeps its number and date, which tell nothing of a person.
    std::string lineText(const std::string& line) {
        if (!m_choice.isRedacted) return holdable(line, "the event log");
        static const std::regex form("([0-9]{1,6} )?([0-9]{4}-[0-9]{2}-[0-9]{2}[ T][0-9]{2}:[0-9]{2}(:[0-9]{2})? )?");
        std::smatch beginning;
        std::regex_search(line, beginning, form, std::regex_constants::match_continuous);
        return beginning.str() + m_texts.of(beginning.suffix());
    }

    const Recording& m_recording;
    const ScenarioChoice& m_choice;
    std::string m_text;
    std::multimap<std::size_t, std::string> m_faults;  // by the rounds in which they came
    std::vector<std::string> m_losses;
    std::set<unsigned> m_reserved;  // handles that stand in names
    std::set<unsigned> m_handles;   // given so far
    Words m_names{"Sensor"};
    Words m_texts{"Text"};
};

}  // namespace

bool isPlayable(const broker::Status& start) {
    return start.rc == CMPI_RC_OK || start.rc == CMPI_RC_ERR_FAILED || start.rc == CMPI_RC_ERR_METHOD_NOT_AVAILABLE;
}

ScenarioText scenarioText(const Recording& recording, const ScenarioChoice& choice) {
    return Writer(recording, choice).text();
}

}  // namespace host
