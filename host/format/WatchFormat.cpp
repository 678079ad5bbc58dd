#include "format/WatchFormat.h"

#include <cstddef>
#include <optional>

#include "format/Colour.h"
#include "text/TextTable.h"
#include "text/Utf8.h"

namespace host {
namespace {

constexpr std::size_t BAR_CELLS = 24;

}  // namespace

std::vector<WatchLine> watchLines(const Answer& answer, const std::string& head, Charset charset) {
    TextTable table({{"Sensor"}, {"Reading", Align::Right}, {"State"}, {"Between its limits"}}, charset);
    std::vector<Severity> severities;
    std::size_t past = 0;
    for (const broker::Instance& instance : answer.reply.instances) {
        if (!isSensor(instance)) continue;
        const Sensor sensor = Sensor::of(instance);
        table.add({printable(sensor.name), sensor.withUnit(sensor.rawReading), sensor.stateWord(),
                   limitsBar(sensor, BAR_CELLS)});
        severities.push_back(sensor.state.severity);
        if (sensor.state.severity != Severity::Normal) ++past;
    }
    const bool isFine = answer.reply.status.rc == CMPI_RC_OK;
    std::vector<WatchLine> lines;
    lines.push_back({shownIn(charset, head)});
    const std::string status =
        "Status " + statusText(answer.reply.status) + (isFine || severities.empty() ? "" : " (incomplete)") +
        "; sensors: " + std::to_string(severities.size()) + ", past a threshold: " + std::to_string(past);
    lines.push_back({shownIn(charset, status), isFine ? Severity::Normal : Severity::Critical});
    const std::vector<std::string> rows = table.lines();
    lines.push_back({rows.front()});
    for (std::size_t i = 0; i < severities.size(); ++i) lines.push_back({rows.at(i + 1), severities[i]});
    return lines;
}

std::string plainText(const std::vector<WatchLine>& lines) {
    std::string text;
    for (const WatchLine& line : lines) text += line.text + '\n';
    return text + '\n';
}

std::string drawn(const std::vector<WatchLine>& lines, Output::Size size, bool inColour) {
    std::vector<WatchLine> shown = lines;
    // The cursor takes the line after the last.
    const std::size_t room = size.lines > 1 ? size.lines - 1 : lines.size();
    if (shown.size() > room) {
        shown.resize(room);
        shown.back() = {"... " + std::to_string(lines.size() - room + 1) + " more do not fit"};
    }
    std::string text = "\x1b[H";
    for (const WatchLine& line : shown) {
        const std::string cut = size.columns > 0 ? cutToColumns(line.text, size.columns) : line.text;
        text += inColour ? coloured(cut, line.severity) : cut;
        text += "\x1b[K\n";
    }
    return text + "\x1b[J";
}

}  // namespace host
