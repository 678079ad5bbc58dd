// One event of the log, and the line it is written as.
#ifndef ZELSENSORS_LOG_LOGRECORD_H
#define ZELSENSORS_LOG_LOGRECORD_H

#include <sys/timeb.h>

#include <cstdint>
#include <string>

#include "LogLevel.h"

// Takes the wall-clock time and the ids of process and thread when it is made. Holds a copy of the message.
class LogRecord {
  public:
    LogRecord(LOG_LEVEL level, std::string& message);
    virtual ~LogRecord();

    // Replaces the contents of `line` with, for instance, in local time and with the record's newline:
    //     15/11/2026 10:57:50.042<tab>P[00000a1c] T[f7d3c740]<tab>Info <tab>the message
    void GetLogLine(std::string& line);

    // Each appends its field to what `out` holds.
    void GetTimeString(std::string& out);
    void GetPidString(std::string& out);
    void GetTidString(std::string& out);
    void GetLevelString(std::string& out);  // five characters; nothing for a level that has no name

  protected:
    // The order of these is part of the library's layout.
    LOG_LEVEL m_level;
    std::string m_message;
    struct timeb m_time {};
    std::uint32_t m_tid = 0;  // the low half of pthread_self()
    std::int32_t m_pid = 0;
};

#endif
