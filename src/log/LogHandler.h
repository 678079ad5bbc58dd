// Where log records end up.
#ifndef ZELSENSORS_LOG_LOGHANDLER_H
#define ZELSENSORS_LOG_LOGHANDLER_H

#include "LogLevel.h"

class LogRecord;

// A sink. The order of the virtual operations is part of the library's layout.
class LogHandler {
  public:
    virtual ~LogHandler() = default;

    // Writes the record, whatever its level: the front end has compared the levels already.
    virtual void Log(LogRecord& record) = 0;

    // The highest level that is to be handed to Log().
    virtual LOG_LEVEL GetLevel() = 0;
};

#endif
