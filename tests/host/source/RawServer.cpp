#include "RawServer.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdlib>
#include <system_error>

namespace {

[[noreturn]] void failWith(const char* call) {
    throw std::system_error(errno, std::generic_category(), call);
}

int boundSocket(unsigned& port) {
    const int socket = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (socket < 0) failWith("socket");
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t length = sizeof(address);
    auto* generic = reinterpret_cast<sockaddr*>(&address);
    if (bind(socket, generic, length) != 0) failWith("bind");
    if (getsockname(socket, generic, &length) != 0) failWith("getsockname");
    port = ntohs(address.sin_port);
    return socket;
}

std::size_t lengthIn(const std::string& head) {
    const std::size_t at = head.find("Content-Length: ");
    return at == std::string::npos ? 0 : std::strtoul(head.c_str() + at + 16, nullptr, 10);
}

}  // namespace

std::string Connection::readRequest() {
    std::array<char, 65536> block{};
    for (;;) {
        const std::size_t head = m_rest.find("\r\n\r\n");
        if (head != std::string::npos) {
            const std::size_t size = head + 4 + lengthIn(m_rest.substr(0, head + 2));
            if (m_rest.size() >= size) {
                const std::string request = m_rest.substr(0, size);
                m_rest.erase(0, size);
                return request;
            }
        }
        const ssize_t count = recv(m_socket, block.data(), block.size(), 0);
        if (count <= 0) return std::move(m_rest);
        m_rest.append(block.data(), static_cast<std::size_t>(count));
    }
}

bool Connection::write(std::string_view bytes) const {
    while (!bytes.empty()) {
        const ssize_t count = send(m_socket, bytes.data(), bytes.size(), MSG_NOSIGNAL);
        if (count < 0) return false;
        bytes.remove_prefix(static_cast<std::size_t>(count));
    }
    return true;
}

void Connection::waitForEnd() const {
    std::array<char, 4096> block{};
    while (recv(m_socket, block.data(), block.size(), 0) > 0) continue;
}

RawServer::RawServer(Behaviour behaviour) : m_behaviour(std::move(behaviour)), m_listener(boundSocket(m_port)) {
    if (listen(m_listener, 16) != 0) failWith("listen");
    m_thread = std::thread([this] { serve(); });
}

RawServer::RawServer(const std::string& answer)
    : RawServer([answer](Connection& connection) {
          connection.readRequest();
          connection.write(answer);
      }) {}

RawServer::~RawServer() {
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_isEnding = true;
        shutdown(m_listener, SHUT_RDWR);
        if (m_current >= 0) shutdown(m_current, SHUT_RDWR);
    }
    m_thread.join();
    close(m_listener);
}

void RawServer::serve() {
    for (;;) {
        const int socket = accept4(m_listener, nullptr, nullptr, SOCK_CLOEXEC);
        {
            const std::lock_guard<std::mutex> lock(m_mutex);
            if (m_isEnding || socket < 0) {
                if (socket >= 0) close(socket);
                return;
            }
            m_current = socket;
        }
        Connection connection(socket);
        m_behaviour(connection);
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_current = -1;
        // The client reads to the end before the connection closes, whatever else it has sent.
        shutdown(socket, SHUT_WR);
        close(socket);
    }
}

unsigned closedPort() {
    unsigned port = 0;
    close(boundSocket(port));
    return port;
}

std::string httpAnswer(const std::string& body, const std::string& headers) {
    return "HTTP/1.1 200 OK\r\n" + headers + "Content-Length: " + std::to_string(body.size()) + "\r\n\r\n" + body;
}
