#include "health/EventLog.h"

#include "health/NewLines.h"

namespace host {
namespace {

using broker::Instance;
using broker::Value;

std::optional<bool> flagOf(const Instance& instance, const char* property) {
    const Value* value = instance.findProperty(property);
    if (value == nullptr || value->isNull || value->type != CMPI_boolean) return std::nullopt;
    return value->unsignedNumber != 0;
}

}  // namespace

EventLog EventLog::of(const Instance& instance) {
    EventLog log;
    log.isValid = flagOf(instance, "LogValid");
    log.isFull = flagOf(instance, "LogFull");
    const Value* lines = instance.findProperty("LogLines");
    if (lines == nullptr) return log;
    for (const Value& line : lines->elements) log.lines.push_back(line.text);
    return log;
}

EventLogRound askForEventLog(Source& source, const broker::ObjectPath& classPath) {
    const broker::Reply reply = source.enumerateInstances(classPath);
    EventLogRound round;
    round.status = reply.status;
    if (reply.status.rc == CMPI_RC_OK && reply.instances.empty()) {
        round.status = {CMPI_RC_ERR_NOT_FOUND, "the answer is empty"};
    } else if (reply.status.rc == CMPI_RC_OK) {
        round.log = EventLog::of(reply.instances.front());
    }
    return round;
}

EventLogRounds::EventLogRounds(Source& source, const std::string& nameSpace)
    : m_source(source), m_classPath{"", nameSpace, EVENT_LOG_CLASS, {}} {}

EventLogRound EventLogRounds::next() {
    EventLogRound round = askForEventLog(m_source, m_classPath);
    if (round.log) count(*round.log);
    if (m_before) round.newLines = m_newLines;
    return round;
}

void EventLogRounds::count(const EventLog& log) {
    if (!log.isValid.value_or(true)) return;
    if (m_before) m_newLines += log.lines.size() - firstNewLine(*m_before, log.lines);
    m_before = log.lines;
}

}  // namespace host
