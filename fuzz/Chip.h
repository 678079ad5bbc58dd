// The chip library and the wall clock as the fuzzer wants them: a program that links this has its own CChip and
// CPOSSystem, and its gettimeofday gives the time that was set.
#ifndef ZELSENSORS_FUZZ_CHIP_H
#define ZELSENSORS_FUZZ_CHIP_H

#include <chip.h>

#include <cstdint>
#include <functional>
#include <vector>

namespace chip {

struct Read {
    unsigned handle;
    sscode status;
    int value;
};

struct Answers {
    bool isGrebel = false;
    bool isZan = false;
    sscode initialise = 0;
    sscode enumerate = 0;
    std::vector<unsigned> handles;
    std::function<sscode(unsigned handle, CSensorInformation& information)> information;
    std::function<sscode(unsigned handle, int& value)> read;
    sscode eventLogStatus = 0;
    CSystemEventLog eventLog{};
};

// Owned here; to be changed at will.
Answers& answers();
// The reads since the last call, in order.
std::vector<Read> takeReads();
// How many CChip there are.
int objects();

void setClock(std::int64_t milliseconds);  // since 1970

}  // namespace chip

#endif
