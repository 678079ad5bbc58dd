#include "ScenarioFile.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <limits>
#include <map>
#include <memory>
#include <optional>
#include <sstream>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "AsciiToml.h"
#include "Toml.h"
#include "Words.h"

namespace {

constexpr std::int64_t UINT32_TOP = std::numeric_limits<std::uint32_t>::max();
constexpr int NOT_AVAILABLE = std::numeric_limits<int>::min();  // the bit pattern 0x80000000

struct Range {
    std::int64_t lowest;
    std::int64_t highest;
};

constexpr Range ANY_INT = {std::numeric_limits<int>::min(), std::numeric_limits<int>::max()};
constexpr Range ANY_HANDLE = {0, UINT32_TOP};
constexpr Range ANY_CODE = {0, 65535};
constexpr Range ANY_BYTE = {0, 255};
constexpr Range STEPS_PER_ROUND = {1, 86400};
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
constexpr Word ENDS[] = {{"repeat", static_cast<int>(AtEnd::Repeat)},
                         {"hold", static_cast<int>(AtEnd::Hold)},
                         {"back", static_cast<int>(AtEnd::Back)}};

enum class Every { Call, Clock };
constexpr Word EVERY[] = {{"call", static_cast<int>(Every::Call)}, {"clock", static_cast<int>(Every::Clock)}};

enum class Kind { Constant, Series, Sine, Ramp, RandomWalk };
constexpr Word KINDS[] = {{"constant", static_cast<int>(Kind::Constant)},
                          {"series", static_cast<int>(Kind::Series)},
                          {"sine", static_cast<int>(Kind::Sine)},
                          {"ramp", static_cast<int>(Kind::Ramp)},
                          {"random-walk", static_cast<int>(Kind::RandomWalk)}};

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

std::string joined(const std::vector<std::string_view>& words) {
    std::string text;
    for (const std::string_view word : words) text.append(text.empty() ? "" : ", ").append(word);
    return text;
}

template <class Words>
std::string wordList(const Words& words) {
    std::vector<std::string_view> list;
    list.reserve(std::size(words));
    for (const Word& word : words) list.push_back(word.word);
    return joined(list);
}

template <class Words>
std::optional<int> numberOf(const Words& words, std::string_view text) {
    const auto found =
        std::find_if(std::begin(words), std::end(words), [&](const Word& word) { return word.word == text; });
    return found == std::end(words) ? std::nullopt : std::optional<int>(found->number);
}

std::string describe(const Range& range) {
    return "an integer from " + std::to_string(range.lowest) + " to " + std::to_string(range.highest);
}

std::string hexadecimal(std::int64_t handle) {
    char text[24];
    std::snprintf(text, sizeof text, "0x%08llx", static_cast<unsigned long long>(handle));
    return text;
}

const char* typeName(const toml::node& node) {
    switch (node.type()) {
        case toml::node_type::table:
            return "a table";
        case toml::node_type::array:
            return "an array";
        case toml::node_type::string:
            return "a string";
        case toml::node_type::integer:
            return "an integer";
        case toml::node_type::floating_point:
            return "a floating-point number";
        case toml::node_type::boolean:
            return "a boolean";
        default:
            return "a date or time";
    }
}

[[noreturn]] void fail(std::string_view file, std::uint64_t line, const std::string& wrong,
                       const std::string& expected) {
    std::string message(file);
    message += ':' + std::to_string(line) + ": " + wrong + ", expected " + expected;
    // A quoted key may hold any character, but the message is one line.
    std::replace_if(
        message.begin(), message.end(), [](unsigned char c) { return c < 0x20 || c == 0x7f; }, '?');
    throw ScenarioError(message);
}

// One table of the file, read strictly. `where` is how messages call it.
class TableReader {
  public:
    TableReader(std::string_view file, const toml::table& table, std::string where)
        : m_file(file), m_table(table), m_where(std::move(where)) {}

