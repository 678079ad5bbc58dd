// What was found by whoever looks for the cause of missing or wrong sensors.
#ifndef ZELSENSORS_SOURCE_FINDING_H
#define ZELSENSORS_SOURCE_FINDING_H

#include <string>

namespace host {

struct Finding {
    std::string area;     // what it is about, in a word or two
    std::string subject;  // which one
    std::string text;
    std::string advice;  // what to do; empty where nothing is wrong
};

}  // namespace host

#endif
