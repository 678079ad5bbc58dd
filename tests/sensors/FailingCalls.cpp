#include "FailingCalls.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <glob.h>
#include <linux/capability.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <cstdarg>
#include <system_error>

namespace {

std::optional<int> globCode;
std::optional<int> setfdError;
std::optional<int> setfdFlags;

struct Capabilities {
    __user_cap_header_struct header{_LINUX_CAPABILITY_VERSION_3, 0};
    __user_cap_data_struct data[2]{};

    void call(long number) {
        if (syscall(number, &header, data) != 0) {
            throw std::system_error(errno, std::generic_category(), "capabilities");
        }
    }
};

}  // namespace

namespace failing {

void globAnswers(int code) {
    globCode = code;
}

void setfdFailsWith(int error) {
    setfdError = error;
}

std::optional<int> lastSetfdFlags() {
    return setfdFlags;
}

WithoutRootsRights::WithoutRootsRights() {
    Capabilities capabilities;
    capabilities.call(SYS_capget);
    for (int i = 0; i < 2; ++i) {
        m_effective[i] = capabilities.data[i].effective;
        capabilities.data[i].effective = 0;
    }
    capabilities.call(SYS_capset);
}

WithoutRootsRights::~WithoutRootsRights() {
    Capabilities capabilities;
    capabilities.call(SYS_capget);
    for (int i = 0; i < 2; ++i) capabilities.data[i].effective = m_effective[i];
    capabilities.call(SYS_capset);
}

}  // namespace failing

extern "C" __attribute__((visibility("default"))) int glob(const char* pattern, int flags,
                                                           int (*onError)(const char*, int), glob_t* result) noexcept {
    using Glob = int (*)(const char*, int, int (*)(const char*, int), glob_t*);
    static const Glob real = reinterpret_cast<Glob>(dlsym(RTLD_NEXT, "glob"));
    const int code = real(pattern, flags, onError, result);
    return globCode.value_or(code);
}

extern "C" __attribute__((visibility("default"))) int fcntl(int descriptor, int command, ...) {
    va_list arguments;
    va_start(arguments, command);
    void* argument = va_arg(arguments, void*);
    va_end(arguments);
    if (command == F_SETFD) {
        setfdFlags = static_cast<int>(reinterpret_cast<long>(argument));
        if (setfdError.has_value()) {
            errno = *setfdError;
            return -1;
        }
    }
    using Fcntl = int (*)(int, int, ...);
    static const Fcntl real = reinterpret_cast<Fcntl>(dlsym(RTLD_NEXT, "fcntl"));
    return real(descriptor, command, argument);
}
