#include "cli/Check.h"

#include <set>
#include <vector>

#include "cli/Failure.h"
#include "health/SensorNames.h"

namespace host {
namespace {

// The places of the names that no pattern means. Throws UsageError for a beginning of several names. A pattern that
// means none is no mistake: it may mean other terminals'.
std::vector<std::size_t> notIgnored(const std::vector<std::string>& patterns, const std::vector<std::string>& names) {
    std::set<std::size_t> ignored;
    for (const std::string& pattern : patterns) {
        const NameMatch match = namesMeantBy(pattern, names);
        if (match.isAmbiguous)
            throw UsageError(std::string("--ignore: ")
                                 .append(pattern)
                                 .append(" may mean several sensors; ")
                                 .append(pattern)
                                 .append("* means all"));
        ignored.insert(match.places.begin(), match.places.end());
    }
    std::vector<std::size_t> others;
    for (std::size_t place = 0; place < names.size(); ++place) {
        if (ignored.count(place) == 0) others.push_back(place);
    }
    return others;
}

void askForEventLog(PluginFindings& findings, const std::string& nameSpace, Source& source) {
    const broker::Reply reply = source.enumerateInstances({"", nameSpace, EVENT_LOG_CLASS, {}});
    if (reply.status.rc != CMPI_RC_OK) {
        findings.eventLogFailure = reply.status;
    } else {
        findings.eventLog = reply.instances.empty() ? EventLogState{} : EventLogState::of(reply.instances.front());
    }
}

}  // namespace

PluginFindings findingsOf(const CheckOptions& options, const std::string& nameSpace, Source& source,
                          const std::string& note) {
    PluginFindings findings;
    findings.note = note;
    SensorRounds rounds(source, nameSpace);
    findings.round = rounds.next([&](const std::vector<std::string>& names) {
        std::vector<std::size_t> wanted = notIgnored(options.ignored, names);
        findings.ignored = names.size() - wanted.size();
        return wanted;
    });
    if (options.withEventLog) askForEventLog(findings, nameSpace, source);
    return findings;
}

std::optional<broker::Status> firstFailure(const PluginFindings& findings) {
    const std::optional<broker::Status> failure = firstFailure(findings.round);
    return failure ? failure : findings.eventLogFailure;
}

bool isSimulationWanted(const Options& options) {
    return !options.scenario.empty() || options.chip == "simulated";
}

}  // namespace host
