#include "cli/Ending.h"

#include <pthread.h>
#include <unistd.h>

#include <utility>

namespace host {
namespace {

bool isIgnored(int signal) {
    struct sigaction action {};
    sigaction(signal, nullptr, &action);
    return action.sa_handler == SIG_IGN;
}

}  // namespace

Ending::Ending(std::chrono::milliseconds grace, std::function<int()> abandon)
    : m_grace(grace), m_abandon(std::move(abandon)) {
    sigemptyset(&m_signals);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        if (!isIgnored(signal)) sigaddset(&m_signals, signal);
    }
    pthread_sigmask(SIG_BLOCK, &m_signals, &m_maskBefore);
    // For reach(), which has to wake the thread also where all three are ignored: a signal that is ignored by default
    // and blocked waits for whoever takes it.
    sigset_t taken = m_signals;
    sigaddset(&taken, SIGURG);
    pthread_sigmask(SIG_BLOCK, &taken, nullptr);
    m_thread = std::thread([this] { takeSignal(); });
}

Ending::~Ending() {
    reach();
    // A signal that has come since is spent: the end has been reached anyway.
    const timespec now{0, 0};
    while (sigtimedwait(&m_signals, nullptr, &now) > 0) continue;
    pthread_sigmask(SIG_SETMASK, &m_maskBefore, nullptr);
}

bool Ending::isAskedFor() {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_isAskedFor;
}

bool Ending::waitUntil(Clock::time_point time) {
    std::unique_lock<std::mutex> lock(m_mutex);
    return !m_change.wait_until(lock, time, [this] { return m_isAskedFor; });
}

void Ending::reach() {
    if (!m_thread.joinable()) return;
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_isOver = true;
    }
    m_change.notify_all();
    pthread_kill(m_thread.native_handle(), SIGURG);
    m_thread.join();
}

void Ending::takeSignal() {
    sigset_t taken = m_signals;
    sigaddset(&taken, SIGURG);
    int signal = 0;
    sigwait(&taken, &signal);
    std::unique_lock<std::mutex> lock(m_mutex);
    while (signal == SIGURG && !m_isOver) {  // somebody else's
        lock.unlock();
        sigwait(&taken, &signal);
        lock.lock();
    }
    m_isAskedFor = true;
    m_change.notify_all();
    if (m_change.wait_for(lock, m_grace, [this] { return m_isOver; })) return;
    _exit(m_abandon());
}

Ending::Clock::time_point nextMultiple(Ending::Clock::time_point start, std::chrono::nanoseconds interval,
                                       Ending::Clock::time_point now) {
    return start + ((now - start) / interval + 1) * interval;
}

}  // namespace host
