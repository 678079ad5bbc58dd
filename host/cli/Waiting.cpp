#include "cli/Waiting.h"

#include <poll.h>
#include <pthread.h>

#include <ctime>

namespace host {
namespace {

volatile std::sig_atomic_t s_ending = 0;  // the signal's number
volatile std::sig_atomic_t s_stops = 0;
volatile std::sig_atomic_t s_continues = 0;
volatile std::sig_atomic_t s_resizes = 0;

extern "C" void noteSignal(int signal) {
    switch (signal) {
        case SIGTSTP:
            s_stops = 1;
            return;
        case SIGCONT:
            s_continues = 1;
            return;
        case SIGWINCH:
            s_resizes = 1;
            return;
        default:
            s_ending = signal;
    }
}

bool taken(volatile std::sig_atomic_t& noted) {
    const bool isNoted = noted != 0;
    noted = 0;
    return isNoted;
}

timespec timeUntil(Waiting::Clock::time_point end) {
    constexpr long second = 1'000'000'000;
    const auto left = std::chrono::duration_cast<std::chrono::nanoseconds>(end - Waiting::Clock::now()).count();
    return {left > 0 ? left / second : 0, left > 0 ? left % second : 0};
}

void setHandler(int signal, void (*handler)(int)) {
    struct sigaction action {};
    action.sa_handler = handler;
    sigaction(signal, &action, nullptr);
}

}  // namespace

Waiting::Waiting(bool withStops) {
    s_ending = s_stops = s_continues = s_resizes = 0;
    std::vector<int> signals{SIGINT, SIGTERM, SIGHUP, SIGCONT, SIGWINCH};
    if (withStops) signals.push_back(SIGTSTP);
    sigset_t blocked;
    sigemptyset(&blocked);
    for (const int signal : signals) {
        Caught caught{signal, {}};
        sigaction(signal, nullptr, &caught.before);
        if (caught.before.sa_handler == SIG_IGN) continue;
        setHandler(signal, noteSignal);
        sigaddset(&blocked, signal);
        m_caught.push_back(caught);
    }
    pthread_sigmask(SIG_BLOCK, &blocked, &m_maskBefore);
}

Waiting::~Waiting() {
    // With the handlers still in place: a signal that waits is spent, since the end has been reached anyway.
    pthread_sigmask(SIG_SETMASK, &m_maskBefore, nullptr);
    for (const Caught& each : m_caught) sigaction(each.signal, &each.before, nullptr);
}

Event Waiting::until(Clock::time_point end, int descriptor) const {
    for (;;) {
        pollfd input{descriptor, POLLIN, 0};
        const timespec left = s_ending != 0 ? timespec{0, 0} : timeUntil(end);
        const int ready = ppoll(&input, 1, &left, &m_maskBefore);
        if (s_ending != 0) return Event::End;
        if (taken(s_stops)) return Event::Stop;
        if (taken(s_continues)) return Event::Continue;
        if (taken(s_resizes)) return Event::Resize;
        if (ready > 0) return Event::Input;
        if (ready == 0) return Event::TimeUp;
    }
}

int Waiting::endingSignal() const {
    return s_ending;
}

void Waiting::stop() const {
    setHandler(SIGTSTP, SIG_DFL);
    raise(SIGTSTP);
    // The signal that ends the stop is taken here too, or the caller would see it as another event.
    sigset_t both;
    sigemptyset(&both);
    sigaddset(&both, SIGTSTP);
    sigaddset(&both, SIGCONT);
    pthread_sigmask(SIG_UNBLOCK, &both, nullptr);  // here it stops
    pthread_sigmask(SIG_BLOCK, &both, nullptr);
    s_continues = 0;
    setHandler(SIGTSTP, noteSignal);
}

}  // namespace host
