#include "format/PluginFormat.h"

#include <algorithm>
#include <vector>

#include "format/PerformanceData.h"
#include "format/SensorsTable.h"
#include "source/Answer.h"
#include "text/Utf8.h"

namespace host {
namespace {

constexpr std::size_t IN_FIRST_LINE = 3;  // problems; notifications show this line alone

const char* wordOf(PluginState state) {
    switch (state) {
        case PluginState::Ok:
            return "OK";
        case PluginState::Warning:
            return "WARNING";
        case PluginState::Critical:
            return "CRITICAL";
        case PluginState::Unknown:
            break;
    }
    return "UNKNOWN";
}

int gravityOf(PluginState state) {
    switch (state) {
        case PluginState::Ok:
            return 0;
        case PluginState::Warning:
            return 1;
        case PluginState::Unknown:
            return 2;
        case PluginState::Critical:
            break;
    }
    return 3;
}

// '|' begins the performance data.
std::string withoutBars(const std::string& text) {
    std::string result;
    for (const char c : text) result += c == '|' ? escaped("|") : std::string(1, c);
    return result;
}

std::string firstLine(PluginState state, const std::string& text) {
    return std::string("SENSORS ") + wordOf(state) + ": " + text;
}

PluginState stateFor(Severity severity, const PluginRules& rules) {
    switch (severity) {
        case Severity::Normal:
            return PluginState::Ok;
        case Severity::NonCritical:
            return PluginState::Warning;
        case Severity::Critical:
            return rules.warnsOnCritical ? PluginState::Warning : PluginState::Critical;
        case Severity::Fatal:
            break;
    }
    return PluginState::Critical;
}

PluginState stateOf(const Sensor& sensor, const PluginRules& rules) {
    if (!sensor.reading) return rules.warnsOnNoReading ? PluginState::Warning : PluginState::Unknown;
    return stateFor(sensor.state.severity, rules);
}

struct PluginProblem {
    PluginState state;
    std::string summary;  // in the first line
    std::string detail;   // in a line of its own
};

PluginProblem problemOf(const Sensor& sensor, const PluginRules& rules) {
    const std::string name = printable(sensor.name);
    const PluginState state = stateOf(sensor, rules);
    if (!sensor.reading) return {state, name + " no reading", name + ": no reading; " + printable(sensor.reason)};
    const std::string limits = sensor.state.isHigh ? "upper limits (n/c/f) " + upperLimits(sensor)
                                                   : "lower limits (n/c/f) " + lowerLimits(sensor);
    const std::string reading = sensor.withUnit(sensor.reading);
    return {state, name + ' ' + reading + ' ' + sensor.stateWord(),
            name + ": " + reading + ", " + sensor.stateWord() + "; " + limits};
}

PluginProblem failureOf(const std::string& what, const broker::Status& status) {
    const std::string text = what + ": the provider answered " + statusText(status);
    return {PluginState::Unknown, text, text};
}

// The worst first.
std::vector<PluginProblem> problemsIn(const PluginFindings& findings, const PluginRules& rules) {
    std::vector<PluginProblem> problems;
    const Round& round = findings.round;
    if (round.status.rc != CMPI_RC_OK) {
        problems.push_back(failureOf("names", round.status));
    } else if (round.sensors.empty()) {
        const std::string text = findings.ignored > 0 ? "all sensors are ignored" : "there are no sensors";
        problems.push_back({PluginState::Unknown, text, text});
    }
    std::vector<const Sensor*> sensors;
    for (const Sensor& sensor : round.sensors) sensors.push_back(&sensor);
    std::stable_sort(sensors.begin(), sensors.end(),
                     [](const Sensor* left, const Sensor* right) { return left->gravity() > right->gravity(); });
    for (const Sensor* sensor : sensors) {
        if (sensor->isProblem()) problems.push_back(problemOf(*sensor, rules));
    }
    if (findings.eventLogFailure) problems.push_back(failureOf("event log", *findings.eventLogFailure));
    if (findings.eventLog && findings.eventLog->isProblem()) {
        const std::string text = "event log: " + findings.eventLog->text();
        problems.push_back({PluginState::Warning, text, text});
    }
    std::stable_sort(problems.begin(), problems.end(), [](const PluginProblem& left, const PluginProblem& right) {
        return gravityOf(left.state) > gravityOf(right.state);
    });
    return problems;
}

std::string countsOf(const PluginFindings& findings) {
    const std::size_t count = findings.round.sensors.size();
    std::string text = std::to_string(count) + (count == 1 ? " sensor" : " sensors");
    if (findings.ignored > 0) text += ", " + std::to_string(findings.ignored) + " ignored";
    if (findings.eventLog) text += ", event log: " + findings.eventLog->text();
    return text;
}

std::string summaryOf(const std::vector<PluginProblem>& problems, const PluginFindings& findings) {
    if (problems.empty()) return countsOf(findings);
    std::string text;
    for (std::size_t i = 0; i < std::min(problems.size(), IN_FIRST_LINE); ++i) {
        text += (i == 0 ? "" : ", ") + problems[i].summary;
    }
    if (problems.size() > IN_FIRST_LINE) text += ", others: " + std::to_string(problems.size() - IN_FIRST_LINE);
    return findings.round.sensors.empty() ? text : text + " (" + countsOf(findings) + ')';
}

struct Threshold {
    Severity severity;
    Number Sensor::*low;
    Number Sensor::*high;
};
constexpr Threshold THRESHOLDS[]{
    {Severity::NonCritical, &Sensor::lowerNonCritical, &Sensor::upperNonCritical},
    {Severity::Critical, &Sensor::lowerCritical, &Sensor::upperCritical},
    {Severity::Fatal, &Sensor::lowerFatal, &Sensor::upperFatal},
};

// The innermost of the thresholds that lead to the state.
PerformanceLimits limitsOf(PluginState state, const Sensor& sensor, const PluginRules& rules) {
    PerformanceLimits limits;
    for (const Threshold& each : THRESHOLDS) {
        if (stateFor(each.severity, rules) != state) continue;
        const Number low = sensor.*each.low;
        const Number high = sensor.*each.high;
        if (low && (!limits.low || *low > *limits.low)) limits.low = low;
        if (high && (!limits.high || *high < *limits.high)) limits.high = high;
    }
    return limits;
}

std::string performanceOf(const PluginFindings& findings, const PluginRules& rules) {
    std::string text;
    for (const Sensor& sensor : findings.round.sensors) {
        text += ' ' + performanceData(sensor, limitsOf(PluginState::Warning, sensor, rules),
                                      limitsOf(PluginState::Critical, sensor, rules));
    }
    if (findings.eventLog) text += " event-log-lines=" + std::to_string(findings.eventLog->lines) + ";;;0";
    return text.empty() ? text : " |" + text;
}

}  // namespace

PluginAnswer pluginAnswer(const PluginFindings& findings, const PluginRules& rules, Charset charset) {
    const std::vector<PluginProblem> problems = problemsIn(findings, rules);
    const PluginState state = problems.empty() ? PluginState::Ok : problems.front().state;
    const auto shown = [charset](const std::string& text) { return withoutBars(shownIn(charset, text)); };
    std::string text = shown(firstLine(state, summaryOf(problems, findings))) + performanceOf(findings, rules) + '\n';
    for (const PluginProblem& problem : problems) {
        text += shown(std::string("[") + wordOf(problem.state) + "] " + problem.detail) + '\n';
    }
    if (!findings.note.empty()) text += shown(findings.note) + '\n';
    return {state, text};
}

PluginAnswer unknownAnswer(const std::string& reason, Charset charset) {
    const std::string text = firstLine(PluginState::Unknown, printable(reason));
    return {PluginState::Unknown, withoutBars(shownIn(charset, text)) + '\n'};
}

}  // namespace host
