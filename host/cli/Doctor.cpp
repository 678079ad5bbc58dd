#include "cli/Doctor.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <iterator>
#include <sstream>
#include <string>

#include "broker/ProviderLibrary.h"
#include "cli/Failure.h"
#include "cli/LocalTerminal.h"
#include "cli/ProviderSettings.h"
#include "health/EventLog.h"
#include "health/SensorRounds.h"
#include "source/Answer.h"
#include "source/ChipLibrary.h"
#include "source/Session.h"

namespace host {
namespace {

namespace fs = std::filesystem;
using Findings = std::vector<Finding>;

constexpr const char* NO_LIBRARY =
    "install the chip library: a terminal's own comes with the terminal; on any other machine the package "
    "zelsensors-linux brings one";

void append(Findings more, Findings& findings) {
    std::move(more.begin(), more.end(), std::back_inserter(findings));
}

bool isSameFile(const std::string& left, const std::string& right) {
    std::error_code error;
    return fs::equivalent(left, right, error);
}

// Those that there are beside the one that answers.
void reportOthers(const std::string& answering, const FoundLibrary& system, const InstallTree& tree,
                  Findings& findings) {
    const auto report = [&](const std::string& path, const std::string& word) {
        const auto isTold = [&](const Finding& one) { return isSameFile(one.subject, path); };
        const bool isNew = std::none_of(findings.begin(), findings.end(), isTold);
        if (!path.empty() && !isSameFile(path, answering) && isNew)
            findings.push_back({"chip library", path, "it is not asked; --chip " + word + " asks it", ""});
    };
    report(system.path, "system");
    report(tree.linuxChip, "linux");
    report(tree.simulatedChip, "simulated");
}

// Whether the system's own is missed: the one that answers stands in for it.
void reportAnswering(const LocalTerminal& terminal, Findings& findings) {
    const AnsweringChip& chip = terminal.chip();
    if (chip.library.empty()) {
        findings.push_back({"chip library", CHIP_LIBRARY, "there is none", NO_LIBRARY});
        return;
    }
    const std::string text = chip.isSimulated ? "it answers; its terminal is simulated" : "it answers";
    findings.push_back({"chip library", chip.library, text, ""});
    if (terminal.isSubstitute())
        findings.push_back({"chip library", CHIP_LIBRARY, "the system has none, so one is simulated", NO_LIBRARY});
}

void reportSystem(const FoundLibrary& system, Findings& findings) {
    if (!system.error.empty()) {
        findings.push_back({"chip library", CHIP_LIBRARY, "the system's cannot be loaded: " + system.error,
                            "install the system's chip library anew"});
    }
}

void reportScenario(const LocalTerminal& terminal, Findings& findings) {
    const char* file = std::getenv("ZELCHIP_SCENARIO");
    if (terminal.chip().isSimulated && file != nullptr && *file != '\0')
        findings.push_back({"scenario", file, "it is played", ""});
}

// The errors that the provider has logged since it was loaded.
void reportLog(const std::string& about, const LocalTerminal& terminal, const ProviderOutput& output,
               Findings& findings) {
    std::istringstream lines(terminal.log().explanation(output.start() + output.collected()));
    const std::string mark = "log: ";
    for (std::string line; std::getline(lines, line);) {
        if (line.rfind(mark, 0) == 0) findings.push_back({"provider", about, line.substr(mark.size()), ""});
    }
}

// Empty where the status is no failed start.
std::string adviceForStart(const broker::Status& status) {
    if (status.rc != CMPI_RC_ERR_METHOD_NOT_AVAILABLE) return "";
    return "the provider's start failed: zelhost names, with the same options, shows its own lines; "
           "docs/operations.md says what they mean";
}

std::string adviceFor(const broker::Status& status, bool hasAny) {
    std::string ofStart = adviceForStart(status);
    if (!ofStart.empty()) return ofStart;
    return hasAny ? "zelhost sensors, with the same options, asks one by one and says which one fails"
                  : "the chip library shows no sensor: is what it needs loaded, such as the terminal's service driver?";
}

struct Asked {
    Source& source;
    const std::string& nameSpace;
    const LocalTerminal& terminal;
    const ProviderOutput& output;
    bool isExplained;  // the chip library itself says what to do
};

void reportSensors(const Asked& asked, Findings& findings) {
    const Round round = SensorRounds(asked.source, asked.nameSpace).next();
    const std::string count =
        std::to_string(round.sensors.size()) + (round.sensors.size() == 1 ? " sensor" : " sensors");
    const bool isFine = round.status.rc == CMPI_RC_OK;
    const std::string advice = isFine || asked.isExplained ? "" : adviceFor(round.status, !round.sensors.empty());
    findings.push_back(
        {"provider", SENSOR_CLASS, isFine ? count : count + "; it answers " + statusText(round.status), advice});
    if (!isFine) reportLog(SENSOR_CLASS, asked.terminal, asked.output, findings);
    for (const Sensor& sensor : round.sensors) {
        if (sensor.reading) continue;
        findings.push_back({"sensor", sensor.name, "no reading: " + sensor.reason,
                            "where a sensor has no reading: look whether its hardware is still there and answers"});
    }
}

void reportEventLog(const Asked& asked, Findings& findings) {
    const EventLogRound round = EventLogRounds(asked.source, asked.nameSpace).next();
    if (!round.log) {
        const std::string ofStart = adviceForStart(round.status);
        const std::string advice =
            ofStart.empty() ? "the provider's log says why the event log cannot be had" : ofStart;
        findings.push_back(
            {"provider", EVENT_LOG_CLASS, "it answers " + statusText(round.status), asked.isExplained ? "" : advice});
        return;
    }
    const std::size_t lines = round.log->lines.size();
    findings.push_back({"provider", EVENT_LOG_CLASS,
                        std::to_string(lines) + (lines == 1 ? " line" : " lines") +
                            (round.log->isValid.value_or(false) ? "" : ", not valid") +
                            (round.log->isFull.value_or(false) ? ", full" : ""),
                        ""});
}

void reportAnswers(const Options& options, const LocalTerminal& terminal, ProviderOutput& output, bool isExplained,
                   Findings& findings) {
    try {
        Session session(terminal.provider(), options.providerName);
        output.endStart();
        const Asked asked{session, options.request.nameSpace, terminal, output, isExplained};
        reportSensors(asked, findings);
        reportEventLog(asked, findings);
    } catch (const broker::LoadError& error) {
        findings.push_back({"provider", terminal.provider(), error.what(), "install the package zelsensors anew"});
    }
}

void examineTerminal(const Options& options, const InstallTree& tree, ProviderOutput& output, Findings& findings) {
    const FoundLibrary system = findSystemChipLibrary();
    const Finding log = logFinding();  // before the terminal's is out of sight
    try {
        const LocalTerminal terminal(choose(options, tree));
        reportAnswering(terminal, findings);
        reportSystem(system, findings);
        reportOthers(terminal.chip().library, system, tree, findings);
        reportScenario(terminal, findings);
        const Findings ofLibrary = terminal.library().diagnosis();
        append(ofLibrary, findings);
        const bool isExplained = std::any_of(ofLibrary.begin(), ofLibrary.end(),
                                             [](const Finding& finding) { return !finding.advice.empty(); });
        reportAnswers(options, terminal, output, isExplained, findings);
        findings.push_back(terminal.chip().isSimulated
                               ? Finding{"log", "-", "that of a simulated terminal is kept in memory", ""}
                               : log);
    } catch (const Mistakes& mistakes) {
        for (const std::string& line : mistakes.lines())
            findings.push_back({"scenario", "-", line, "mend the scenario, or name another one with --scenario"});
    } catch (const broker::LoadError& error) {
        findings.push_back({"chip library", "-", error.what(), NO_LIBRARY});
        reportOthers("", system, tree, findings);
        findings.push_back(log);
    }
}

}  // namespace

Findings examine(const Options& options, const InstallTree& tree, ProviderOutput& output) {
    Findings findings;
    examineTerminal(options, tree, output, findings);
    append(settingsFindings(), findings);
    return findings;
}

}  // namespace host
