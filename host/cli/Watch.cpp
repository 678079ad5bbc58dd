#include "cli/Watch.h"

#include <poll.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <csignal>
#include <cstdint>
#include <ctime>
#include <optional>

#include "cli/Failure.h"
#include "format/JsonFormat.h"
#include "format/MofFormat.h"
#include "text/TextTable.h"
#include "text/Utf8.h"

namespace host {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::size_t kBarCells = 24;

volatile std::sig_atomic_t interrupted = 0;  // the signal's number

extern "C" void noteInterruption(int signal) {
    interrupted = signal;
}

// Catches the signals that ask for an end, and lets them come while it waits only: a request is never cut short.
class Interruption {
  public:
    Interruption() {
        interrupted = 0;
        sigset_t caught;
        sigemptyset(&caught);
        for (std::size_t i = 0; i < kSignals.size(); ++i) {
            // What was ignored at the start, as under nohup, stays ignored.
            sigaction(kSignals.at(i), nullptr, &m_before.at(i));
            if (m_before.at(i).sa_handler == SIG_IGN) continue;
            struct sigaction action {};
            action.sa_handler = noteInterruption;
            sigaction(kSignals.at(i), &action, nullptr);
            sigaddset(&caught, kSignals.at(i));
        }
        pthread_sigmask(SIG_BLOCK, &caught, &m_maskBefore);
    }
    ~Interruption() {
        // With the handlers still in place: a signal that waits is spent, since the end has been reached anyway.
        pthread_sigmask(SIG_SETMASK, &m_maskBefore, nullptr);
        for (std::size_t i = 0; i < kSignals.size(); ++i) sigaction(kSignals.at(i), &m_before.at(i), nullptr);
    }
    Interruption(const Interruption&) = delete;
    Interruption& operator=(const Interruption&) = delete;

    // Waits until then; false when a signal came.
    bool waitUntil(Clock::time_point end) const {
        while (interrupted == 0) {
            const auto left = std::chrono::duration_cast<std::chrono::nanoseconds>(end - Clock::now()).count();
            constexpr long kSecond = 1'000'000'000;
            const timespec wait{left > 0 ? left / kSecond : 0, left > 0 ? left % kSecond : 0};
            if (ppoll(nullptr, 0, &wait, &m_maskBefore) == 0) return true;
        }
        return false;
    }

  private:
    static constexpr std::array<int, 3> kSignals{SIGINT, SIGTERM, SIGHUP};
    std::array<struct sigaction, 3> m_before{};
    sigset_t m_maskBefore{};
};

// The terminal while rounds are drawn over each other: cleared at first, without a cursor, and as it was at the end.
class Screen {
  public:
    explicit Screen(Output& output) : m_output(output) { m_output.write("\x1b[?25l\x1b[2J"); }
    ~Screen() {
        try {
            m_output.write("\x1b[0m\x1b[?25h");
        } catch (const OutputError&) {
            // The terminal is gone; the failure has been or will be met elsewhere.
            return;
        }
    }
    Screen(const Screen&) = delete;
    Screen& operator=(const Screen&) = delete;

    void draw(const std::vector<WatchLine>& lines) {
        m_output.write(drawn(lines, m_output.size(), m_output.takesColour()));
    }

  private:
    Output& m_output;
};

const char* colourOf(Severity severity) {
    switch (severity) {
        case Severity::Normal:
            return "";
        case Severity::NonCritical:
            return "\x1b[33m";
        case Severity::Critical:
            return "\x1b[31m";
        case Severity::Fatal:
            return "\x1b[1;31m";
    }
    return "";
}

std::string localTime() {
    const std::time_t now = std::time(nullptr);
    std::tm parts{};
    localtime_r(&now, &parts);
    std::array<char, 32> text{};
    std::strftime(text.data(), text.size(), "%Y-%m-%d %H:%M:%S", &parts);
    return text.data();
}

std::string plainText(const std::vector<WatchLine>& lines) {
    std::string text;
    for (const WatchLine& line : lines) text += line.text + '\n';
    return text + '\n';
}

std::string headOf(unsigned round, const std::string& note) {
    return localTime() + "  round " + std::to_string(round) + "  " + note;
}

}  // namespace

std::vector<WatchLine> watchLines(const Answer& answer, const std::string& head, Charset charset) {
    TextTable table({{"Sensor"}, {"Reading", Align::Right}, {"State"}, {"Between its limits"}}, charset);
    std::vector<Severity> severities;
    std::size_t past = 0;
    for (const broker::Instance& instance : answer.reply.instances) {
        const std::optional<SensorView> sensor = SensorView::of(instance);
        if (!sensor) continue;
        const SensorState state = stateOf(*sensor);
        table.add(
            {printable(sensor->name), sensor->withUnit(sensor->reading), state.word(), limitsBar(*sensor, kBarCells)});
        severities.push_back(state.severity);
        if (state.severity != Severity::Normal) ++past;
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

std::string drawn(const std::vector<WatchLine>& lines, Output::Size size, bool inColour) {
    std::vector<WatchLine> shown = lines;
    // The cursor takes the line after the last.
    const std::size_t room = size.lines > 1 ? size.lines - 1 : lines.size();
    if (shown.size() > room) {
        shown.resize(room);
        shown.back() = {"... " + std::to_string(lines.size() - room + 1) + " more, for which there is no room"};
    }
    std::string text = "\x1b[H";
    for (const WatchLine& line : shown) {
        const std::string cut = size.columns > 0 ? cutToColumns(line.text, size.columns) : line.text;
        const std::string colour = inColour ? colourOf(line.severity) : "";
        text += colour.empty() ? cut : colour + cut + "\x1b[0m";
        text += "\x1b[K\n";
    }
    return text + "\x1b[J";
}

WatchOutcome watch(const Options& options, const std::string& note, const std::function<broker::Reply()>& ask,
                   Output& output) {
    const Interruption interruption;
    std::optional<Screen> screen;
    if (options.format == Format::Table && output.isTerminal()) screen.emplace(output);
    const std::chrono::nanoseconds interval(static_cast<std::int64_t>(options.interval * 1e9));
    WatchOutcome outcome;
    for (Clock::time_point next = Clock::now();;) {
        const Answer answer{options.command, options.nameSpace, options.className, ask()};
        ++outcome.rounds;
        if (answer.reply.status.rc != CMPI_RC_OK) {
            ++outcome.failedRounds;
            outcome.lastFailure = answer.reply.status;
        }
        if (options.format == Format::Json) {
            output.write(jsonText(answer, JsonLayout::OneLine));
        } else if (options.format == Format::Mof) {
            output.write(mofText(answer));
        } else {
            const std::vector<WatchLine> lines = watchLines(answer, headOf(outcome.rounds, note), output.charset());
            screen ? screen->draw(lines) : output.write(plainText(lines));
        }
        if (options.rounds != 0 && outcome.rounds >= options.rounds) return outcome;
        next = std::max(next + interval, Clock::now());
        if (interruption.waitUntil(next)) continue;
        // The terminal shows "^C"; what comes next shall not stand behind it.
        if (interrupted == SIGINT && output.isTerminal()) output.write("\n");
        return outcome;
    }
}

}  // namespace host
