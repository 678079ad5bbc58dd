#include "ProviderOutput.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>

#include "Failure.h"

namespace host {
namespace {

// Above the standard three, also when some of them were closed at the start.
int privateCopy(int descriptor) {
    return fcntl(descriptor, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
}

int opened(const std::string& destination) {
    if (destination == "-") return memfd_create("provider-output", MFD_CLOEXEC);
    const std::string file = destination.empty() ? "/dev/null" : destination;
    return open(file.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_APPEND | O_CLOEXEC, 0644);
}

int openSink(const std::string& destination) {
    const int first = opened(destination);
    const int sink = first < 0 ? -1 : privateCopy(first);
    const int error = errno;
    if (first >= 0) close(first);
    if (sink < 0) {
        const std::string what = destination.empty() ? "/dev/null" : destination;
        throw UsageError("the provider's output cannot go to " + what + ": " + std::strerror(error));
    }
    return sink;
}

void giveBack(int saved, int descriptor) {
    if (saved < 0) {
        close(descriptor);
        return;
    }
    dup2(saved, descriptor);
    close(saved);
}

}  // namespace

ProviderOutput::ProviderOutput(const std::string& destination)
    : m_sink(openSink(destination)),
      m_output(privateCopy(STDOUT_FILENO)),
      m_error(privateCopy(STDERR_FILENO)),
      m_isCollecting(destination == "-") {
    std::fflush(nullptr);
    dup2(m_sink, STDOUT_FILENO);
    dup2(m_sink, STDERR_FILENO);
}

ProviderOutput::~ProviderOutput() {
    // The provider writes to the buffered stream of the process.
    std::fflush(nullptr);
    giveBack(m_output, STDOUT_FILENO);
    giveBack(m_error, STDERR_FILENO);
    close(m_sink);
}

std::string ProviderOutput::collected() const {
    std::string text;
    if (!m_isCollecting) return text;
    std::fflush(nullptr);
    std::array<char, 65536> block{};
    for (;;) {
        const ssize_t count = pread(m_sink, block.data(), block.size(), static_cast<off_t>(text.size()));
        if (count <= 0) return text;
        text.append(block.data(), static_cast<std::size_t>(count));
    }
}

}  // namespace host
