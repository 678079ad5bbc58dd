// A library that carries the log, for the tests of loading and unloading.
#include "log.h"

extern "C" __attribute__((visibility("default"))) void logFromModule(const char* message) {
    LogQuick(LOG_ERROR, message);
}
