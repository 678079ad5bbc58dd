// A terminal's health as monitoring plugins report it.
#ifndef ZELSENSORS_FORMAT_PLUGINFORMAT_H
#define ZELSENSORS_FORMAT_PLUGINFORMAT_H

#include <optional>
#include <string>

#include "health/EventLogState.h"
#include "health/SensorRounds.h"
#include "text/Charset.h"

namespace host {

// The exit statuses of the convention. The worst of several is CRITICAL, then UNKNOWN, then WARNING: the order of
// Sensor::gravity().
enum class PluginState : int { Ok = 0, Warning = 1, Critical = 2, Unknown = 3 };

// What is a WARNING in place of what it usually is.
struct PluginRules {
    bool warnsOnCritical = false;   // past a critical threshold, and not a fatal one: else CRITICAL
    bool warnsOnNoReading = false;  // no reading: else UNKNOWN
};

// What was found. Past a non-critical threshold is WARNING, past a critical or fatal one CRITICAL, no reading UNKNOWN;
// an event log that is full or not valid is WARNING; no sensors, and a request that failed, UNKNOWN.
struct PluginFindings {
    Round round;
    std::optional<EventLogState> eventLog;          // none: not asked for
    std::optional<broker::Status> eventLogFailure;  // the request for it failed
    std::size_t ignored = 0;                        // sensors that were left out of the round
    std::string note;                               // where the readings come from
};

struct PluginAnswer {
    PluginState state = PluginState::Unknown;
    std::string text;
};

// In lines: state and what is worst, with the performance data of all sensors behind '|'; then a line for each problem,
// the worst first, and the note. No other '|' is in it: names have \x7c.
PluginAnswer pluginAnswer(const PluginFindings& findings, const PluginRules& rules, Charset charset);

// Nothing could be found out, and why.
PluginAnswer unknownAnswer(const std::string& reason, Charset charset);

}  // namespace host

#endif
