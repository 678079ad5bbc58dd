// Waiting between the rounds of watch, for all that may come meanwhile.
#ifndef ZELSENSORS_CLI_WAITING_H
#define ZELSENSORS_CLI_WAITING_H

#include <chrono>
#include <csignal>
#include <cstddef>
#include <vector>

namespace host {

enum class Event {
    TimeUp,
    End,       // SIGINT, SIGTERM or SIGHUP came; every later wait ends so
    Stop,      // Ctrl-Z: see Waiting::stop()
    Continue,  // SIGCONT: the terminal may look otherwise now
    Resize,    // of the terminal
    Input,     // there is something to read
};

// While it lives, signals come only while it waits, so that no request is cut short. Those that were ignored at the
// start, as under nohup, stay ignored. One at a time.
class Waiting {
  public:
    using Clock = std::chrono::steady_clock;

    // Ctrl-Z stops the process as ever, unless `withStops` makes it an event.
    explicit Waiting(bool withStops);
    ~Waiting();
    Waiting(const Waiting&) = delete;
    Waiting& operator=(const Waiting&) = delete;

    // Whatever comes first, until then. A descriptor of -1 is not looked at.
    Event until(Clock::time_point end, int descriptor) const;
    // The signal of Event::End.
    int endingSignal() const;
    // Stops the process, as Ctrl-Z does; returns when it goes on, and no Event::Continue follows.
    void stop() const;

  private:
    struct Caught {
        int signal;
        struct sigaction before;
    };
    std::vector<Caught> m_caught;
    sigset_t m_maskBefore{};
};

}  // namespace host

#endif
