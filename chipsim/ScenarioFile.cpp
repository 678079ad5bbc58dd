#include "ScenarioFile.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <functional>
#include <iterator>
#include <limits>
#include <map>
#include <memory>
#include <optional>
#include <sstream>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "BuiltinScenario.h"
#include "MovementReader.h"
#include "TableReader.h"
#include "Words.h"

namespace {

constexpr std::int64_t UINT32_TOP = std::numeric_limits<std::uint32_t>::max();

constexpr Range ANY_HANDLE = {0, UINT32_TOP};
constexpr Range ANY_BYTE = {0, 255};
constexpr Range COUNT = {1, 10000};
constexpr Range DELAY_MILLISECONDS = {0, 600000};
constexpr Range RECORDED_MILLISECONDS = {0, std::numeric_limits<int>::max()};

constexpr Word MODELS[] = {{"none", static_cast<int>(Model::None)},
                           {"grebel", static_cast<int>(Model::Grebel)},
                           {"zan", static_cast<int>(Model::Zan)}};
constexpr Word OPERATIONS[] = {{"initialise", static_cast<int>(Operation::Initialise)},
                               {"enumerate", static_cast<int>(Operation::Enumerate)},
                               {"information", static_cast<int>(Operation::Information)},
                               {"read", static_cast<int>(Operation::Read)},
                               {"event-log", static_cast<int>(Operation::EventLog)}};

std::string_view wordIn(WordList words, int number) {
    const auto* const found =
        std::find_if(words.begin(), words.end(), [number](const Word& word) { return word.number == number; });
    return found == words.end() ? std::string_view() : found->word;
}

// The numbers of a sensor that a chip need not report.
constexpr NumberKey OPTIONAL_NUMBERS[] = {
    {"accuracy", &CSensorInformation::accuracy},
    {"hysteresis", &CSensorInformation::hysteresis},
    {"lower-threshold-critical", &CSensorInformation::lowerThresholdCritical},
    {"lower-threshold-fatal", &CSensorInformation::lowerThresholdFatal},
    {"lower-threshold-non-critical", &CSensorInformation::lowerThresholdNonCritical},
    {"max-readable", &CSensorInformation::maxReadable},
    {"min-readable", &CSensorInformation::minReadable},
    {"nominal-reading", &CSensorInformation::nominalReading},
    {"resolution", &CSensorInformation::resolution},
    {"unread", &CSensorInformation::unread},
    {"upper-threshold-critical", &CSensorInformation::upperThresholdCritical},
    {"upper-threshold-fatal", &CSensorInformation::upperThresholdFatal},
    {"upper-threshold-non-critical", &CSensorInformation::upperThresholdNonCritical},
};

CSensorInformation readInformation(const TableReader& sensor) {
    CSensorInformation information{};
    sensor.collect([&] { information.name = sensor.text("name"); });
    sensor.collect([&] { information.sensorType = sensor.code("sensor-type", sensorTypeWords()); });
    sensor.collect([&] {
        if (!sensor.has("other-sensor-type-description")) return;
        information.otherSensorTypeDescription = sensor.text("other-sensor-type-description");
    });
    sensor.collect([&] { information.baseUnits = sensor.code("base-units", baseUnitsWords()); });
    sensor.collect([&] { information.rateUnits = sensor.code("rate-units", rateUnitsWords()); });
    sensor.collect([&] { information.unitModifier = sensor.integer("unit-modifier", 0); });
    sensor.collect([&] { information.isLinear = sensor.boolean("is-linear", true); });
    for (const NumberKey& number : OPTIONAL_NUMBERS) {
        sensor.collect([&] { information.*number.member = sensor.integer(number.key, NOT_AVAILABLE); });
    }
    return information;
}

std::string hexadecimal(std::int64_t handle) {
    char text[24];
    std::snprintf(text, sizeof text, "0x%08llx", static_cast<unsigned long long>(handle));
    return text;
}

std::string numbered(std::string name, std::uint64_t number) {
    const std::string digits = std::to_string(number);
    for (std::size_t at = name.find("{}"); at != std::string::npos; at = name.find("{}", at + digits.size())) {
        name.replace(at, 2, digits);
    }
    return name;
}

// Reads the whole file, part by part, and collects its mistakes.
class ScenarioReader {
  public:
    ScenarioReader(std::string_view text, const std::string& name) : m_file(TableReader::ofFile(text, name)) {}

