#include "StreamsTo.h"

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>

StreamsTo::StreamsTo(int descriptor)
    : m_output(fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, 0)), m_error(fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, 0)) {
    std::fflush(stdout);
    dup2(descriptor, STDOUT_FILENO);
    dup2(descriptor, STDERR_FILENO);
    close(descriptor);
}

StreamsTo::~StreamsTo() {
    std::fflush(stdout);
    dup2(m_output, STDOUT_FILENO);
    dup2(m_error, STDERR_FILENO);
    close(m_output);
    close(m_error);
}

int StreamsTo::nowhere() {
    return open("/dev/null", O_WRONLY | O_CLOEXEC);
}
