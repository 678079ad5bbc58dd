// The end of a program that goes on until it is asked to end.
#ifndef ZELSENSORS_CLI_ENDING_H
#define ZELSENSORS_CLI_ENDING_H

#include <chrono>
#include <condition_variable>
#include <csignal>
#include <functional>
#include <mutex>
#include <thread>

namespace host {

// While it lives, SIGINT, SIGTERM and SIGHUP do not end the process and cut no system call short: a thread takes them.
// One that is ignored at the start stays ignored. One at a time; to be made before other threads, which inherit that
// the signals are blocked.
class Ending {
  public:
    using Clock = std::chrono::steady_clock;  // which nobody sets

    // Where a signal has come and this object still lives after the grace, since whatever runs does not return, the
    // thread calls `abandon`, which must not wait for anything nor throw, and ends the process with the exit status
    // that it gives.
    Ending(std::chrono::milliseconds grace, std::function<int()> abandon);
    ~Ending();
    Ending(const Ending&) = delete;
    Ending& operator=(const Ending&) = delete;

    bool isAskedFor();
    // Waits until then, or until a signal comes: then it gives false.
    bool waitUntil(Clock::time_point time);

    // From now on nothing is abandoned, so that what is left to do takes its time; signals still wait. For the owner.
    void reach();

  private:
    void takeSignal();

    std::chrono::milliseconds m_grace;
    std::function<int()> m_abandon;
    sigset_t m_signals{};
    sigset_t m_maskBefore{};
    std::mutex m_mutex;
    std::condition_variable m_change;
    bool m_isAskedFor = false;
    bool m_isOver = false;
    std::thread m_thread;
};

// The first start + n × interval, n a whole number, that comes after `now`, which is not before the start.
Ending::Clock::time_point nextMultiple(Ending::Clock::time_point start, std::chrono::nanoseconds interval,
                                       Ending::Clock::time_point now);

}  // namespace host

#endif
