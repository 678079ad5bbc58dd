#include "cli/Screen.h"

#include <unistd.h>

#include <array>
#include <csignal>
#include <cstddef>

namespace host {
namespace {

constexpr std::string_view BEGIN = "\x1b[?25l\x1b[?7l\x1b[2J";
constexpr std::string_view END = "\x1b[0m\x1b[?7h\x1b[?25h";

// Those that end a process with a core dump; nothing of ours runs after them.
constexpr std::array DUMPING{SIGQUIT, SIGABRT, SIGSEGV, SIGBUS, SIGILL, SIGFPE};

// What the handler needs: it may use nothing that is not safe in a signal handler.
struct Rescue {
    int output = -1;
    int input = -1;  // -1: there is nothing to restore
    termios before{};
    std::array<struct sigaction, DUMPING.size()> actions{};
};
Rescue s_rescue;

extern "C" void rescueTerminal(int signal) {
    if (s_rescue.input >= 0) tcsetattr(s_rescue.input, TCSANOW, &s_rescue.before);
    const ssize_t written = write(s_rescue.output, END.data(), END.size());
    static_cast<void>(written);
    for (std::size_t i = 0; i < DUMPING.size(); ++i) {
        if (DUMPING.at(i) == signal) sigaction(signal, &s_rescue.actions.at(i), nullptr);
    }
    raise(signal);  // it comes when this handler has returned
}

void catchDumping() {
    struct sigaction action {};
    action.sa_handler = rescueTerminal;
    for (std::size_t i = 0; i < DUMPING.size(); ++i) {
        sigaction(DUMPING.at(i), nullptr, &s_rescue.actions.at(i));
        if (s_rescue.actions.at(i).sa_handler != SIG_IGN) sigaction(DUMPING.at(i), &action, nullptr);
    }
}

void releaseDumping() {
    for (std::size_t i = 0; i < DUMPING.size(); ++i) sigaction(DUMPING.at(i), &s_rescue.actions.at(i), nullptr);
}

// Whoever changes the settings of a terminal from the background is stopped.
bool isInBackground(int terminal) {
    const pid_t foreground = tcgetpgrp(terminal);
    return foreground >= 0 && foreground != getpgrp();
}

}  // namespace

Screen::Screen(Output& output)
    : m_output(output), m_input(STDIN_FILENO), m_isInputKnown(tcgetattr(m_input, &m_before) == 0) {
    s_rescue.output = output.descriptor();
    s_rescue.before = m_before;
    catchDumping();
    try {
        enter();
    } catch (const OutputError&) {
        leave();
        releaseDumping();
        throw;
    }
}

Screen::~Screen() {
    leave();
    releaseDumping();
}

void Screen::enter() {
    takeKeys();
    m_output.write(BEGIN);
}

void Screen::takeKeys() {
    if (!m_isInputKnown || isInBackground(m_input)) return;
    termios raw = m_before;
    raw.c_lflag &= ~static_cast<tcflag_t>(ICANON | ECHO);
    raw.c_cc[VMIN] = 1;
    raw.c_cc[VTIME] = 0;
    s_rescue.input = m_input;
    m_readsKeys = tcsetattr(m_input, TCSANOW, &raw) == 0;
}

void Screen::leave() {
    if (s_rescue.input >= 0 && !isInBackground(m_input)) tcsetattr(m_input, TCSANOW, &m_before);
    s_rescue.input = -1;
    m_readsKeys = false;
    try {
        m_output.write(END);
    } catch (const OutputError&) {
        // The terminal is gone; the failure has been or will be met elsewhere.
        return;
    }
}

}  // namespace host