    Scenario read() {
        m_file.allowOnly({"model", "seed", "recording", "sensor", "event-log", "fault"});
        m_file.collect([&] {
            m_scenario.model = static_cast<Model>(m_file.word("model", MODELS, static_cast<int>(Model::None)));
        });
        m_file.collect([&] { m_seed = static_cast<std::uint64_t>(m_file.number("seed", {0, UINT32_TOP}, 1)); });
        m_file.collect([&] { readRecording(); });
        m_areHandlesKnown = m_file.collect([&] {
            for (const TableReader& sensor : m_file.tables("sensor")) addSensors(sensor);
        }) && m_areHandlesKnown;
        m_file.collect([&] { readEventLog(); });
        m_file.collect([&] {
            for (const TableReader& fault : m_file.tables("fault")) addFault(fault);
        });
        m_file.throwMistakes();
        return std::move(m_scenario);
    }

  private:
    void readRecording() {
        if (!m_file.has("recording")) return;
        const TableReader reader = m_file.table("recording", "[recording]", "one [recording] table");
        reader.allowOnly({"times-ms"});
        auto times = std::make_shared<RecordedTimes>(reader.integers("times-ms"));
        if (times->front() < 0 ||
            std::adjacent_find(times->begin(), times->end(), std::greater_equal<>()) != times->end()) {
            reader.wrong("times-ms", "in another order", "times from 0 on, each later than the one before");
        }
        m_times = std::move(times);
    }

    static void allowSensorKeys(const TableReader& sensor) {
        std::vector<std::string_view> keys = {
            "handle",     "count",      "name",          "reading",  "sensor-type", "other-sensor-type-description",
            "base-units", "rate-units", "unit-modifier", "is-linear"};
        for (const NumberKey& number : OPTIONAL_NUMBERS) keys.push_back(number.key);
        sensor.allowOnly(keys);
    }

    void addSensors(const TableReader& sensor) {
        allowSensorKeys(sensor);
        std::int64_t count = 1;
        std::int64_t first = 0;
        bool isKnown = sensor.collect([&] { count = sensor.number("count", COUNT, 1); });
        isKnown &= sensor.collect([&] { first = sensor.number("handle", {0, UINT32_TOP + 1 - count}); });
        isKnown &= sensor.collect([&] {
            for (std::int64_t copy = 0; isKnown && copy < count; ++copy) {
                claimHandle(sensor, static_cast<unsigned>(first + copy));
            }
        });
        m_areHandlesKnown &= isKnown;
        const CSensorInformation information = readInformation(sensor);
        std::optional<MovementReader> movement;
        sensor.collect([&] { movement.emplace(sensor, m_seed, m_times); });
        if (!sensor.hasMistakes()) addCopies(sensor, {static_cast<unsigned>(first), information, {}}, count, *movement);
    }

    // So many sensors, from the first on.
    void addCopies(const TableReader& sensor, const SimulatedSensor& first, std::int64_t count,
                   const MovementReader& movement) {
        for (std::int64_t copy = 0; copy < count; ++copy) {
            const unsigned handle = first.handle + static_cast<unsigned>(copy);
            const auto ahead = static_cast<std::uint64_t>(copy);
            m_scenario.sensors.push_back({handle, first.information, movement.movementOf(handle, ahead)});
            if (sensor.has("count")) {
                std::string& name = m_scenario.sensors.back().information.name;
                name = numbered(name, ahead + 1);
            }
        }
    }

    void claimHandle(const TableReader& sensor, unsigned handle) {
        const auto [owner, isNew] = m_handleLines.emplace(handle, sensor.lineOf("handle"));
        if (isNew) return;
        sensor.wrong("handle", hexadecimal(handle) + " again, which line " + std::to_string(owner->second) + " gives",
                     "each handle once");
    }