    void allowOnly(const std::vector<std::string_view>& keys) const {
        for (const auto& [key, node] : m_table) {
            if (std::find(keys.begin(), keys.end(), key.str()) != keys.end()) continue;
            fail(m_file, key.source().begin.line, "unknown key '" + std::string(key.str()) + "' in " + m_where,
                 "one of " + joined(keys));
        }
    }

    bool has(std::string_view key) const { return m_table.contains(key); }

    [[noreturn]] void wrong(std::string_view key, const std::string& what, const std::string& expected) const {
        fail(m_file, m_table.get(key)->source().begin.line, inWords(key) + " is " + what, expected);
    }

    std::int64_t number(std::string_view key, const Range& range) const {
        return numberIn(key, required(key, describe(range)), range, describe(range));
    }
    std::int64_t number(std::string_view key, const Range& range, std::int64_t otherwise) const {
        return has(key) ? number(key, range) : otherwise;
    }
    int integer(std::string_view key) const { return static_cast<int>(number(key, ANY_INT)); }
    int integer(std::string_view key, int otherwise) const { return has(key) ? integer(key) : otherwise; }

    std::vector<int> integers(std::string_view key) const {
        std::vector<int> values;
        const std::string expected = "an array of integers, not empty";
        const toml::array* array = required(key, expected).as_array();
        if (array == nullptr) wrong(key, typeName(*m_table.get(key)), expected);
        if (array->empty()) wrong(key, "empty", expected);
        for (const toml::node& element : *array) {
            values.push_back(
                static_cast<int>(numberIn(key, element, ANY_INT, "an array whose elements are " + describe(ANY_INT))));
        }
        return values;
    }

    bool boolean(std::string_view key, bool otherwise) const {
        if (!has(key)) return otherwise;
        const auto* value = m_table.get(key)->as_boolean();
        if (value == nullptr) wrong(key, typeName(*m_table.get(key)), "true or false");
        return value->get();
    }

    const std::string& text(std::string_view key) const {
        const auto* value = required(key, "a string").as_string();
        if (value == nullptr) wrong(key, typeName(*m_table.get(key)), "a string");
        return value->get();
    }

    std::vector<std::string> texts(std::string_view key) const {
        std::vector<std::string> values;
        if (!has(key)) return values;
        const toml::array* array = m_table.get(key)->as_array();
        if (array == nullptr) wrong(key, typeName(*m_table.get(key)), "an array of strings");
        for (const toml::node& element : *array) {
            const auto* value = element.as_string();
            if (value == nullptr) wrongElement(key, element, typeName(element), "an array of strings");
            values.push_back(value->get());
        }
        return values;
    }

    template <class Words>
    int word(std::string_view key, const Words& words) const {
        const std::string expected = "one of " + wordList(words);
        const auto* value = required(key, expected).as_string();
        if (value == nullptr) wrong(key, typeName(*m_table.get(key)), expected);
        const auto found = numberOf(words, value->get());
        if (!found) wrong(key, '"' + value->get() + '"', expected);
        return *found;
    }
    template <class Words>
    int word(std::string_view key, const Words& words, int otherwise) const {
        return has(key) ? word(key, words) : otherwise;
    }

    // A CIM code, as a number or a word; 0 where the key is missing.
    unsigned short code(std::string_view key, const std::vector<Word>& words) const {
        if (!has(key)) return 0;
        const toml::node& node = *m_table.get(key);
        const std::string expected = describe(ANY_CODE) + " or one of " + wordList(words);
        if (!node.is_string()) return static_cast<unsigned short>(numberIn(key, node, ANY_CODE, expected));
        const std::string& value = node.as_string()->get();
        const auto found = numberOf(words, value);
        if (!found) wrong(key, '"' + value + '"', expected);
        return static_cast<unsigned short>(*found);
    }

