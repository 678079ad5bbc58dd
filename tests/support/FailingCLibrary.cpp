#include "FailingCLibrary.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <glob.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdarg>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <optional>
#include <thread>

#include "FakeClock.h"
#include "FakeDrives.h"

namespace {

thread_local Function s_failing = Function::Open;
thread_local unsigned s_callsLeft = 0;  // up to and including the one that fails; 0: none fails
thread_local int s_failure = 0;
thread_local std::optional<int> s_setfdFlags;

bool isToFail(Function function) {
    if (function != s_failing || s_callsLeft == 0 || --s_callsLeft > 0) return false;
    errno = s_failure;
    return true;
}

template <typename Real>
Real next(const char* name) {
    return reinterpret_cast<Real>(dlsym(RTLD_NEXT, name));
}

const std::vector<int> OPEN_ERRORS = {EACCES, EBADF,        EBUSY,   EDQUOT, EEXIST,  EFAULT, EFBIG,
                                      EINTR,  EINVAL,       EISDIR,  ELOOP,  EMFILE,  ENFILE, ENODEV,
                                      ENOENT, ENAMETOOLONG, ENOMEM,  ENOSPC, ENOTDIR, ENXIO,  EPERM,
                                      EROFS,  EOPNOTSUPP,   ETXTBSY, EIO,    EAGAIN,  ESTALE, EOVERFLOW};
}  // namespace

const std::vector<int> READ_ERRORS = {EAGAIN, EBADF, EFAULT, EINTR, EINVAL, EIO, EISDIR};
const std::vector<int> WRITE_ERRORS = {EAGAIN, EBADF,  EDESTADDRREQ, EDQUOT, EFAULT, EFBIG,
                                       EINTR,  EINVAL, EIO,          ENOSPC, EPERM,  EPIPE};

const std::vector<FailingFunction>& allFailingFunctions() {
    static const std::vector<FailingFunction> all = {
        {Function::Open, "open", OPEN_ERRORS},
        {Function::Fopen, "fopen", OPEN_ERRORS},
        {Function::Fstat,
         "fstat",
         {EACCES, EBADF, EFAULT, EINVAL, ELOOP, ENAMETOOLONG, ENOENT, ENOMEM, ENOTDIR, EOVERFLOW, EIO}},
        {Function::Getline, "getline", {EINVAL, ENOMEM, EOVERFLOW, EAGAIN, EBADF, EFAULT, EINTR, EIO, EISDIR}},
        {Function::Glob, "glob", {GLOB_NOSPACE, GLOB_ABORTED, GLOB_NOMATCH}},
        {Function::Fcntl,
         "fcntl",
         {EACCES, EAGAIN, EBADF, EBUSY, EDEADLK, EFAULT, EINTR, EINVAL, EMFILE, ENOLCK, EPERM}},
        {Function::Fwrite, "fwrite", WRITE_ERRORS},
        {Function::Fflush, "fflush", WRITE_ERRORS},
        {Function::Ioctl, "ioctl", {EBADF, EFAULT, EINVAL, ENOTTY, EACCES, EINTR, EIO, ENODEV, ENOMEM, EPERM, ETIME}},
        {Function::Gettimeofday, "gettimeofday", {EFAULT, EINVAL, EPERM}},
    };
    return all;
}

FailingCall::FailingCall(Function function, unsigned nth, int error) : m_function(function) {
    if (function == Function::Ioctl) {
        drives::failCall(nth, error);
    } else if (function == Function::Gettimeofday) {
        fakeclock::failCall(nth, error);
    } else {
        s_failing = function;
        s_failure = error;
        s_callsLeft = nth;
    }
}

FailingCall::~FailingCall() {
    drives::failCall(0, 0);
    fakeclock::failCall(0, 0);
    s_callsLeft = 0;
}