    void readEventLog() {
        CSystemEventLog& log = m_scenario.eventLog;
        log.logValid = 1;
        if (!m_file.has("event-log")) return;
        const TableReader reader = m_file.table("event-log", "[event-log]", "one [event-log] table");
        reader.allowOnly({"valid", "full", "multiple-event-count-increment", "multiple-event-time-window", "lines"});
        reader.collect([&] { log.logValid = reader.boolean("valid", true) ? 1 : 0; });
        reader.collect([&] { log.logFull = reader.boolean("full", false) ? 1 : 0; });
        const auto byte = [&](std::string_view key) {
            return static_cast<unsigned char>(reader.number(key, ANY_BYTE, 0));
        };
        reader.collect([&] { log.multipleEventCountIncrement = byte("multiple-event-count-increment"); });
        reader.collect([&] { log.multipleEventTimeWindow = byte("multiple-event-time-window"); });
        reader.collect([&] { log.lines = reader.texts("lines"); });
    }

    void addFault(const TableReader& reader) {
        reader.allowOnly({"operation", "handle", "from-call", "calls", "from-ms", "for-ms", "status", "delay-ms"});
        constexpr Range anyCount = {1, UINT32_TOP};
        SimulatedFault fault;
        fault.operation = Operation::Read;  // takes a handle, so that a mistake here does not make one of the handle
        reader.collect([&] { fault.operation = static_cast<Operation>(reader.word("operation", OPERATIONS)); });
        reader.collect([&] {
            if (reader.has("handle")) fault.handle = faultHandle(reader, fault.operation);
        });
        reader.collect([&] { fault.fromCall = static_cast<std::uint64_t>(reader.number("from-call", anyCount, 1)); });
        reader.collect([&] {
            if (reader.has("calls")) fault.calls = static_cast<std::uint64_t>(reader.number("calls", anyCount));
        });
        reader.collect([&] { fault.fromMilliseconds = reader.number("from-ms", RECORDED_MILLISECONDS, 0); });
        reader.collect([&] {
            if (reader.has("for-ms")) fault.milliseconds = reader.number("for-ms", {1, RECORDED_MILLISECONDS.highest});
        });
        reader.collect(
            [&] { fault.delayMilliseconds = static_cast<unsigned>(reader.number("delay-ms", DELAY_MILLISECONDS, 0)); });
        reader.collect([&] {
            // A fault that only delays may leave the status out.
            if (reader.has("delay-ms") && !reader.has("status")) return;
            fault.status = static_cast<sscode>(reader.number("status", {1, UINT32_TOP}));
        });
        m_scenario.faults.push_back(fault);
    }

    unsigned faultHandle(const TableReader& reader, Operation operation) const {
        const std::int64_t handle = reader.number("handle", ANY_HANDLE);
        if (operation != Operation::Information && operation != Operation::Read) {
            reader.wrong("handle", "given", "it with the operations information and read only");
        }
        if (m_areHandlesKnown && m_handleLines.count(static_cast<unsigned>(handle)) == 0) {
            reader.wrong("handle", hexadecimal(handle), "the handle of a sensor of this file");
        }
        return static_cast<unsigned>(handle);
    }

    TableReader m_file;
    Scenario m_scenario;
    std::uint64_t m_seed = 1;
    std::shared_ptr<const RecordedTimes> m_times;     // null where the file has no good recording
    std::map<unsigned, std::uint64_t> m_handleLines;  // where each handle was given
    bool m_areHandlesKnown = true;                    // no sensor's handles are a mistake
};

std::string readFile(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    std::ostringstream text;
    // A directory opens like a file, and fails at the first read. An empty file is not copied, which would fail too.
    file.peek();
    if (file.good()) text << file.rdbuf();
    if (file.fail() || text.fail()) {
        throw ScenarioError(path + ": cannot be read (" + std::strerror(errno) + "), expected a scenario file");
    }
    return text.str();
}

}  // namespace

std::string_view wordOf(Model model) {
    return wordIn(MODELS, static_cast<int>(model));
}

std::string_view wordOf(Operation operation) {
    return wordIn(OPERATIONS, static_cast<int>(operation));
}

std::vector<NumberKey> optionalNumbers() {
    return {std::begin(OPTIONAL_NUMBERS), std::end(OPTIONAL_NUMBERS)};
}

Scenario readScenario(const std::string& path) {
    return ScenarioReader(readFile(path), path).read();
}

Scenario loadScenario() {
    const char* path = std::getenv("ZELCHIP_SCENARIO");
    if (path == nullptr || *path == '\0') return ScenarioReader(BUILTIN_SCENARIO, "built-in scenario").read();
    return readScenario(path);
}
