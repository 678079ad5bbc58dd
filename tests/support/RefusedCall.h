// System calls that the kernel refuses, one by its number in the order of the calls: also for a C library that the
// program's own functions do not stand before, such as one in another name space of the loader.
#ifndef ZELSENSORS_TESTS_REFUSEDCALL_H
#define ZELSENSORS_TESTS_REFUSEDCALL_H

#include <functional>
#include <string>

struct Refusal {
    std::string whyImpossible;  // empty when it was done
    bool hasCome = false;       // there were as many calls
};

// Runs the action in a thread of its own, whose n-th such call (1: the first) fails with this errno, and no other.
Refusal refuseCall(int systemCall, unsigned nth, int error, const std::function<void()>& action);

#endif
