// The event log of a terminal, asked in rounds.
#ifndef ZELSENSORS_HEALTH_EVENTLOG_H
#define ZELSENSORS_HEALTH_EVENTLOG_H

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "broker/Model.h"
#include "source/Source.h"

namespace host {

// As the provider gave it; bytes as they came.
struct EventLog {
    std::optional<bool> isValid;  // none: the provider did not say
    std::optional<bool> isFull;
    std::vector<std::string> lines;  // from the oldest to the newest

    static EventLog of(const broker::Instance& instance);
};

struct EventLogRound {
    std::optional<EventLog> log;  // none: it could not be had, see the status
    broker::Status status;        // CMPI_RC_ERR_NOT_FOUND also for an answer without an instance
    // The lines that have come since the first round, as far as rounds could see them. None until a log has been read
    // that is not said to be invalid: what such a log holds is not counted.
    std::optional<std::uint64_t> newLines;
};

// Asks once for the event log, a class path with a namespace; gives no newLines. Throws what the source throws.
EventLogRound askForEventLog(Source& source, const broker::ObjectPath& classPath);

class EventLogRounds {
  public:
    // Asks the source for the event log's class in the namespace; the source must outlive this object.
    EventLogRounds(Source& source, const std::string& nameSpace);

    // Asks once. After status 16 nothing is restarted: whoever asks for the sensors first has done it. Throws what the
    // source throws.
    EventLogRound next();

  private:
    void count(const EventLog& log);

    Source& m_source;
    broker::ObjectPath m_classPath;
    std::optional<std::vector<std::string>> m_before;  // the lines of the last round that was counted
    std::uint64_t m_newLines = 0;
};

}  // namespace host

#endif
