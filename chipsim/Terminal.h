// The simulated terminal behind one CChip: a scenario, and how often each of its parts was asked. Not thread-safe.
#ifndef ZELSENSORS_CHIPSIM_TERMINAL_H
#define ZELSENSORS_CHIPSIM_TERMINAL_H

#include <cstdint>
#include <optional>
#include <unordered_map>
#include <vector>

#include "Scenario.h"

// The simulation's own failures. Scenarios choose further statuses for their faults.
constexpr sscode STATUS_FAULTY_SCENARIO = 0xE0000001;  // Initialise: the scenario cannot be used
constexpr sscode STATUS_NOT_INITIALISED = 0xE0000002;  // no Initialise has succeeded before
constexpr sscode STATUS_UNKNOWN_HANDLE = 0xE0000003;   // no sensor has this handle
constexpr sscode STATUS_WRONG_PRESET = 0xE0000004;     // CSensorReading::preset is not READING_PRESET

class Terminal {
  public:
    explicit Terminal(Scenario scenario);

    // Each answers as the operation of CChip, and leaves the caller's record as it was when it fails.
    sscode initialise();
    sscode enumerate(CSensorHandleList& handles);
    sscode information(unsigned handle, CSensorInformation& information);
    sscode read(unsigned handle, CSensorReading& reading);
    sscode eventLog(CSystemEventLog& log);

  private:
    struct Sensor {
        const SimulatedSensor* description;  // in m_scenario
        std::uint64_t calls = 0;             // reads so far, failed ones included
    };

    // Counts the call at each fault that it matches, waits as they demand, and gives the first status that is not 0.
    sscode sufferFaults(Operation operation, std::optional<unsigned> handle = std::nullopt);
    // Since initialise() was called first; 0 before. Negative where the clock was set back.
    std::int64_t millisecondsSinceStart() const;
    Sensor* find(unsigned handle);  // null when there is none

    const Scenario m_scenario;
    std::unordered_map<unsigned, Sensor> m_sensors;
    std::vector<std::uint64_t> m_faultCalls;  // matching calls so far, per fault
    std::optional<std::uint64_t> m_start;     // by the wall clock
    bool m_initialised = false;
};

#endif
