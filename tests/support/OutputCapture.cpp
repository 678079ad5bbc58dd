#include "OutputCapture.h"

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <iostream>

#include "MemoryFile.h"

namespace {

void flushStream(int descriptor) {
    if (descriptor == STDOUT_FILENO) std::cout.flush();
    std::fflush(descriptor == STDOUT_FILENO ? stdout : stderr);
}

}  // namespace

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