bool FailingCall::hasCome() const {
    if (m_function == Function::Ioctl) return !drives::isFailurePending();
    if (m_function == Function::Gettimeofday) return !fakeclock::isFailurePending();
    return s_callsLeft == 0;
}

std::optional<int> lastSetfdFlags() {
    return s_setfdFlags;
}

int nextDescriptor() {
    const int descriptor = dup(STDERR_FILENO);
    close(descriptor);
    return descriptor;
}

std::string withSystemCallRefused(long systemCall, int descriptor, int error, const std::function<void()>& action) {
    sock_filter program[] = {
        BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)),
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, static_cast<unsigned>(systemCall), 0, 3),
        BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, args)),
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, static_cast<unsigned>(descriptor), 0, 1),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ERRNO | static_cast<unsigned>(error)),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW),
    };
    const sock_fprog filter{sizeof program / sizeof program[0], program};
    std::string reason;
    std::thread refused([&] {
        // It holds for this thread alone, and ends with it.
        if (prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) != 0 || prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &filter) != 0) {
            reason = std::string("no filter of system calls: ") + std::strerror(errno);
            return;
        }
        action();
    });
    refused.join();
    return reason;
}

#define FAKED extern "C" __attribute__((visibility("default")))

FAKED int open(const char* path, int flags, ...) {
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = (flags & O_CREAT) != 0 ? va_arg(arguments, mode_t) : 0;
    va_end(arguments);
    if (isToFail(Function::Open)) return -1;
    static const auto real = next<int (*)(const char*, int, ...)>("open");
    return real(path, flags, mode);
}

FAKED FILE* fopen(const char* path, const char* mode) {
    if (isToFail(Function::Fopen)) return nullptr;
    static const auto real = next<FILE* (*)(const char*, const char*)>("fopen");
    return real(path, mode);
}

FAKED int fstat(int descriptor, struct stat* status) noexcept {
    if (isToFail(Function::Fstat)) return -1;
    static const auto real = next<int (*)(int, struct stat*)>("fstat");
    return real(descriptor, status);
}

FAKED ssize_t getline(char** line, std::size_t* capacity, FILE* file) {
    if (isToFail(Function::Getline)) return -1;
    static const auto real = next<ssize_t (*)(char**, std::size_t*, FILE*)>("getline");
    return real(line, capacity, file);
}

// What getline is compiled to where the compiler optimises.
FAKED ssize_t __getdelim(char** line, std::size_t* capacity, int delimiter, FILE* file) {
    if (isToFail(Function::Getline)) return -1;
    static const auto real = next<ssize_t (*)(char**, std::size_t*, int, FILE*)>("__getdelim");
    return real(line, capacity, delimiter, file);
}

FAKED int glob(const char* pattern, int flags, int (*onError)(const char*, int), glob_t* result) noexcept {
    static const auto real = next<int (*)(const char*, int, int (*)(const char*, int), glob_t*)>("glob");
    const int code = real(pattern, flags, onError, result);
    return isToFail(Function::Glob) ? errno : code;
}

FAKED int fcntl(int descriptor, int command, ...) {
    va_list arguments;
    va_start(arguments, command);
    void* argument = va_arg(arguments, void*);
    va_end(arguments);
    if (isToFail(Function::Fcntl)) return -1;
    if (command == F_SETFD) s_setfdFlags = static_cast<int>(reinterpret_cast<long>(argument));
    static const auto real = next<int (*)(int, int, ...)>("fcntl");
    return real(descriptor, command, argument);
}

FAKED std::size_t fwrite(const void* data, std::size_t size, std::size_t count, FILE* file) {
    if (isToFail(Function::Fwrite)) return 0;
    static const auto real = next<std::size_t (*)(const void*, std::size_t, std::size_t, FILE*)>("fwrite");
    return real(data, size, count, file);
}

FAKED int fflush(FILE* file) {
    if (isToFail(Function::Fflush)) return EOF;
    static const auto real = next<int (*)(FILE*)>("fflush");
    return real(file);
}
