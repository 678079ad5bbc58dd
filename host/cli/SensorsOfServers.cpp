#include "cli/SensorsOfServers.h"

#include <algorithm>
#include <ctime>
#include <utility>
#include <vector>

#include "cli/AskedServers.h"
#include "cli/Colouring.h"
#include "cli/ProgressLine.h"
#include "cli/Sensors.h"
#include "cli/ServerList.h"
#include "format/SensorsJson.h"
#include "format/TerminalsTable.h"
#include "health/Terminals.h"
#include "text/Utf8.h"

namespace host {
namespace {

using Warning = std::function<void(const std::string&)>;

std::vector<Terminal> visitAll(const Options& options, Output& errors, const Warning& warn) {
    AskedServers asked{serversIn(options.server.list, warn), ""};
    asked.name = asked.urls.size() == 1 ? printable(asked.urls.front())
                                        : "the servers in " + printable(nameOfServerList(options.server.list));
    const ServerAccess access = accessTo(asked, options.server, warn);
    std::vector<std::string> warnings;
    std::vector<Terminal> terminals;
    {
        ProgressLine line(errors);
        const auto show = [&line, all = std::to_string(asked.urls.size())](std::size_t done) {
            line.show(std::to_string(done) + " of " + all + " servers asked");
        };
        show(0);
        Servers servers(std::move(asked.urls), access,
                        [&warnings](const std::string& text) { warnings.push_back(text); });
        terminals = visitTerminals(servers, options.request.nameSpace, show);
    }
    for (const std::string& text : warnings) warn(text);
    return terminals;
}

ServersOutcome outcomeOf(const std::vector<Terminal>& terminals) {
    ServersOutcome outcome;
    for (const Terminal& terminal : terminals) {
        ++outcome.servers;
        if (!terminal.failure.empty()) ++outcome.failed;
        if (!terminal.isAnswered) ++outcome.unanswered;
    }
    return outcome;
}

// Those that are well and have nothing to show go; those that failed or have no sensor at all stay.
void narrow(std::vector<Terminal>& terminals, const SensorOptions& options) {
    std::vector<Terminal> left;
    for (Terminal& terminal : terminals) {
        const bool staysInAnyCase = terminal.round.sensors.empty() || !terminal.failure.empty();
        narrow(terminal.round.sensors, options);
        if (staysInAnyCase || !terminal.round.sensors.empty()) left.push_back(std::move(terminal));
    }
    terminals = std::move(left);
    if (!options.isWorstFirst) return;
    std::stable_sort(terminals.begin(), terminals.end(),
                     [](const Terminal& before, const Terminal& after) { return before.gravity() > after.gravity(); });
}

std::string summaryOf(const std::vector<Terminal>& terminals) {
    std::size_t problems = 0;
    std::size_t failed = 0;
    for (const Terminal& terminal : terminals) {
        if (!terminal.failure.empty()) {
            ++failed;
        } else if (terminal.isProblem()) {
            ++problems;
        }
    }
    const std::size_t well = terminals.size() - problems - failed;
    return std::to_string(terminals.size()) + (terminals.size() == 1 ? " server: " : " servers: ") +
           std::to_string(well) + " well, " + std::to_string(problems) + " with problems, " + std::to_string(failed) +
           " failed\n";
}

std::string tableOf(const std::vector<Terminal>& terminals, const std::string& summary, const SensorOptions& options,
                    const Output& output) {
    const std::size_t columns = output.isTerminal() ? output.size().columns : 0;
    std::string table = terminalsTable(
        terminals, {output.charset(), columns, options.hasHeader, isColoured(options.colouring, output)});
    if (!options.hasHeader) return table;
    return table.empty() ? summary : table + '\n' + summary;
}

}  // namespace

ServersOutcome showSensorsOfServers(const Options& options, Output& output, Output& errors, const Warning& warn) {
    const std::time_t time = std::time(nullptr);
    std::vector<Terminal> terminals = visitAll(options, errors, warn);
    const ServersOutcome outcome = outcomeOf(terminals);
    const std::string summary = summaryOf(terminals);
    narrow(terminals, options.sensors);
    if (options.format == Format::Json) {
        output.write(terminalsJson(terminals, options.request.nameSpace, time));
    } else if (options.format == Format::Csv) {
        output.write(terminalsCsv(terminals, options.sensors.hasHeader));
    } else {
        output.write(tableOf(terminals, summary, options.sensors, output));
    }
    return outcome;
}

}  // namespace host
