// How severe a message is, and how much the sink lets through: the same scale for both.
#ifndef ZELSENSORS_LOG_LOGLEVEL_H
#define ZELSENSORS_LOG_LOGLEVEL_H

// A smaller number is more severe. The numbers are those of the key "Level" in /etc/tarn/log.conf.
enum LOG_LEVEL : int {
    LOG_OFF = 0,    // no caller uses it for a message; as the sink's level it lets only messages of this level through
    LOG_ERROR = 1,  // something failed
    LOG_INFO = 2,   // milestones
    LOG_DEBUG = 3,  // entry into operations, values on the way
    LOG_TRACE = 4   // the finest detail
};

#endif
