#include "format/SensorsTable.h"

#include <algorithm>
#include <iterator>
#include <optional>
#include <sstream>
#include <utility>

#include "format/Colour.h"
#include "text/TextTable.h"
#include "text/Utf8.h"

namespace host {
namespace {

constexpr std::size_t GAP = 2;             // between columns
constexpr std::size_t SHORTEST_NAME = 12;  // names are not cut further
enum Place : std::size_t { NamePlace, ReadingPlace, StatePlace, LowerPlace, UpperPlace };

std::string limitsText(const Sensor& sensor, Number nonCritical, Number critical, Number fatal) {
    if (!nonCritical && !critical && !fatal) return "-";
    return sensor.scaled(nonCritical) + " / " + sensor.scaled(critical) + " / " + sensor.scaled(fatal);
}

using Row = std::vector<std::string>;

const Row TITLES{"Sensor", "Reading", "State", "Lower limits (n/c/f)", "Upper limits (n/c/f)"};

Row rowOf(const Sensor& sensor, Charset charset) {
    Row row{printable(sensor.name), sensor.withUnit(sensor.reading), sensor.stateWord(), lowerLimits(sensor),
            upperLimits(sensor)};
    for (std::string& cell : row) cell = shownIn(charset, cell);
    return row;
}

// The columns that are shown, and how wide names may be.
struct Shape {
    std::vector<Place> places;
    std::size_t nameColumns;
};

std::vector<std::size_t> widthsOf(const std::vector<Row>& rows) {
    std::vector<std::size_t> widths(rows.front().size(), 0);
    for (const Row& row : rows) {
        for (std::size_t i = 0; i < widths.size(); ++i) widths[i] = std::max(widths[i], columnsOf(row[i]));
    }
    return widths;
}

// None where not even a shortened name, the reading and the state fit into one line.
std::optional<Shape> shapeFor(const std::vector<std::size_t>& widths, std::size_t columns) {
    Shape shape{{NamePlace, ReadingPlace, StatePlace, LowerPlace, UpperPlace}, widths[NamePlace]};
    if (columns == 0) return shape;
    const std::size_t shortest = std::min(widths[NamePlace], SHORTEST_NAME);
    for (;;) {
        std::size_t others = 0;
        for (const Place place : shape.places) others += place == NamePlace ? 0 : GAP + widths[place];
        if (others + shortest <= columns) {
            shape.nameColumns = std::min(widths[NamePlace], columns - others);
            return shape;
        }
        if (shape.places.size() == StatePlace + 1) return std::nullopt;
        const auto lower = std::find(shape.places.begin(), shape.places.end(), LowerPlace);
        shape.places.erase(lower != shape.places.end() ? lower : shape.places.end() - 1);
    }
}

std::string shortened(const std::string& name, std::size_t columns) {
    constexpr const char* dots = "...";
    if (columnsOf(name) <= columns) return name;
    return cutToColumns(name, columns - columnsOf(dots)) + dots;
}

std::vector<std::string> oneLineEach(const std::vector<Row>& rows, const Shape& shape, Charset charset) {
    std::vector<TextTable::Column> columns;
    for (const Place place : shape.places) {
        const Align align = place == ReadingPlace ? Align::Right : Align::Left;
        columns.push_back({place == NamePlace ? shortened(rows[0][place], shape.nameColumns) : rows[0][place], align});
    }
    TextTable table(columns, charset);
    for (std::size_t i = 1; i < rows.size(); ++i) {
        Row cells;
        for (const Place place : shape.places) {
            cells.push_back(place == NamePlace ? shortened(rows[i][place], shape.nameColumns) : rows[i][place]);
        }
        table.add(std::move(cells));
    }
    return table.lines();
}

// The words, as many in a line as fit; lines after the first begin with two blanks. No word is cut.
std::string wrapped(const std::vector<std::string>& words, std::size_t columns) {
    std::string text = words.front();
    std::size_t used = columnsOf(text);
    for (std::size_t i = 1; i < words.size(); ++i) {
        const std::size_t width = columnsOf(words[i]);
        const bool fits = columns == 0 || used + 1 + width <= columns;
        text += (fits ? " " : "\n  ") + words[i];
        used = fits ? used + 1 + width : 2 + width;
    }
    return text;
}

std::vector<std::string> severalLinesEach(const std::vector<Row>& rows, std::size_t columns) {
    std::vector<std::string> lines;
    for (const Row& row : rows) {
        const bool fits = 2 + columnsOf(row[ReadingPlace]) + GAP + columnsOf(row[StatePlace]) <= columns;
        lines.push_back(cutToColumns(row[NamePlace], columns) + "\n  " + row[ReadingPlace] + (fits ? "  " : "\n  ") +
                        row[StatePlace]);
    }
    return lines;
}

std::vector<std::string> wordsOf(const std::string& text) {
    std::istringstream stream(text);
    return {std::istream_iterator<std::string>(stream), {}};
}

std::string reasons(const std::vector<Sensor>& sensors, const TableLayout& layout) {
    std::string text;
    for (const Sensor& sensor : sensors) {
        if (sensor.reading) continue;
        const std::string reason = printable(sensor.name) + ": no reading; " + sensor.reason;
        text += wrapped(wordsOf(shownIn(layout.charset, reason)), layout.columns) + '\n';
    }
    return text.empty() ? text : '\n' + text;
}

}  // namespace

std::string lowerLimits(const Sensor& sensor) {
    return limitsText(sensor, sensor.lowerNonCritical, sensor.lowerCritical, sensor.lowerFatal);
}

std::string upperLimits(const Sensor& sensor) {
    return limitsText(sensor, sensor.upperNonCritical, sensor.upperCritical, sensor.upperFatal);
}

std::string sensorsTable(const std::vector<Sensor>& sensors, const TableLayout& layout) {
    std::vector<Row> rows{layout.hasHeader ? TITLES : Row(TITLES.size())};
    for (const Sensor& sensor : sensors) rows.push_back(rowOf(sensor, layout.charset));
    const std::optional<Shape> shape = shapeFor(widthsOf(rows), layout.columns);
    const std::vector<std::string> lines =
        shape ? oneLineEach(rows, *shape, layout.charset) : severalLinesEach(rows, layout.columns);
    std::string text;
    if (layout.hasHeader) text += lines.front() + '\n';
    for (std::size_t i = 0; i < sensors.size(); ++i) {
        const Sensor& sensor = sensors[i];
        const std::string& line = lines[i + 1];
        text += layout.isColoured ? coloured(line, sensor.state.severity, sensor.reading.has_value()) : line;
        text += '\n';
    }
    return text + reasons(sensors, layout);
}

}  // namespace host
