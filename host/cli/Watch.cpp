#include "cli/Watch.h"

#include <poll.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <csignal>
#include <cstdint>
#include <ctime>
#include <optional>

#include "format/JsonFormat.h"
#include "format/MofFormat.h"
#include "format/WatchFormat.h"
#include "source/Answer.h"

namespace host {
namespace {

using Clock = std::chrono::steady_clock;

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
        for (std::size_t i = 0; i < SIGNALS.size(); ++i) {
            // What was ignored at the start, as under nohup, stays ignored.
            sigaction(SIGNALS.at(i), nullptr, &m_before.at(i));
            if (m_before.at(i).sa_handler == SIG_IGN) continue;
            struct sigaction action {};
            action.sa_handler = noteInterruption;
            sigaction(SIGNALS.at(i), &action, nullptr);
            sigaddset(&caught, SIGNALS.at(i));
        }
        pthread_sigmask(SIG_BLOCK, &caught, &m_maskBefore);
    }
    ~Interruption() {
        // With the handlers still in place: a signal that waits is spent, since the end has been reached anyway.
        pthread_sigmask(SIG_SETMASK, &m_maskBefore, nullptr);
        for (std::size_t i = 0; i < SIGNALS.size(); ++i) sigaction(SIGNALS.at(i), &m_before.at(i), nullptr);
    }
    Interruption(const Interruption&) = delete;
    Interruption& operator=(const Interruption&) = delete;

    // Waits until then; false when a signal came.
    bool waitUntil(Clock::time_point end) const {
        while (interrupted == 0) {
            const auto left = std::chrono::duration_cast<std::chrono::nanoseconds>(end - Clock::now()).count();
            constexpr long SECOND = 1'000'000'000;
            const timespec wait{left > 0 ? left / SECOND : 0, left > 0 ? left % SECOND : 0};
            if (ppoll(nullptr, 0, &wait, &m_maskBefore) == 0) return true;
        }
        return false;
    }

  private:
    static constexpr std::array<int, 3> SIGNALS{SIGINT, SIGTERM, SIGHUP};
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

std::string localTime() {
    const std::time_t now = std::time(nullptr);
    std::tm parts{};
    localtime_r(&now, &parts);
    std::array<char, 32> text{};
    std::strftime(text.data(), text.size(), "%Y-%m-%d %H:%M:%S", &parts);
    return text.data();
}

std::string headOf(unsigned round, const std::string& note) {
    return localTime() + "  round " + std::to_string(round) + "  " + note;
}

}  // namespace

WatchOutcome watch(const Options& options, const AnsweringChip& chip, const std::function<broker::Reply()>& ask,
                   Output& output) {
    const Interruption interruption;
    std::optional<Screen> screen;
    if (options.format == Format::Table && output.isTerminal()) screen.emplace(output);
    const std::chrono::nanoseconds interval(static_cast<std::int64_t>(options.interval * 1e9));
    WatchOutcome outcome;
    for (Clock::time_point next = Clock::now();;) {
        const Answer answer{options.request.command, options.request.nameSpace, options.request.className, ask(), chip};
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
            const std::vector<WatchLine> lines =
                watchLines(answer, headOf(outcome.rounds, chipNote(chip)), output.charset());
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