    // The tables of [[key]]; none where the key is missing.
    std::vector<TableReader> tables(std::string_view key) const {
        std::vector<TableReader> readers;
        if (!has(key)) return readers;
        const std::string header = "[[" + std::string(key) + "]]";
        const toml::array* array = m_table.get(key)->as_array();
        if (array == nullptr) wrong(key, typeName(*m_table.get(key)), header + " tables");
        for (const toml::node& element : *array) {
            if (!element.is_table()) wrongElement(key, element, typeName(element), header + " tables");
            readers.emplace_back(m_file, *element.as_table(), header);
        }
        return readers;
    }

    TableReader table(std::string_view key, std::string where, const std::string& expected) const {
        const toml::table* table = required(key, expected).as_table();
        if (table == nullptr) wrong(key, typeName(*m_table.get(key)), expected);
        return {m_file, *table, std::move(where)};
    }

    bool holdsInteger(std::string_view key) const { return has(key) && m_table.get(key)->is_integer(); }
    std::uint64_t lineOf(std::string_view key) const { return m_table.get(key)->source().begin.line; }

  private:
    std::string inWords(std::string_view key) const { return "'" + std::string(key) + "' in " + m_where; }

    [[noreturn]] void wrongElement(std::string_view key, const toml::node& element, const std::string& what,
                                   const std::string& expected) const {
        fail(m_file, element.source().begin.line, "an element of " + inWords(key) + " is " + what, expected);
    }

    const toml::node& required(std::string_view key, const std::string& expected) const {
        const toml::node* node = m_table.get(key);
        if (node == nullptr) {
            fail(m_file, std::max<std::uint64_t>(m_table.source().begin.line, 1),
                 "'" + std::string(key) + "' is missing in " + m_where, expected);
        }
        return *node;
    }

    std::int64_t numberIn(std::string_view key, const toml::node& node, const Range& range,
                          const std::string& expected) const {
        const bool isElement = &node != m_table.get(key);
        const std::string subject = (isElement ? "an element of " : "") + inWords(key) + " is ";
        const std::uint64_t line = node.source().begin.line;
        const auto* value = node.as_integer();
        if (value == nullptr) fail(m_file, line, subject + typeName(node), expected);
        if (value->get() < range.lowest || value->get() > range.highest) {
            fail(m_file, line, subject + std::to_string(value->get()), expected);
        }
        return value->get();
    }

    std::string_view m_file;
    const toml::table& m_table;
    std::string m_where;
};

using Values = std::shared_ptr<const std::vector<int>>;

Values shared(std::vector<int> values) {
    return std::make_shared<const std::vector<int>>(std::move(values));
}

Values sine(const TableReader& reading) {
    const int middle = reading.integer("middle");
    const Range room = {0, std::min(ANY_INT.highest - middle, middle - ANY_INT.lowest)};
    const auto amplitude =
        reading.number("amplitude", {0, std::min<std::int64_t>(room.highest, std::numeric_limits<int>::max())});
    return shared(sineValues(middle, static_cast<int>(amplitude),
                             static_cast<unsigned>(reading.number("period", STEPS_PER_ROUND))));
}

Values ramp(const TableReader& reading) {
    return shared(rampValues(reading.integer("from"), reading.integer("to"),
                             static_cast<unsigned>(reading.number("steps", STEPS_PER_ROUND))));
}

WalkBounds walkBounds(const TableReader& reading) {
    WalkBounds bounds{};
    bounds.lowest = reading.integer("min");
    bounds.highest = static_cast<int>(reading.number("max", {bounds.lowest, ANY_INT.highest}));
    bounds.start = static_cast<int>(reading.number("start", {bounds.lowest, bounds.highest}));
    bounds.step = static_cast<int>(reading.number("step", {1, ANY_INT.highest}));
    return bounds;
}

std::vector<std::string_view> readingKeys(Kind kind) {
    switch (kind) {
        case Kind::Constant:
            return {"kind", "value"};
        case Kind::Series:
            return {"kind", "every", "step-ms", "values", "then"};
        case Kind::Sine:
            return {"kind", "every", "step-ms", "middle", "amplitude", "period"};
        case Kind::Ramp:
            return {"kind", "every", "step-ms", "from", "to", "steps", "then"};
        case Kind::RandomWalk:
            break;
    }
    return {"kind", "every", "step-ms", "start", "step", "min", "max"};
}

// What follows the last value, where the scenario may choose it.
AtEnd atEnd(const TableReader& reading, bool byClock) {
    const auto chosen = static_cast<AtEnd>(reading.word("then", ENDS, static_cast<int>(AtEnd::Repeat)));
    // Since 1970 every list has long come to its end.
    if (byClock && chosen == AtEnd::Hold) reading.wrong("then", "\"hold\"", "it with every = \"call\" only");
    return chosen;
}

// How the copies of one sensor move.
class MovementMaker {
  public:
    MovementMaker(const TableReader& sensor, std::uint64_t seed) : m_seed(seed) {
        if (sensor.holdsInteger("reading")) {
            m_movement.values = shared({sensor.integer("reading")});
            return;
        }
        const TableReader reading = sensor.table("reading", "reading", describe(ANY_INT) + " or a table with 'kind'");
        const auto kind = static_cast<Kind>(reading.word("kind", KINDS));
        reading.allowOnly(readingKeys(kind));
        readSteps(reading);
        readValues(reading, kind);
    }

