#include "MovementReader.h"

#include <algorithm>
#include <limits>
#include <memory>
#include <string_view>
#include <utility>
#include <vector>

#include "Words.h"

enum class MovementKind { Constant, Series, Sine, Ramp, RandomWalk, Recorded };

namespace {

constexpr Range STEPS_PER_ROUND = {1, 86400};

constexpr Word ENDS[] = {{"repeat", static_cast<int>(AtEnd::Repeat)},
                         {"hold", static_cast<int>(AtEnd::Hold)},
                         {"back", static_cast<int>(AtEnd::Back)}};

enum class Every { Call, Clock };
constexpr Word EVERY[] = {{"call", static_cast<int>(Every::Call)}, {"clock", static_cast<int>(Every::Clock)}};

constexpr Word KINDS[] = {{"constant", static_cast<int>(MovementKind::Constant)},
                          {"series", static_cast<int>(MovementKind::Series)},
                          {"sine", static_cast<int>(MovementKind::Sine)},
                          {"ramp", static_cast<int>(MovementKind::Ramp)},
                          {"random-walk", static_cast<int>(MovementKind::RandomWalk)},
                          {"recorded", static_cast<int>(MovementKind::Recorded)}};

using Values = std::shared_ptr<const std::vector<int>>;

Values shared(std::vector<int> values) {
    return std::make_shared<const std::vector<int>>(std::move(values));
}

// In these three a number that is a mistake leaves the widest range to those that are measured by it.

Values sine(const TableReader& reading) {
    int middle = 0;
    int amplitude = 0;
    unsigned period = 1;
    reading.collect([&] { middle = reading.integer("middle"); });
    const std::int64_t room = std::min(ANY_INT.highest - middle, middle - ANY_INT.lowest);
    reading.collect([&] {
        amplitude = static_cast<int>(reading.number("amplitude", {0, std::min(room, ANY_INT.highest)}));
    });
    reading.collect([&] { period = static_cast<unsigned>(reading.number("period", STEPS_PER_ROUND)); });
    return shared(sineValues(middle, amplitude, period));
}

Values ramp(const TableReader& reading) {
    int first = 0;
    int last = 0;
    unsigned steps = 1;
    reading.collect([&] { first = reading.integer("from"); });
    reading.collect([&] { last = reading.integer("to"); });
    reading.collect([&] { steps = static_cast<unsigned>(reading.number("steps", STEPS_PER_ROUND)); });
    return shared(rampValues(first, last, steps));
}

WalkBounds walkBounds(const TableReader& reading) {
    WalkBounds bounds{0, 1, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()};
    reading.collect([&] { bounds.lowest = reading.integer("min"); });
    reading.collect([&] {
        bounds.highest = static_cast<int>(reading.number("max", {bounds.lowest, ANY_INT.highest}));
    });
    reading.collect([&] { bounds.start = static_cast<int>(reading.number("start", {bounds.lowest, bounds.highest})); });
    reading.collect([&] { bounds.step = static_cast<int>(reading.number("step", {1, ANY_INT.highest})); });
    return bounds;
}

std::vector<std::string_view> readingKeys(MovementKind kind) {
    switch (kind) {
        case MovementKind::Constant:
            return {"kind", "value"};
        case MovementKind::Series:
            return {"kind", "every", "step-ms", "values", "then"};
        case MovementKind::Sine:
            return {"kind", "every", "step-ms", "middle", "amplitude", "period"};
        case MovementKind::Ramp:
            return {"kind", "every", "step-ms", "from", "to", "steps", "then"};
        case MovementKind::Recorded:
            return {"kind", "values"};
        case MovementKind::RandomWalk:
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

}  // namespace

MovementReader::MovementReader(const TableReader& sensor, std::uint64_t seed,
                               std::shared_ptr<const RecordedTimes> times)
    : m_seed(seed), m_times(std::move(times)) {
    if (sensor.holdsInteger("reading")) {
        m_movement.values = shared({sensor.integer("reading")});
        return;
    }
    const TableReader reading = sensor.table("reading", "reading", describe(ANY_INT) + " or a table with 'kind'");
    const auto kind = static_cast<MovementKind>(reading.word("kind", KINDS));
    reading.allowOnly(readingKeys(kind));
    if (kind != MovementKind::Recorded) reading.collect([&] { readSteps(reading); });
    reading.collect([&] { readValues(reading, kind); });
}

Movement MovementReader::movementOf(unsigned handle, std::uint64_t copy) const {
    Movement movement = m_movement;
    if (m_walk) {
        movement.values = shared(walkValues(*m_walk, m_seed << 32 | handle));
    } else {
        movement.ahead = copy;
    }
    return movement;
}

void MovementReader::readSteps(const TableReader& reading) {
    const int every = reading.word("every", EVERY, static_cast<int>(Every::Clock));
    if (static_cast<Every>(every) == Every::Clock) {
        m_movement.stepMilliseconds = static_cast<unsigned>(reading.number("step-ms", {1, 86400000}, 1000));
    } else if (reading.has("step-ms")) {
        reading.wrong("step-ms", "given", "it with every = \"clock\" only");
    }
}

void MovementReader::readValues(const TableReader& reading, MovementKind kind) {
    const bool byClock = m_movement.stepMilliseconds != 0;
    switch (kind) {
        case MovementKind::Constant:
            m_movement.values = shared({reading.integer("value")});
            break;
        case MovementKind::Series:
            reading.collect([&] { m_movement.values = shared(reading.integers("values")); });
            m_movement.atEnd = atEnd(reading, byClock);
            break;
        case MovementKind::Sine:
            m_movement.values = sine(reading);
            break;
        case MovementKind::Ramp:
            m_movement.values = ramp(reading);
            m_movement.atEnd = atEnd(reading, byClock);
            break;
        case MovementKind::RandomWalk:
            m_walk = walkBounds(reading);
            m_movement.atEnd = AtEnd::Back;
            break;
        case MovementKind::Recorded:
            readRecorded(reading);
            break;
    }
}

void MovementReader::readRecorded(const TableReader& reading) {
    m_movement.values = shared(reading.integers("values"));
    if (!m_times) reading.wrong("kind", "\"recorded\"", "it in a file with a good [recording] only");
    if (m_movement.values->size() != m_times->size()) {
        reading.wrong("values", "an array of " + std::to_string(m_movement.values->size()),
                      "as many as [recording] has times: " + std::to_string(m_times->size()));
    }
    m_movement.times = m_times;
    m_movement.atEnd = AtEnd::Hold;
}
