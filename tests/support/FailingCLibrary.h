// Failures of the C library: this program's own functions stand before the C library's, also for a library that was
// loaded with dlopen, and pass everything on until one of their calls is to fail. The failures of `ioctl` and
// `gettimeofday` are those of FakeDrives.h and FakeClock.h.
#ifndef ZELSENSORS_TESTS_FAILINGCLIBRARY_H
#define ZELSENSORS_TESTS_FAILINGCLIBRARY_H

#include <functional>
#include <optional>
#include <string>
#include <vector>

enum class Function { Open, Fopen, Fstat, Getline, Glob, Fcntl, Fwrite, Fflush, Ioctl, Gettimeofday };

// A function and how it may fail: errno values, from its manual page; for glob the codes that it answers, whose matches
// stand all the same.
struct FailingFunction {
    Function function;
    std::string name;
    std::vector<int> errors;
};

const std::vector<FailingFunction>& allFailingFunctions();

// Those of the system calls.
extern const std::vector<int> READ_ERRORS;
extern const std::vector<int> WRITE_ERRORS;

// While it lives, the n-th call of the function (1: the first) in this thread fails in that way, and no other.
class FailingCall {
  public:
    FailingCall(Function function, unsigned nth, int error);
    ~FailingCall();
    FailingCall(const FailingCall&) = delete;
    FailingCall& operator=(const FailingCall&) = delete;

    // Whether that call has come.
    bool hasCome() const;

  private:
    Function m_function;
};

// The flags of this thread's last fcntl(F_SETFD), if there was one.
std::optional<int> lastSetfdFlags();

// Runs the action in a thread in which the kernel itself refuses a system call on one descriptor with this errno,
// behind the C library's back. Gives why it cannot be done; empty when it was done.
std::string withSystemCallRefused(long systemCall, int descriptor, int error, const std::function<void()>& action);

// The descriptor that the next file gets.
int nextDescriptor();

#endif
