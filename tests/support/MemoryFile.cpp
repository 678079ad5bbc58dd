#include "MemoryFile.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

int makeMemoryFile() {
    const int file = memfd_create("output", MFD_CLOEXEC);
    if (file < 0 || fcntl(file, F_SETFL, O_APPEND) != 0)
        throw std::system_error(errno, std::generic_category(), "memfd_create");
    return file;
}

std::string takeContents(int file) {
    std::string contents;
    char buffer[4096];
    ssize_t length = 0;
    while ((length = pread(file, buffer, sizeof buffer, static_cast<off_t>(contents.size()))) > 0)
        contents.append(buffer, static_cast<std::size_t>(length));
    if (length < 0 || ftruncate(file, 0) != 0)
        throw std::system_error(errno, std::generic_category(), "captured output");
    return contents;
}
