#include "health/LogFollower.h"

#include <utility>

#include "health/EventLog.h"
#include "health/NewLines.h"
#include "source/Request.h"

namespace host {

LogFollower::LogFollower(Source& source, const std::string& nameSpace, const LineFilter& filter,
                         const std::optional<std::vector<std::string>>& seen)
    : m_source(source), m_classPath{"", nameSpace, EVENT_LOG_CLASS, {}}, m_filter(filter) {
    if (!seen) return;
    m_seen = *seen;
    m_filter.last.reset();
}

LogFollower::Look LogFollower::next() {
    EventLogRound round = askForEventLog(m_source, m_classPath);
    if (round.status.rc == CMPI_RC_ERR_METHOD_NOT_AVAILABLE && m_source.restart()) {
        round = askForEventLog(m_source, m_classPath);
    }
    Look look;
    look.status = round.status;
    if (!round.log) return look;
    look.isValid = round.log->isValid.value_or(true);
    if (!look.isValid) return look;
    std::vector<std::string>& lines = round.log->lines;
    look.hasChanged = lines != m_seen;
    const auto first = static_cast<std::ptrdiff_t>(firstNewLine(m_seen, lines));
    look.lines = wantedLines({lines.begin() + first, lines.end()}, m_filter);
    m_filter.last.reset();
    m_seen = std::move(lines);
    return look;
}

}  // namespace host
