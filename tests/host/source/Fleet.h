// Many HTTP servers on the loopback interface, all served by one thread, which counts what they see.
#ifndef ZELSENSORS_TESTS_HOST_FLEET_H
#define ZELSENSORS_TESTS_HOST_FLEET_H

#include <cstddef>
#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

class Fleet {
  public:
    struct Deed {
        std::string bytes;
        bool closes = false;  // the connection, behind the bytes
    };
    // What a server does when a request has come, given its body. Nothing: not yet; it is asked again whenever
    // something else has happened, and every millisecond. In the fleet's thread.
    using Behaviour = std::function<std::optional<Deed>(std::size_t server, const std::string& body)>;

    // Listens from the start to the end of its life. `mostOpen` is how many connections its client should have open at
    // a time: where there are more, a new one waits until the client has closed others, for ten seconds at most.
    Fleet(std::size_t servers, Behaviour behaviour, std::size_t mostOpen);
    ~Fleet();
    Fleet(const Fleet&) = delete;
    Fleet& operator=(const Fleet&) = delete;

    std::string url(std::size_t server) const;
    // The URLs of all, one in a line.
    std::string list() const;

    std::size_t connectionsOf(std::size_t server) const;  // so far
    std::size_t requestsOf(std::size_t server) const;
    std::string lastRequestOf(std::size_t server) const;  // with its header
    std::size_t mostOpenAtOnce() const;

  private:
    struct Client {
        std::size_t server;
        std::string received;
        bool hasRequest = false;  // which is not answered yet
    };

    void serve();
    void accept(std::size_t server);
    void read(int socket);
    bool isAwaited() const;
    void answerAll();
    bool answer(int socket, Client& client);
    void closeEnded();
    void end(int socket);

    Behaviour m_behaviour;
    std::size_t m_mostOpen;
    std::vector<int> m_listeners;
    std::vector<unsigned> m_ports;
    std::map<int, std::size_t> m_serverOfListener;
    std::map<int, Client> m_clients;
    int m_events;
    int m_ending;  // becomes readable
    mutable std::mutex m_mutex;
    std::vector<std::size_t> m_connections;
    std::vector<std::size_t> m_requests;
    std::vector<std::string> m_lastRequests;
    std::size_t m_mostOpenAtOnce = 0;
    std::thread m_thread;
};

#endif
