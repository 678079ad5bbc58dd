#include "cli/ProviderOutput.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>

#include "cli/Failure.h"

namespace host {
namespace {

// Above the standard three, also when some of them were closed at the start.
int privateCopy(int descriptor) {
    return fcntl(descriptor, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
}

bool isCollected(const std::string& destination) {
    return destination.empty() || destination == "-";
}

int opened(const std::string& destination) {
    if (isCollected(destination)) return memfd_create("provider-output", MFD_CLOEXEC);
    return open(destination.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_APPEND | O_CLOEXEC, 0644);
}

int openSink(const std::string& destination) {
    const int first = opened(destination);
    const int sink = first < 0 ? -1 : privateCopy(first);
    const int error = errno;
    if (first >= 0) close(first);
    if (sink < 0) {
        const std::string what = isCollected(destination) ? "memory" : destination;
        throw UsageError("the provider's output cannot go to " + what + ": " + std::strerror(error));
    }
    return sink;
}

// From here on; what is still buffered goes where it went so far.
void sendTo(int sink) {
    std::fflush(nullptr);
    dup2(sink, STDOUT_FILENO);
    dup2(sink, STDERR_FILENO);
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
    : m_isCollecting(isCollected(destination)),
      m_isForgetful(destination.empty()),
      m_sink(openSink(destination)),
      m_output(privateCopy(STDOUT_FILENO)),
      m_error(privateCopy(STDERR_FILENO)) {
    sendTo(m_sink);
}

ProviderOutput::~ProviderOutput() {
    // The provider writes to the buffered stream of the process.
    std::fflush(nullptr);
    giveBack(m_output, STDOUT_FILENO);
    giveBack(m_error, STDERR_FILENO);
    close(m_sink);
}

void ProviderOutput::endStart() {
    if (m_isForgetful) m_start = collected();
    forget();
}

void ProviderOutput::forget() {
    if (!m_isForgetful) return;
    std::fflush(nullptr);
    // All descriptors of the sink share its position.
    if (ftruncate(m_sink, 0) == 0) lseek(m_sink, 0, SEEK_SET);
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
