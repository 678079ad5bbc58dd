// The wall clock in the test's hand: this program's own `gettimeofday` takes the place of the C library's, for the code
// under test too. Until set() is called the real time is given.
#ifndef ZELSENSORS_TESTS_FAKECLOCK_H
#define ZELSENSORS_TESTS_FAKECLOCK_H

#include <sys/time.h>

#include <vector>

namespace fakeclock {

void set(timeval now);
void advanceMilliseconds(long milliseconds);  // from the value set
void failWith(int error);                     // every call answers -1 with this errno, until set() or useReal()
void failCall(unsigned nth, int error);       // one call answers so (1: the next); 0: none does any longer
bool isFailurePending();                      // failCall()'s call has not come yet
void useReal();

// What `ask` gives so many milliseconds from the value set, one after the other; the times may go back.
template <typename Ask>
auto at(const std::vector<long>& times, const Ask& ask) {
    std::vector<decltype(ask())> answers;
    long now = 0;
    for (const long time : times) {
        advanceMilliseconds(time - now);
        now = time;
        answers.push_back(ask());
    }
    return answers;
}

}  // namespace fakeclock

#endif