    Movement make(unsigned handle, std::uint64_t copy) const {
        Movement movement = m_movement;
        if (m_walk) {
            movement.values = shared(walkValues(*m_walk, m_seed << 32 | handle));
        } else {
            movement.ahead = copy;
        }
        return movement;
    }

  private:
    void readSteps(const TableReader& reading) {
        const int every = reading.word("every", EVERY, static_cast<int>(Every::Clock));
        if (static_cast<Every>(every) == Every::Clock) {
            m_movement.stepMilliseconds = static_cast<unsigned>(reading.number("step-ms", {1, 86400000}, 1000));
        } else if (reading.has("step-ms")) {
            reading.wrong("step-ms", "given", "it with every = \"clock\" only");
        }
    }

    void readValues(const TableReader& reading, Kind kind) {
        const bool byClock = m_movement.stepMilliseconds != 0;
        switch (kind) {
            case Kind::Constant:
                m_movement.values = shared({reading.integer("value")});
                break;
            case Kind::Series:
                m_movement.values = shared(reading.integers("values"));
                m_movement.atEnd = atEnd(reading, byClock);
                break;
            case Kind::Sine:
                m_movement.values = sine(reading);
                break;
            case Kind::Ramp:
                m_movement.values = ramp(reading);
                m_movement.atEnd = atEnd(reading, byClock);
                break;
            case Kind::RandomWalk:
                m_walk = walkBounds(reading);
                m_movement.atEnd = AtEnd::Back;
                break;
        }
    }

    std::uint64_t m_seed;
    Movement m_movement;
    std::optional<WalkBounds> m_walk;  // each copy walks on its own
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
    ScenarioReader(std::string_view file, const toml::table& root) : m_file(file, root, "the file") {}

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
        const MovementMaker movement(sensor, m_seed);
        for (std::uint64_t copy = 0; copy < count; ++copy) {
            const auto handle = static_cast<unsigned>(static_cast<std::uint64_t>(first) + copy);
            claimHandle(sensor, handle);
            m_scenario.sensors.push_back({handle, information, movement.make(handle, copy)});
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

Scenario parseScenario(std::string_view text, const std::string& name) {
    toml::table root;
    try {
        root = toml::parse(asciiToml(text), std::string_view(name));
    } catch (const NotToml& error) {
        fail(name, error.line(), error.what(), "valid TOML");
    } catch (const toml::parse_error& error) {
        fail(name, error.source().begin.line, std::string(error.description()), "valid TOML");
    }
    return ScenarioReader(name, root).read();
}

std::string readFile(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    std::ostringstream text;
    // Reading ahead tells a folder, which opens like a file, and an empty file, which must not be copied.
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
    if (path == nullptr || *path == '\0') return parseScenario(BUILTIN_SCENARIO, "built-in scenario");
    return parseScenario(readFile(path), path);
}
