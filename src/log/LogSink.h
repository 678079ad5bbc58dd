// The one sink of the process, and how long it lives.
//
// It is made by the first call, and stays to the end of the process: the host's other threads and its exit handlers may
// log to the last. Only when the library is unloaded before that is it deleted, so that its file does not stay open.
#ifndef ZELSENSORS_LOG_LOGSINK_H
#define ZELSENSORS_LOG_LOGSINK_H

#include "LogHandler.h"

// Null until the first call. Threads read it without a lock: through logHandler(), never directly.
extern LogHandler* s_logHandler;

// Makes the sink unless another thread has just made it, and reports that on standard output. What its constructor
// throws passes to the caller; the next call tries again.
LogHandler& createLogHandler();

inline LogHandler& logHandler() {
    LogHandler* handler = __atomic_load_n(&s_logHandler, __ATOMIC_ACQUIRE);
    return handler != nullptr ? *handler : createLogHandler();
}

#endif
