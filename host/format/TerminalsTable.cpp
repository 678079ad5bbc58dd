#include "format/TerminalsTable.h"

#include <algorithm>
#include <cstddef>
#include <utility>

#include "format/Colour.h"
#include "text/TextTable.h"
#include "text/Utf8.h"

namespace host {
namespace {

constexpr std::size_t SHORTEST_SENSOR = 12;  // names are not cut further
enum Column : std::size_t { ServerColumn, WorstStateColumn, WorstSensorColumn, WorstReadingColumn, ProblemsColumn };

using Row = std::vector<std::string>;

Row titles() {
    return {"Server", "State", "Worst sensor", "Reading", "Problems"};
}

Row rowOf(const Terminal& terminal) {
    if (terminal.round.sensors.empty()) return {printable(terminal.url), "no sensors", "-", "-", "-"};
    const Sensor* worst = terminal.worst();
    if (worst == nullptr) return {printable(terminal.url), SensorState().word(), "-", "-", "0"};
    const auto problems = std::count_if(terminal.round.sensors.begin(), terminal.round.sensors.end(),
                                        [](const Sensor& sensor) { return sensor.isProblem(); });
    return {printable(terminal.url), worst->stateWord(), printable(worst->name), worst->withUnit(worst->reading),
            std::to_string(problems)};
}

// One that failed before it gave a sensor has its reason alone.
bool hasLine(const Terminal& terminal) {
    return !terminal.round.sensors.empty() || terminal.failure.empty();
}

std::vector<std::string> linesOf(const std::vector<Row>& rows, Charset charset) {
    TextTable table({{rows[0][ServerColumn]},
                     {rows[0][WorstStateColumn]},
                     {rows[0][WorstSensorColumn]},
                     {rows[0][WorstReadingColumn], Align::Right},
                     {rows[0][ProblemsColumn], Align::Right}},
                    charset);
    for (std::size_t i = 1; i < rows.size(); ++i) table.add(rows[i]);
    return table.lines();
}

std::size_t widest(const std::vector<std::string>& lines) {
    std::size_t columns = 0;
    for (const std::string& line : lines) columns = std::max(columns, columnsOf(line));
    return columns;
}

// The lines, their names cut by what the widest has too much.
std::vector<std::string> fittingLines(std::vector<Row> rows, const TableLayout& layout) {
    constexpr const char* dots = "...";
    for (Row& row : rows) row[WorstSensorColumn] = shownIn(layout.charset, row[WorstSensorColumn]);
    std::vector<std::string> lines = linesOf(rows, layout.charset);
    const std::size_t width = widest(lines);
    if (layout.columns == 0 || width <= layout.columns) return lines;
    std::size_t longest = 0;
    for (const Row& row : rows) longest = std::max(longest, columnsOf(row[WorstSensorColumn]));
    const std::size_t excess = width - layout.columns;
    const std::size_t columns = std::max(longest > excess ? longest - excess : 0, SHORTEST_SENSOR);
    for (Row& row : rows) {
        std::string& name = row[WorstSensorColumn];
        if (columnsOf(name) > columns) name = cutToColumns(name, columns - columnsOf(dots)) + dots;
    }
    return linesOf(rows, layout.charset);
}

std::string failuresOf(const std::vector<Terminal>& terminals, Charset charset) {
    std::string text;
    for (const Terminal& terminal : terminals) {
        if (!terminal.failure.empty()) text += shownIn(charset, printable(terminal.failure)) + '\n';
    }
    return text;
}

}  // namespace

std::string terminalsTable(const std::vector<Terminal>& terminals, const TableLayout& layout) {
    std::vector<Row> rows{layout.hasHeader ? titles() : Row(titles().size())};
    std::vector<const Terminal*> shown;
    for (const Terminal& terminal : terminals) {
        if (!hasLine(terminal)) continue;
        rows.push_back(rowOf(terminal));
        shown.push_back(&terminal);
    }
    const std::vector<std::string> lines = fittingLines(std::move(rows), layout);
    std::string text;
    if (layout.hasHeader && !shown.empty()) text += lines.front() + '\n';
    for (std::size_t i = 0; i < shown.size(); ++i) {
        const Sensor* worst = shown[i]->worst();
        const bool isColoured = layout.isColoured && shown[i]->isProblem();
        const Severity severity = worst == nullptr ? Severity::Normal : worst->state.severity;
        const bool hasReading = worst != nullptr && worst->reading;
        text += (isColoured ? coloured(lines[i + 1], severity, hasReading) : lines[i + 1]) + '\n';
    }
    const std::string failures = failuresOf(terminals, layout.charset);
    return failures.empty() || text.empty() ? text + failures : text + '\n' + failures;
}

}  // namespace host
