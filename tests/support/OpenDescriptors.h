// The file descriptors that this process has open.
#ifndef ZELSENSORS_TESTS_OPENDESCRIPTORS_H
#define ZELSENSORS_TESTS_OPENDESCRIPTORS_H

#include <cstddef>
#include <filesystem>
#include <string>
#include <system_error>

// How many lead to a file whose name begins so, a deleted one too; of all, this function's own is one.
inline std::size_t openDescriptors(const std::string& beginning = "") {
    std::size_t count = 0;
    for (const auto& descriptor : std::filesystem::directory_iterator("/proc/self/fd")) {
        std::error_code gone;
        const std::string file = std::filesystem::read_symlink(descriptor, gone);
        if (!gone && file.rfind(beginning, 0) == 0) ++count;
    }
    return count;
}

#endif
