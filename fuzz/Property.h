// What every run of a fuzzer must satisfy.
#ifndef ZELSENSORS_FUZZ_PROPERTY_H
#define ZELSENSORS_FUZZ_PROPERTY_H

#include <string>

// Says on the standard error of the process's start what does not hold, and aborts: the fuzzer then keeps the input.
[[noreturn]] void fail(const std::string& what);

inline void require(bool holds, const char* what) {
    if (!holds) fail(what);
}

// Shows both sides.
void requireSame(const std::string& actual, const std::string& expected, const char* what);
void requireSame(long long actual, long long expected, const char* what);

#endif
