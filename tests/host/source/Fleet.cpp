#include "Fleet.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/epoll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <system_error>

namespace {

int required(int result, const char* call) {
    if (result < 0) throw std::system_error(errno, std::generic_category(), call);
    return result;
}

int listenerAtAnyPort(unsigned& port) {
    const int listener = required(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0), "socket");
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t length = sizeof(address);
    auto* generic = reinterpret_cast<sockaddr*>(&address);
    required(bind(listener, generic, length), "bind");
    required(getsockname(listener, generic, &length), "getsockname");
    required(listen(listener, 16), "listen");
    port = ntohs(address.sin_port);
    return listener;
}

void watch(int events, int descriptor) {
    epoll_event event{};
    event.events = EPOLLIN;
    event.data.fd = descriptor;
    required(epoll_ctl(events, EPOLL_CTL_ADD, descriptor, &event), "epoll_ctl");
}

// Header and body; empty as long as they are not complete.
std::string requestIn(const std::string& received) {
    const std::size_t head = received.find("\r\n\r\n");
    if (head == std::string::npos) return "";
    const std::size_t at = received.find("Content-Length: ");
    const std::size_t size = at < head ? std::strtoul(received.c_str() + at + 16, nullptr, 10) : 0;
    return received.size() < head + 4 + size ? "" : received.substr(0, head + 4 + size);
}

bool hasEnded(int socket) {
    char byte = 0;
    return recv(socket, &byte, 1, MSG_PEEK | MSG_DONTWAIT) == 0;
}

}  // namespace

Fleet::Fleet(std::size_t servers, Behaviour behaviour, std::size_t mostOpen)
    : m_behaviour(std::move(behaviour)),
      m_mostOpen(mostOpen),
      m_ports(servers),
      m_events(required(epoll_create1(EPOLL_CLOEXEC), "epoll_create1")),
      m_ending(required(eventfd(0, EFD_CLOEXEC), "eventfd")),
      m_connections(servers),
      m_requests(servers),
      m_lastRequests(servers) {
    for (std::size_t i = 0; i < servers; ++i) {
        m_listeners.push_back(listenerAtAnyPort(m_ports[i]));
        m_serverOfListener[m_listeners.back()] = i;
        watch(m_events, m_listeners.back());
    }
    watch(m_events, m_ending);
    m_thread = std::thread([this] { serve(); });
}

Fleet::~Fleet() {
    const std::uint64_t one = 1;
    if (write(m_ending, &one, sizeof(one)) < 0) std::abort();
    m_thread.join();
    for (const int listener : m_listeners) close(listener);
    for (const auto& [socket, client] : m_clients) close(socket);
    close(m_ending);
    close(m_events);
}

std::string Fleet::url(std::size_t server) const {
    return "http://127.0.0.1:" + std::to_string(m_ports.at(server));
}

std::string Fleet::list() const {
    std::string text;
    for (std::size_t i = 0; i < m_ports.size(); ++i) text += url(i) + '\n';
    return text;
}

std::size_t Fleet::connectionsOf(std::size_t server) const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_connections.at(server);
}

std::size_t Fleet::requestsOf(std::size_t server) const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_requests.at(server);
}

std::string Fleet::lastRequestOf(std::size_t server) const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_lastRequests.at(server);
}

std::size_t Fleet::mostOpenAtOnce() const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_mostOpenAtOnce;
}

void Fleet::serve() {
    std::array<epoll_event, 64> happened{};
    for (;;) {
        const int timeout = isAwaited() ? 1 : -1;
        const int count = epoll_wait(m_events, happened.data(), static_cast<int>(happened.size()), timeout);
        for (int i = 0; i < count; ++i) {
            const int descriptor = happened.at(static_cast<std::size_t>(i)).data.fd;
            if (descriptor == m_ending) return;
            const auto listener = m_serverOfListener.find(descriptor);
            if (listener != m_serverOfListener.end()) {
                accept(listener->second);
            } else if (m_clients.count(descriptor) != 0) {
                read(descriptor);
            }
        }
        answerAll();
    }
}

void Fleet::accept(std::size_t server) {
    const int socket = accept4(m_listeners.at(server), nullptr, nullptr, SOCK_CLOEXEC);
    if (socket < 0) return;
    m_clients[socket] = {server, "", false};
    // The client may have closed others that we have not read to their ends.
    const auto limit = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    do {
        closeEnded();
    } while (m_clients.size() > m_mostOpen && std::chrono::steady_clock::now() < limit);
    watch(m_events, socket);
    const std::lock_guard<std::mutex> lock(m_mutex);
    ++m_connections.at(server);
    m_mostOpenAtOnce = std::max(m_mostOpenAtOnce, m_clients.size());
}

void Fleet::read(int socket) {
    std::array<char, 65536> block{};
    Client& client = m_clients.at(socket);
    const ssize_t count = recv(socket, block.data(), block.size(), MSG_DONTWAIT);
    if (count < 0 && errno == EAGAIN) return;  // the event was for one before it with the same number
    if (count <= 0) return end(socket);
    client.received.append(block.data(), static_cast<std::size_t>(count));
    if (client.hasRequest || requestIn(client.received).empty()) return;
    client.hasRequest = true;
    const std::lock_guard<std::mutex> lock(m_mutex);
    ++m_requests.at(client.server);
    m_lastRequests.at(client.server) = requestIn(client.received);
}

bool Fleet::isAwaited() const {
    return std::any_of(m_clients.begin(), m_clients.end(), [](const auto& each) { return each.second.hasRequest; });
}

// Again as long as one answer may be what another waits for.
void Fleet::answerAll() {
    for (bool hasAnswered = true; hasAnswered;) {
        hasAnswered = false;
        for (auto each = m_clients.begin(); each != m_clients.end();) {
            const auto current = each++;
            if (current->second.hasRequest && answer(current->first, current->second)) hasAnswered = true;
        }
    }
}

bool Fleet::answer(int socket, Client& client) {
    const std::string request = requestIn(client.received);
    const std::optional<Deed> deed = m_behaviour(client.server, request.substr(request.find("\r\n\r\n") + 4));
    if (!deed) return false;
    client.received.erase(0, request.size());
    client.hasRequest = false;
    send(socket, deed->bytes.data(), deed->bytes.size(), MSG_NOSIGNAL);
    if (deed->closes) end(socket);
    return true;
}

void Fleet::closeEnded() {
    for (auto each = m_clients.begin(); each != m_clients.end();) {
        const auto current = each++;
        if (hasEnded(current->first)) end(current->first);
    }
}

void Fleet::end(int socket) {
    m_clients.erase(socket);
    shutdown(socket, SHUT_WR);
    close(socket);
}
