// What a scenario file describes: one simulated terminal. Plain data, not changed after it was loaded.
#ifndef ZELSENSORS_CHIPSIM_SCENARIO_H
#define ZELSENSORS_CHIPSIM_SCENARIO_H

#include <cstdint>
#include <optional>
#include <vector>

#include "Movement.h"
#include "chip.h"

enum class Model { None, Grebel, Zan };

enum class Operation { Initialise, Enumerate, Information, Read, EventLog };

struct SimulatedSensor {
    unsigned handle = 0;
    CSensorInformation information{};
    Movement movement;
};

// Calls of one operation that fail, come late, or both.
struct SimulatedFault {
    Operation operation = Operation::Initialise;
    std::optional<unsigned> handle;            // none: calls on any sensor match
    std::uint64_t fromCall = 1;                // the first matching call that is hit
    std::optional<std::uint64_t> calls;        // how many are hit; none: all that follow
    std::int64_t fromMilliseconds = 0;         // since the chip was initialised: calls before are not hit
    std::optional<std::int64_t> milliseconds;  // for so long; none: from then on
    sscode status = 0;                         // 0: the call goes on as usual after the delay
    unsigned delayMilliseconds = 0;
};

struct Scenario {
    Model model = Model::None;
    std::vector<SimulatedSensor> sensors;  // in the order of enumeration; the handles differ
    CSystemEventLog eventLog{};
    std::vector<SimulatedFault> faults;
};

#endif
