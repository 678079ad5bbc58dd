// What the event log's instance says of the log as a whole.
#ifndef ZELSENSORS_HEALTH_EVENTLOGSTATE_H
#define ZELSENSORS_HEALTH_EVENTLOGSTATE_H

#include <cstddef>
#include <string>

#include "broker/Model.h"

namespace host {

struct EventLogState {
    bool isValid = false;  // also where the instance does not say
    bool isFull = false;
    std::size_t lines = 0;

    static EventLogState of(const broker::Instance& instance);

    bool isProblem() const { return isFull || !isValid; }
    // "3 lines", with ", full" and ", not valid" where it is so.
    std::string text() const;
};

}  // namespace host

#endif
