#include "ScenarioFile.h"

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <limits>
#include <map>
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

constexpr Word MODELS[] = {{"none", static_cast<int>(Model::None)},
                           {"grebel", static_cast<int>(Model::Grebel)},
                           {"zan", static_cast<int>(Model::Zan)}};
constexpr Word OPERATIONS[] = {{"initialise", static_cast<int>(Operation::Initialise)},
                               {"enumerate", static_cast<int>(Operation::Enumerate)},
                               {"information", static_cast<int>(Operation::Information)},
                               {"read", static_cast<int>(Operation::Read)},
                               {"event-log", static_cast<int>(Operation::EventLog)}};

struct NumberKey {
    std::string_view key;
    int CSensorInformation::*member;
};
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
    information.name = sensor.text("name");
    information.sensorType = sensor.code("sensor-type", sensorTypeWords());
    if (sensor.has("other-sensor-type-description")) {
        information.otherSensorTypeDescription = sensor.text("other-sensor-type-description");
    }
    information.baseUnits = sensor.code("base-units", baseUnitsWords());
    information.rateUnits = sensor.code("rate-units", rateUnitsWords());
    information.unitModifier = sensor.integer("unit-modifier", 0);
    information.isLinear = sensor.boolean("is-linear", true);
    for (const NumberKey& number : OPTIONAL_NUMBERS) {
        information.*number.member = sensor.integer(number.key, NOT_AVAILABLE);
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

// Reads the whole file, part by part.
class ScenarioReader {
  public:
    ScenarioReader(std::string_view text, const std::string& name) : m_file(TableReader::ofFile(text, name)) {}

    Scenario read() {
        m_file.allowOnly({"model", "seed", "sensor", "event-log", "fault"});
        m_scenario.model = static_cast<Model>(m_file.word("model", MODELS, static_cast<int>(Model::None)));
        m_seed = static_cast<std::uint64_t>(m_file.number("seed", {0, UINT32_TOP}, 1));
        for (const TableReader& sensor : m_file.tables("sensor")) addSensors(sensor);
        readEventLog();
        for (const TableReader& fault : m_file.tables("fault")) addFault(fault);
        return std::move(m_scenario);
    }

  private:
    static void allowSensorKeys(const TableReader& sensor) {
        std::vector<std::string_view> keys = {
            "handle",     "count",      "name",          "reading",  "sensor-type", "other-sensor-type-description",
            "base-units", "rate-units", "unit-modifier", "is-linear"};
        for (const NumberKey& number : OPTIONAL_NUMBERS) keys.push_back(number.key);
        sensor.allowOnly(keys);
    }

    void addSensors(const TableReader& sensor) {
        allowSensorKeys(sensor);
        const auto count = static_cast<std::uint64_t>(sensor.number("count", COUNT, 1));
        const auto first = sensor.number("handle", {0, UINT32_TOP + 1 - static_cast<std::int64_t>(count)});
        const CSensorInformation information = readInformation(sensor);
        const MovementReader movement(sensor, m_seed);
        for (std::uint64_t copy = 0; copy < count; ++copy) {
            const auto handle = static_cast<unsigned>(static_cast<std::uint64_t>(first) + copy);
            claimHandle(sensor, handle);
            m_scenario.sensors.push_back({handle, information, movement.movementOf(handle, copy)});
            if (sensor.has("count")) {
                std::string& name = m_scenario.sensors.back().information.name;
                name = numbered(name, copy + 1);
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
        log.logValid = reader.boolean("valid", true) ? 1 : 0;
        log.logFull = reader.boolean("full", false) ? 1 : 0;
        log.multipleEventCountIncrement =
            static_cast<unsigned char>(reader.number("multiple-event-count-increment", ANY_BYTE, 0));
        log.multipleEventTimeWindow =
            static_cast<unsigned char>(reader.number("multiple-event-time-window", ANY_BYTE, 0));
        log.lines = reader.texts("lines");
    }

    void addFault(const TableReader& reader) {
        reader.allowOnly({"operation", "handle", "from-call", "calls", "status", "delay-ms"});
        constexpr Range anyCount = {1, UINT32_TOP};
        SimulatedFault fault;
        fault.operation = static_cast<Operation>(reader.word("operation", OPERATIONS));
        if (reader.has("handle")) fault.handle = faultHandle(reader, fault.operation);
        fault.fromCall = static_cast<std::uint64_t>(reader.number("from-call", anyCount, 1));
        if (reader.has("calls")) fault.calls = static_cast<std::uint64_t>(reader.number("calls", anyCount));
        fault.delayMilliseconds = static_cast<unsigned>(reader.number("delay-ms", DELAY_MILLISECONDS, 0));
        // A fault that only delays may leave the status out.
        if (!reader.has("delay-ms") || reader.has("status")) {
            fault.status = static_cast<sscode>(reader.number("status", {1, UINT32_TOP}));
        }
        m_scenario.faults.push_back(fault);
    }

    unsigned faultHandle(const TableReader& reader, Operation operation) const {
        const std::int64_t handle = reader.number("handle", ANY_HANDLE);
        if (operation != Operation::Information && operation != Operation::Read) {
            reader.wrong("handle", "given", "it with the operations information and read only");
        }
        if (m_handleLines.count(static_cast<unsigned>(handle)) == 0) {
            reader.wrong("handle", hexadecimal(handle), "the handle of a sensor of this file");
        }
        return static_cast<unsigned>(handle);
    }

    TableReader m_file;
    Scenario m_scenario;
    std::uint64_t m_seed = 1;
    std::map<unsigned, std::uint64_t> m_handleLines;  // where each handle was given
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

Scenario loadScenario() {
    const char* path = std::getenv("ZELCHIP_SCENARIO");
    if (path == nullptr || *path == '\0') return ScenarioReader(BUILTIN_SCENARIO, "built-in scenario").read();
    return ScenarioReader(readFile(path), path).read();
}
