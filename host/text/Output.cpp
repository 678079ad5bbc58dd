#include "text/Output.h"

#include <poll.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <string>

namespace host {

namespace {

std::string complaintOf(int error) {
    return std::string("the output cannot be written: ") + std::strerror(error);
}

}  // namespace

void Output::write(std::string_view text) {
    while (!text.empty()) {
        const ssize_t written = ::write(m_descriptor, text.data(), text.size());
        if (written >= 0) {
            text.remove_prefix(static_cast<std::size_t>(written));
        } else if (errno == EAGAIN) {
            pollfd wanted{m_descriptor, POLLOUT, 0};
            ::poll(&wanted, 1, -1);
        } else if (errno != EINTR) {
            if (errno == EPIPE) throw ReaderGone(complaintOf(EPIPE));
            throw OutputError(complaintOf(errno));
        }
    }
}

void Output::requireReader() const {
    pollfd watched{m_descriptor, 0, 0};
    if (::poll(&watched, 1, 0) > 0 && (watched.revents & (POLLERR | POLLHUP)) != 0)
        throw ReaderGone(complaintOf(EPIPE));
}

bool Output::isTerminal() const {
    return isatty(m_descriptor) == 1;
}

bool Output::takesColour() const {
    const char* refused = std::getenv("NO_COLOR");
    const char* kind = std::getenv("TERM");
    return isTerminal() && (refused == nullptr || *refused == '\0') && kind != nullptr &&
           std::strcmp(kind, "dumb") != 0;
}

Output::Size Output::size() const {
    winsize size{};
    if (ioctl(m_descriptor, TIOCGWINSZ, &size) != 0) return {0, 0};
    return {size.ws_col, size.ws_row};
}

}  // namespace host
