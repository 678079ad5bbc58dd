#include "cli/Watch.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <csignal>
#include <cstdint>
#include <ctime>
#include <set>
#include <utility>
#include <vector>

#include "cli/Colouring.h"
#include "cli/KeyReader.h"
#include "cli/Screen.h"
#include "cli/Waiting.h"
#include "format/SensorsJson.h"
#include "format/WatchFormat.h"
#include "health/SensorRounds.h"
#include "source/Answer.h"

namespace host {
namespace {

using Clock = Waiting::Clock;

// A round is given up, because the end is asked for while it waits.
struct RoundGivenUp {};

std::string textOf(std::time_t time) {
    std::tm parts{};
    localtime_r(&time, &parts);
    std::array<char, 32> text{};
    std::strftime(text.data(), text.size(), "%Y-%m-%d %H:%M:%S", &parts);
    return text.data();
}

// Keeps the sensors in their places that were there and are not named any more.
void keepSensors(Round& round, const std::vector<Sensor>& before) {
    if (round.status.rc == CMPI_RC_OK) return;
    std::set<std::string> named;
    for (const Sensor& sensor : round.sensors) named.insert(sensor.name);
    for (const Sensor& sensor : before) {
        if (named.count(sensor.name) != 0) continue;
        Sensor missing = Sensor::withoutReading(sensor.name, "the provider answered " + statusText(round.status));
        missing.failure = round.status;
        round.sensors.push_back(std::move(missing));
    }
}

// Where the picture begins after the key.
std::size_t scrolled(const Picture& picture, Key key) {
    const std::size_t page = std::max<std::size_t>(1, picture.room);
    switch (key) {
        case Key::Up:
            return picture.first - std::min<std::size_t>(1, picture.first);
        case Key::Down:
            return picture.first + 1;
        case Key::PageUp:
            return picture.first - std::min(page, picture.first);
        case Key::PageDown:
            return picture.first + page;
        case Key::Home:
            return 0;
        case Key::End:
            return SIZE_MAX;
        case Key::Quit:
            break;
    }
    return picture.first;
}

class Watch {
  public:
    Watch(const Options& options, Source& source, std::string note, std::optional<AnsweringChip> chip, Output& output)
        : m_options(options),
          m_note(std::move(note)),
          m_chip(std::move(chip)),
          m_output(output),
          m_style{output.charset(), isColoured(options.sensors.colouring, output)},
          m_waiting(options.format == Format::Table && output.isTerminal()),
          m_rounds(source, options.request.nameSpace,
                   {Clock::now, [this](Clock::duration time) { waitInRound(time); }, std::chrono::system_clock::now}) {
        if (options.format == Format::Table && output.isTerminal()) m_screen.emplace(output);
    }

    WatchOutcome run() {
        const std::chrono::nanoseconds interval(static_cast<std::int64_t>(m_options.interval * 1e9));
        for (Clock::time_point next = Clock::now();;) {
            try {
                askOnce();
            } catch (const RoundGivenUp&) {
                endLine();
                return m_outcome;
            }
            if (m_options.rounds != 0 && m_outcome.rounds >= m_options.rounds) return m_outcome;
            next = std::max(next + interval, Clock::now());
            if (!goesOnAt(next)) return m_outcome;
        }
    }

  private:
    void askOnce() {
        const std::time_t time = std::time(nullptr);
        Round round = m_rounds.next();
        keepSensors(round, m_shown.round.sensors);
        ++m_outcome.rounds;
        if (const std::optional<broker::Status> failure = firstFailure(round)) {
            ++m_outcome.failedRounds;
            m_outcome.lastFailure = *failure;
        }
        m_shown = {std::move(round), textOf(time) + "  round " + std::to_string(m_outcome.rounds), m_note};
        if (m_screen) {
            draw(m_picture.first);
        } else if (m_options.format == Format::Json) {
            m_output.write(watchJson(m_shown.round, m_options.request.nameSpace, time, m_chip));
        } else {
            m_output.write(plainRound(m_shown, m_style));
        }
    }

    void draw(std::size_t first) {
        const Output::Size size = m_output.size();
        m_picture = pictureOf(m_shown, {size.columns, size.lines}, first, m_style);
        m_output.write(drawn(m_picture));
    }

    void stop() {
        m_screen->leave();
        m_waiting.stop();
        m_screen->enter();
    }

    // Waits for the next round, and meanwhile does what comes; false for the end.
    bool goesOnAt(Clock::time_point next) {
        for (;;) {
            switch (m_waiting.until(next, m_screen ? m_screen->keys() : -1)) {
                case Event::TimeUp:
                    return true;
                case Event::End:
                    endLine();
                    return false;
                case Event::Stop:
                    stop();
                    draw(m_picture.first);
                    break;
                case Event::Continue:
                    if (m_screen) m_screen->enter();
                    [[fallthrough]];
                case Event::Resize:
                    if (m_screen) draw(m_picture.first);
                    break;
                case Event::Input:
                    if (!obeysKeys()) return false;
                    break;
            }
        }
    }

    bool obeysKeys() {
        std::array<char, 256> bytes{};
        const ssize_t count = read(m_screen->keys(), bytes.data(), bytes.size());
        if (count <= 0) {
            m_screen->endKeys();
            return true;
        }
        for (const Key key : m_keys.keysIn({bytes.data(), static_cast<std::size_t>(count)})) {
            if (key == Key::Quit) return false;
            draw(scrolled(m_picture, key));
        }
        return true;
    }

    void waitInRound(Clock::duration time) {
        const Clock::time_point end = Clock::now() + time;
        for (;;) {
            switch (m_waiting.until(end, -1)) {
                case Event::TimeUp:
                    return;
                case Event::End:
                    throw RoundGivenUp();
                case Event::Stop:
                    stop();
                    break;
                case Event::Continue:
                    if (m_screen) m_screen->enter();
                    break;
                case Event::Resize:
                case Event::Input:
                    break;
            }
        }
    }

    // The terminal shows "^C"; what comes next shall not stand behind it.
    void endLine() {
        if (m_waiting.endingSignal() == SIGINT && m_output.isTerminal()) m_output.write("\n");
    }

    const Options& m_options;
    std::string m_note;
    std::optional<AnsweringChip> m_chip;
    Output& m_output;
    WatchStyle m_style;
    Waiting m_waiting;
    SensorRounds m_rounds;
    std::optional<Screen> m_screen;
    KeyReader m_keys;
    WatchRound m_shown;
    Picture m_picture;
    WatchOutcome m_outcome;
};

}  // namespace

WatchOutcome watch(const Options& options, Source& source, const std::string& note,
                   const std::optional<AnsweringChip>& chip, Output& output) {
    return Watch(options, source, note, chip, output).run();
}

}  // namespace host
