#include "cli/Metrics.h"

#include <utility>

#include "cli/Failure.h"
#include "source/Answer.h"
#include "text/Output.h"

namespace host {
namespace {

using Clock = Ending::Clock;

// What the call gives, and how long it took.
template <typename Call>
auto timed(std::chrono::duration<double>& duration, Call call) {
    const Clock::time_point start = Clock::now();
    auto result = call();
    duration = Clock::now() - start;
    return result;
}

// What there is to report; empty where the page is in the file.
std::string replaced(const ReplacedFile& file, const std::string& page) {
    try {
        file.replace(page);
        return "";
    } catch (const OutputError& failure) {
        std::string text = failure.what();
        try {
            file.remove();
        } catch (const OutputError& second) {
            text += std::string("; ") + second.what();
        }
        return text;
    }
}

class Publishing {
  public:
    Publishing(MetricsRounds& rounds, const ReplacedFile& file, const TroubleListener& listener)
        : m_rounds(rounds),
          m_file(file),
          m_fileTrouble([&listener](const std::string& text) {
              listener.line(text.empty() ? "the page is written again" : text);
          }),
          m_answerTrouble([this, &listener](const std::string& text) {
              text.empty() ? listener.line("the provider answers again") : listener.failure(*m_page.failure);
          }) {}

    void round(Ending& ending) {
        m_page = m_rounds.next();
        m_answerTrouble.now(m_page.failure ? statusText(*m_page.failure) : "");
        // Who asked for the end may have removed the file, or counts on finding it removed soon.
        if (ending.isAskedFor()) return;
        const std::string trouble = replaced(m_file, m_page.text);
        if (m_isFirst && !trouble.empty()) throw OutputError(trouble);
        m_isFirst = false;
        m_fileTrouble.now(trouble);
    }

  private:
    MetricsRounds& m_rounds;
    const ReplacedFile& m_file;
    MetricsRounds::Page m_page;
    Trouble m_fileTrouble;
    Trouble m_answerTrouble;
    bool m_isFirst = true;
};

}  // namespace

MetricsRounds::MetricsRounds(Source& source, const std::string& nameSpace, const MetricsChoice& choice)
    : m_sensors(source, nameSpace), m_eventLog(source, nameSpace), m_pages(choice) {}

MetricsRounds::Page MetricsRounds::next() {
    MetricsRound round;
    round.sensors = timed(round.sensorsDuration, [this] { return m_sensors.next(); });
    round.eventLog = timed(round.eventLogDuration, [this] { return m_eventLog.next(); });
    Page page;
    page.text = m_pages.next(round);
    for (const broker::Status& status : {round.sensors.status, round.eventLog.status}) {
        if (status.rc != CMPI_RC_OK && !page.failure) page.failure = status;
    }
    return page;
}

PublishedFile::~PublishedFile() {
    if (!m_isKept) m_file.removeSilently();
}

void publishMetrics(MetricsRounds& rounds, std::chrono::nanoseconds interval, const ReplacedFile& file,
                    const TroubleListener& listener) {
    // Long enough for any request that is not stuck, short enough for who waits for the end.
    constexpr std::chrono::seconds grace(2);
    Ending ending(grace, [&file] {
        file.removeSilently();
        return ExitCode::Fine;
    });
    Publishing publishing(rounds, file, listener);
    const Clock::time_point start = Clock::now();
    do {
        publishing.round(ending);
    } while (ending.waitUntil(nextMultiple(start, interval, Clock::now())));
}

}  // namespace host
