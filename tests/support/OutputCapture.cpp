#include "OutputCapture.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <iostream>
#include <system_error>

#include "MemoryFile.h"

namespace {

void flushStream(int descriptor) {
    if (descriptor == STDOUT_FILENO) std::cout.flush();
    std::fflush(descriptor == STDOUT_FILENO ? stdout : stderr);
}

}  // namespace

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

OutputCapture::OutputCapture(int descriptor)
    : m_descriptor(descriptor), m_saved(fcntl(descriptor, F_DUPFD_CLOEXEC, 3)), m_file(makeMemoryFile()) {
    flushStream(m_descriptor);
    dup2(m_file, m_descriptor);
}

OutputCapture::~OutputCapture() {
    flushStream(m_descriptor);
    dup2(m_saved, m_descriptor);
    close(m_saved);
    close(m_file);
}

std::string OutputCapture::take() {
    flushStream(m_descriptor);
    return takeContents(m_file);
}
