#include "AnsweringDrives.h"

#include <linux/nvme_ioctl.h>
#include <sys/ioctl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cstdarg>
#include <fstream>
#include <string>

void makeDrives(int count) {
    for (int number = 0; number < count; ++number) std::ofstream("/dev/nvme" + std::to_string(number)).flush();
}

extern "C" __attribute__((visibility("default"))) int ioctl(int descriptor, unsigned long request, ...) noexcept {
    va_list arguments;
    va_start(arguments, request);
    void* argument = va_arg(arguments, void*);
    va_end(arguments);
    const int answer = static_cast<int>(syscall(SYS_ioctl, descriptor, request, argument));
    if (request == NVME_IOCTL_ID) return 1;
    return request == NVME_IOCTL_ADMIN_CMD ? 0 : answer;
}
