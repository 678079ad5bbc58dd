#include "WithoutRootsRights.h"

#include <linux/capability.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

namespace {

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
