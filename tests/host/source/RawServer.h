// A server on the loopback interface that says exactly the bytes it is told to.
#ifndef ZELSENSORS_TESTS_HOST_RAWSERVER_H
#define ZELSENSORS_TESTS_HOST_RAWSERVER_H

#include <atomic>
#include <functional>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

// One client's connection, in the hands of a RawServer's behaviour.
class Connection {
  public:
    explicit Connection(int socket) : m_socket(socket) {}

    // HTTP header and body, as long as its Content-Length says; what came until the end where the client left.
    std::string readRequest();
    // False when the client has gone.
    bool write(std::string_view bytes) const;
    // Until the client or the server's end closes the connection.
    void waitForEnd() const;

  private:
    int m_socket;
    std::string m_rest;
};

// Listens from the start to the end of its life, and handles one connection after the other, which is closed when the
// behaviour returns.
class RawServer {
  public:
    using Behaviour = std::function<void(Connection&)>;

    explicit RawServer(Behaviour behaviour);
    // Reads the request and gives this answer, to each connection.
    explicit RawServer(const std::string& answer);
    ~RawServer();
    RawServer(const RawServer&) = delete;
    RawServer& operator=(const RawServer&) = delete;

    unsigned port() const { return m_port; }
    std::string url() const { return "http://127.0.0.1:" + std::to_string(m_port); }

  private:
    void serve();

    Behaviour m_behaviour;
    int m_listener;
    unsigned m_port;
    std::mutex m_mutex;
    int m_current = -1;  // the connection that is being handled
    bool m_isEnding = false;
    std::thread m_thread;
};

// A port of the loopback interface on which nobody listens.
unsigned closedPort();

// An HTTP answer with status 200 and the right length.
std::string httpAnswer(const std::string& body, const std::string& headers = "Content-Type: application/xml\r\n");

#endif
