#include "format/WatchFormat.h"

#include <algorithm>

#include "format/Colour.h"
#include "source/Answer.h"
#include "text/Utf8.h"

namespace host {
namespace {

constexpr std::size_t COLUMN_GAP = 2;      // between columns
constexpr std::size_t MOST_CELLS = 24;     // where there is room
constexpr std::size_t FEWEST_CELLS = 8;    // narrower bars show nothing
constexpr std::size_t BRACKETS = 2;        // around a bar
constexpr std::size_t SHORT_NAME = 12;     // names are cut so far before anything goes
constexpr std::size_t NARROWEST_NAME = 4;  // then so far
constexpr std::size_t LINES_FOR_ALL = 9;   // with fewer, head and titles are left out
constexpr const char* DOTS = "...";
constexpr const char* LIMITS_TITLE = "Between its limits";

std::string cutWithDots(const std::string& text, std::size_t columns) {
    if (columnsOf(text) <= columns) return text;
    return columns <= columnsOf(DOTS) ? cutToColumns(text, columns)
                                      : cutToColumns(text, columns - columnsOf(DOTS)) + DOTS;
}

// At a blank, so that no number in it is cut.
std::string cutAtWord(const std::string& text, std::size_t columns) {
    if (columnsOf(text) <= columns) return text;
    if (columns < columnsOf(DOTS)) return "";
    std::string cut = cutToColumns(text, columns - columnsOf(DOTS) + 1);
    const std::size_t blank = cut.find_last_of(' ');
    cut.erase(blank == std::string::npos ? 0 : cut.find_last_not_of(' ', blank) + 1);
    return cut + DOTS;
}

// Lines of whole words; the last that is allowed is cut.
std::vector<std::string> wrapped(std::string text, std::size_t columns, std::size_t mostLines) {
    std::vector<std::string> lines;
    while (columns > 0 && columnsOf(text) > columns && lines.size() + 1 < mostLines) {
        const std::string part = cutToColumns(text, columns + 1);
        const std::size_t blank = part.find_last_of(' ');
        if (blank == std::string::npos || blank == 0) break;
        lines.push_back(text.substr(0, blank));
        text.erase(0, blank + 1);
    }
    lines.push_back(columns > 0 ? cutAtWord(text, columns) : text);
    return lines;
}

struct SensorRow {
    std::string name;
    std::string reading;  // with its unit
    std::string number;   // without; "-" for none
    std::string state;
    std::string reason;  // why there is no reading
    const Sensor* sensor;
};

SensorRow sensorRowOf(const Sensor& sensor, Charset charset) {
    const auto shown = [charset](const std::string& text) { return shownIn(charset, text); };
    return {shown(printable(sensor.name)),        shown(sensor.withUnit(sensor.reading)),
            shown(sensor.scaled(sensor.reading)), sensor.stateWord(),
            shown(printable(sensor.reason)),      &sensor};
}

struct Widths {
    std::size_t name = 0;  // 0: the column is left out
    std::size_t reading = 0;
    std::size_t state = 0;
    std::size_t last = 0;  // bars and reasons
};

Widths widestOf(const std::vector<SensorRow>& rows) {
    Widths widest{columnsOf("Sensor"), columnsOf("Reading"), columnsOf("State"), columnsOf(LIMITS_TITLE)};
    for (const SensorRow& row : rows) {
        widest.name = std::max(widest.name, columnsOf(row.name));
        widest.reading = std::max(widest.reading, columnsOf(row.reading));
        widest.state = std::max(widest.state, columnsOf(row.state));
        widest.last = std::max(widest.last, row.reason.empty() ? MOST_CELLS + BRACKETS : columnsOf(row.reason));
    }
    return widest;
}

Widths fitted(const Widths& widest, std::size_t columns) {
    const std::size_t bar = MOST_CELLS + BRACKETS;
    const std::size_t withBar = widest.reading + widest.state + 3 * COLUMN_GAP;
    if (columns == 0) return widest;
    if (std::min(widest.name, SHORT_NAME) + withBar + bar <= columns) {
        const std::size_t name = std::min(widest.name, columns - withBar - bar);
        return {name, widest.reading, widest.state, columns - withBar - name};
    }
    const std::size_t shortName = std::min(widest.name, SHORT_NAME);
    if (shortName + withBar + FEWEST_CELLS + BRACKETS <= columns) {
        return {shortName, widest.reading, widest.state, columns - withBar - shortName};
    }
    const std::size_t shortestName = std::min(widest.name, NARROWEST_NAME);
    for (const std::size_t state : {widest.state, std::size_t{0}}) {
        const std::size_t others = widest.reading + COLUMN_GAP + (state == 0 ? 0 : state + COLUMN_GAP);
        if (others + shortestName <= columns) {
            return {std::min(widest.name, columns - others), widest.reading, state, 0};
        }
    }
    return {0, std::min(widest.reading, columns), 0, 0};
}

std::string readingIn(std::size_t columns, const SensorRow& row) {
    std::string text = row.reading;
    if (columnsOf(text) > columns) text = row.number;
    if (columnsOf(text) > columns) text = std::string(columns, '#');
    return std::string(columns - columnsOf(text), ' ') + text;
}

std::string lastIn(std::size_t columns, const SensorRow& row) {
    if (!row.reason.empty()) return cutAtWord(row.reason, columns);
    const std::size_t cells = std::min(columns, MOST_CELLS + BRACKETS) - BRACKETS;
    return limitsBar(*row.sensor, cells);
}

bool isAscii(const std::string& text) {
    return std::all_of(text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

// To its column. How wide other characters are is the terminal's matter: there the cursor is set to where it goes on.
std::string padded(const std::string& text, std::size_t columns, bool movesCursor) {
    if (movesCursor && !isAscii(text)) return text + "\x1b[" + std::to_string(columns + 1) + 'G';
    return text + std::string(columns - columnsOf(text), ' ');
}

struct Cells {
    std::string name, reading, state, last;
};

std::string joined(const Cells& cells, const Widths& widths, bool movesCursor) {
    const std::string gap(COLUMN_GAP, ' ');
    std::string line;
    if (widths.name > 0) line += padded(cutWithDots(cells.name, widths.name), widths.name, movesCursor) + gap;
    line += cells.reading;
    if (widths.state > 0) line += gap + padded(cells.state, widths.state, movesCursor);
    if (widths.last > 0) line += gap + cells.last;
    line.erase(line.find_last_not_of(' ') + 1);
    return line;
}

std::string lineOf(const SensorRow& row, const Widths& widths, bool movesCursor, const WatchStyle& style) {
    const std::string last = widths.last > 0 ? lastIn(widths.last, row) : "";
    std::string line = joined({row.name, readingIn(widths.reading, row), row.state, last}, widths, movesCursor);
    if (!style.isColoured) return line;
    return coloured(line, row.sensor->state.severity, row.sensor->reading.has_value());
}

std::string titles(const Widths& widths) {
    constexpr const char* reading = "Reading";
    const std::size_t before = widths.reading - std::min(widths.reading, columnsOf(reading));
    const std::string last = widths.last < columnsOf(LIMITS_TITLE) ? "Limits" : LIMITS_TITLE;
    return joined({"Sensor", std::string(before, ' ') + cutToColumns(reading, widths.reading), "State", last}, widths,
                  false);
}

std::string counted(std::size_t count, const char* noun) {
    return std::to_string(count) + ' ' + noun + (count == 1 ? "" : "s");
}

// "14 sensors: 1 past a limit, 1 without a reading", and before it the status of a round that failed.
std::string summaryOf(const Round& round) {
    const auto past = std::count_if(round.sensors.begin(), round.sensors.end(),
                                    [](const Sensor& sensor) { return sensor.state.severity != Severity::Normal; });
    const auto without =
        std::count_if(round.sensors.begin(), round.sensors.end(), [](const Sensor& sensor) { return !sensor.reading; });
    std::string text = counted(round.sensors.size(), "sensor");
    if (past > 0) text += ": " + std::to_string(past) + " past a limit";
    if (without > 0) text += (past > 0 ? ", " : ": ") + std::to_string(without) + " without a reading";
    if (past == 0 && without == 0 && !round.sensors.empty()) text += ", all well";
    return round.status.rc == CMPI_RC_OK ? text : "Status " + statusText(round.status) + "; " + text;
}

std::string inColourOf(const Round& round, const std::string& summary, const WatchStyle& style) {
    return style.isColoured && round.status.rc != CMPI_RC_OK ? coloured(summary, Severity::Critical) : summary;
}

// Head and note in one line where it is wide enough.
std::vector<std::string> headLines(const WatchRound& round, std::size_t columns, Charset charset) {
    const std::string head = shownIn(charset, round.head);
    const std::string note = shownIn(charset, round.note);
    const std::string both = note.empty() ? head : head + "  " + note;
    if (note.empty() || columns == 0 || columnsOf(both) <= columns) return wrapped(both, columns, 1);
    return {cutAtWord(head, columns), cutAtWord(note, columns)};
}

class Painter {
  public:
    Painter(const WatchRound& round, PictureSize size, const WatchStyle& style)
        : m_round(round), m_size(size), m_style(style), m_isShort(size.lines > 0 && size.lines < LINES_FOR_ALL) {
        for (const Sensor& sensor : round.round.sensors) m_rows.push_back(sensorRowOf(sensor, style.charset));
        m_widths = fitted(widestOf(m_rows), size.columns);
    }

    Picture picture(std::size_t first) {
        Picture picture;
        picture.lines = above("");
        picture.room = roomBelow(picture.lines.size());
        if (m_rows.size() > picture.room) {
            sortWorstFirst();
            const std::string count = std::to_string(m_rows.size());
            picture.room = roomBelow(above(count + '-' + count).size());
            picture.first = std::min(first, m_rows.size() - picture.room);
            picture.lines = above(std::to_string(picture.first + 1) + '-' +
                                  std::to_string(std::min(picture.first + picture.room, m_rows.size())));
        }
        const std::size_t end = std::min(m_rows.size(), picture.first + picture.room);
        for (std::size_t i = picture.first; i < end; ++i) {
            picture.lines.push_back(lineOf(m_rows[i], m_widths, m_size.columns > 0, m_style));
        }
        if (m_size.lines > 0 && picture.lines.size() > usable()) picture.lines.resize(usable());
        return picture;
    }

  private:
    // The cursor takes the last line.
    std::size_t usable() const { return m_size.lines > 1 ? m_size.lines - 1 : 1; }

    std::size_t roomBelow(std::size_t linesAbove) const {
        if (m_size.lines == 0) return m_rows.size();
        return usable() > linesAbove ? usable() - linesAbove : 0;
    }

    std::vector<std::string> above(const std::string& shown) const {
        std::vector<std::string> lines;
        if (!m_isShort) lines = headLines(m_round, m_size.columns, m_style.charset);
        std::string summary = shownIn(m_style.charset, summaryOf(m_round.round));
        if (!shown.empty()) summary += "; shown: " + shown;
        const std::size_t mostLines = m_isShort ? std::max<std::size_t>(1, usable() / 2) : 3;
        for (const std::string& line : wrapped(summary, m_size.columns, mostLines)) {
            lines.push_back(inColourOf(m_round.round, line, m_style));
        }
        if (!m_isShort) lines.push_back(titles(m_widths));
        return lines;
    }

    void sortWorstFirst() {
        std::stable_sort(m_rows.begin(), m_rows.end(), [](const SensorRow& left, const SensorRow& right) {
            return left.sensor->gravity() > right.sensor->gravity();
        });
    }

    const WatchRound& m_round;
    PictureSize m_size;
    const WatchStyle& m_style;
    bool m_isShort;
    std::vector<SensorRow> m_rows;
    Widths m_widths;
};

}  // namespace

std::string plainRound(const WatchRound& round, const WatchStyle& style) {
    std::string text;
    for (const std::string& line : Painter(round, {}, style).picture(0).lines) text += line + '\n';
    return text + '\n';
}

Picture pictureOf(const WatchRound& round, PictureSize size, std::size_t first, const WatchStyle& style) {
    return Painter(round, size, style).picture(first);
}

std::string drawn(const Picture& picture) {
    std::string text = "\x1b[H";
    // Cleared before: behind a line that is as wide as the terminal, its last character would go.
    for (const std::string& line : picture.lines) text += "\x1b[K" + line + '\n';
    return text + "\x1b[J";
}

}  // namespace host
