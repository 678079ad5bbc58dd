#include "health/Terminals.h"

#include <algorithm>
#include <deque>
#include <optional>
#include <utility>

#include "health/SensorVisit.h"
#include "source/Answer.h"
#include "text/Utf8.h"

namespace host {
namespace {

using Clock = Servers::Clock;

std::string failureIn(const Terminal& terminal) {
    const Round& round = terminal.round;
    if (round.status.rc != CMPI_RC_OK) return terminal.url + " answered " + statusText(round.status);
    for (const Sensor& sensor : round.sensors) {
        if (sensor.failure) return terminal.url + ": " + printable(sensor.name) + ": " + sensor.reason;
    }
    return "";
}

class Tour {
  public:
    Tour(Servers& servers, const std::string& nameSpace, const std::function<void(std::size_t)>& progress)
        : m_servers(servers), m_progress(progress), m_visits(servers.urls().size(), SensorVisit(nameSpace)) {
        for (const std::string& url : servers.urls()) m_terminals.push_back({url, false, "", {}});
    }

    std::vector<Terminal> result() {
        while (m_done < m_visits.size()) {
            askAsManyAsMayBe();
            if (std::optional<Servers::Answer> answer = m_servers.answer(nextTime())) take(std::move(*answer));
        }
        return std::move(m_terminals);
    }

  private:
    struct Waiting {
        Clock::time_point until;
        std::size_t server;
    };

    // Those that have begun come first: what they wait for is old the sooner.
    void askAsManyAsMayBe() {
        while (!m_waiting.empty() && m_waiting.front().until <= Clock::now()) {
            m_ready.push_back(m_waiting.front().server);
            m_waiting.pop_front();
        }
        while (!m_servers.isFull() && !(m_ready.empty() && m_begun == m_visits.size())) {
            std::size_t server = m_begun;
            if (m_ready.empty()) {
                ++m_begun;
            } else {
                server = m_ready.front();
                m_ready.pop_front();
            }
            m_servers.ask(server, m_visits[server].reading());
        }
    }

    // When there is something to be done without an answer.
    Clock::time_point nextTime() const {
        const bool hasNone = m_waiting.empty() || m_servers.isFull();
        return hasNone ? Clock::time_point::max() : m_waiting.front().until;
    }

    void take(Servers::Answer answer) {
        SensorVisit& visit = m_visits[answer.server];
        Terminal& terminal = m_terminals[answer.server];
        if (!answer.failure.empty()) {
            terminal.failure = std::move(answer.failure);
            return end(answer.server);
        }
        visit.take(std::move(answer.reply));
        if (visit.isDone()) {
            terminal.isAnswered = true;
            terminal.round = visit.round();
            terminal.failure = failureIn(terminal);
            return end(answer.server);
        }
        // All wait for the same time, so that they stand in order.
        if (visit.isAfterNextReading()) {
            m_waiting.push_back({Clock::now() + NEXT_READING, answer.server});
        } else {
            m_ready.push_back(answer.server);
        }
    }

    void end(std::size_t server) {
        m_visits[server] = SensorVisit("");
        m_progress(++m_done);
    }

    Servers& m_servers;
    const std::function<void(std::size_t)>& m_progress;
    std::vector<SensorVisit> m_visits;
    std::vector<Terminal> m_terminals;
    std::deque<Waiting> m_waiting;    // for a reading
    std::deque<std::size_t> m_ready;  // to be asked again
    std::size_t m_begun = 0;
    std::size_t m_done = 0;
};

}  // namespace

const Sensor* Terminal::worst() const {
    const auto found =
        std::max_element(round.sensors.begin(), round.sensors.end(),
                         [](const Sensor& left, const Sensor& right) { return left.gravity() < right.gravity(); });
    return found == round.sensors.end() || !found->isProblem() ? nullptr : &*found;
}

int Terminal::gravity() const {
    if (round.sensors.empty()) return Sensor().gravity();
    const Sensor* sensor = worst();
    return sensor == nullptr ? 0 : sensor->gravity();
}

std::vector<Terminal> visitTerminals(Servers& servers, const std::string& nameSpace,
                                     const std::function<void(std::size_t)>& progress) {
    return Tour(servers, nameSpace, progress).result();
}

}  // namespace host
