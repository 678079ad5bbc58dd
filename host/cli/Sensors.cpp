#include "cli/Sensors.h"

#include <algorithm>
#include <ctime>
#include <utility>

#include "broker/Names.h"
#include "cli/Colouring.h"
#include "cli/Failure.h"
#include "cli/Spelling.h"
#include "format/SensorsTable.h"
#include "health/SensorNames.h"
#include "text/Utf8.h"

namespace host {
namespace {

std::string mayMeanSeveral(const std::string& word, const std::vector<std::size_t>& places,
                           const std::vector<std::string>& names) {
    std::string list;
    for (const std::size_t place : places) list += (list.empty() ? "" : ", ") + names.at(place);
    return word + " may mean several: " + list;
}

// The one name with the word in it, or a pattern for all of them; empty where there is none.
std::string containing(const std::string& word, const std::vector<std::string>& names) {
    constexpr std::size_t fewestLetters = 2;
    if (word.size() < fewestLetters || word.find_first_of("*?") != std::string::npos) return "";
    std::string found;
    for (const std::string& name : names) {
        if (broker::lowered(name).find(broker::lowered(word)) == std::string::npos) continue;
        if (!found.empty()) return "'*" + word + "*'";
        found = name;
    }
    return found;
}

// What is near is found among labels and names.
std::string suggestion(const std::string& word, const std::vector<std::string>& names) {
    std::string longer = containing(word, names);
    if (!longer.empty()) return longer;
    std::vector<std::string> candidates;
    candidates.reserve(2 * names.size());
    for (const std::string& name : names) candidates.push_back(labelOf(name));
    candidates.insert(candidates.end(), names.begin(), names.end());
    return nearestTo(word, candidates);
}

std::string refusal(const std::string& word, const std::vector<std::string>& names) {
    const std::string nearest = suggestion(word, names);
    return "nothing is named " + word + (nearest.empty() ? "" : "; did you mean " + nearest + "?");
}

// Throws NoSuchName, and UsageError for a beginning of several names.
std::vector<std::size_t> meantBy(const std::string& word, const std::vector<std::string>& names) {
    const NameMatch match = namesMeantBy(word, names);
    if (match.places.empty()) throw NoSuchName(refusal(word, names));
    if (match.isAmbiguous) throw UsageError(mayMeanSeveral(word, match.places, names));
    return match.places;
}

// Each once, in the order of the words.
std::vector<std::size_t> chosen(const std::vector<std::string>& words, const std::vector<std::string>& names) {
    std::vector<std::size_t> all;
    for (const std::string& word : words) {
        for (const std::size_t place : meantBy(word, names)) {
            if (std::find(all.begin(), all.end(), place) == all.end()) all.push_back(place);
        }
    }
    return all;
}

std::string tableOf(const Round& round, const SensorOptions& options, const std::string& note, const Output& output) {
    if (round.sensors.empty() && round.status.rc != CMPI_RC_OK) return "";
    const std::size_t columns = output.isTerminal() ? output.size().columns : 0;
    const TableLayout layout{output.charset(), columns, options.hasHeader, isColoured(options.colouring, output)};
    const std::string text = round.sensors.empty() ? "No sensor to show.\n" : sensorsTable(round.sensors, layout);
    return options.hasHeader ? text + '\n' + shownIn(output.charset(), note) + '\n' : text;
}

}  // namespace

void narrow(std::vector<Sensor>& sensors, const SensorOptions& options) {
    const auto isUnwanted = [&](const Sensor& sensor) {
        return (options.onlyProblems && !sensor.isProblem()) ||
               (!options.kind.empty() && sensor.kind() != options.kind);
    };
    sensors.erase(std::remove_if(sensors.begin(), sensors.end(), isUnwanted), sensors.end());
    if (!options.isWorstFirst) return;
    std::stable_sort(sensors.begin(), sensors.end(),
                     [](const Sensor& left, const Sensor& right) { return left.gravity() > right.gravity(); });
}

std::optional<broker::Status> showSensors(const Options& options, Source& source, const std::string& note,
                                          const std::optional<AnsweringChip>& chip, Output& output) {
    const SensorOptions& wanted = options.sensors;
    const std::string& nameSpace = options.request.nameSpace;
    const std::time_t time = std::time(nullptr);
    SensorRounds rounds(source, nameSpace);
    Round round = wanted.names.empty()
                      ? rounds.next()
                      : rounds.next([&](const std::vector<std::string>& names) { return chosen(wanted.names, names); });
    std::optional<broker::Status> failure = firstFailure(round);
    narrow(round.sensors, wanted);
    if (options.format == Format::Json) {
        output.write(sensorsJson(round, nameSpace, time, chip));
    } else if (options.format == Format::Csv) {
        output.write(sensorsCsv(round.sensors, wanted.hasHeader));
    } else {
        output.write(tableOf(round, wanted, note, output));
    }
    return failure;
}

NamedReply getNamed(const Request& request, Source& source) {
    broker::Reply reply = ask(source, request);
    const bool mayBeUnknown = reply.status.rc == CMPI_RC_ERR_FAILED || reply.status.rc == CMPI_RC_ERR_NOT_FOUND;
    if (!mayBeUnknown) return {std::move(reply), ""};
    const std::vector<std::string> names =
        namesIn(source.enumerateInstanceNames({"", request.nameSpace, request.className, {}}).paths);
    const NameMatch match = namesMeantBy(request.instanceName, names);
    if (match.places.empty()) return {std::move(reply), names.empty() ? "" : refusal(request.instanceName, names)};
    if (match.places.size() > 1) throw UsageError(mayMeanSeveral(request.instanceName, match.places, names));
    Request meant = request;
    meant.instanceName = names[match.places.front()];
    // What is there and failed has been asked.
    if (meant.instanceName == request.instanceName) return {std::move(reply), ""};
    return {ask(source, meant), ""};
}

}  // namespace host
