// Many object managers, asked at the same time.
#ifndef ZELSENSORS_SOURCE_SERVERS_H
#define ZELSENSORS_SOURCE_SERVERS_H

#include <cstddef>
#include <deque>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "broker/Model.h"
#include "source/CimXmlWriter.h"
#include "source/HttpMany.h"

namespace host {

// A request that reads. `object` is the class's path, or of Get the instance's.
struct Reading {
    enum class Operation { Names, Instances, Get };
    Operation operation = Operation::Instances;
    broker::ObjectPath object;
};

// Object managers by their places in a list, asked by CIM-XML over HTTP; see Server for what their answers are.
class Servers {
  public:
    using Clock = HttpMany::Clock;
    using Warning = std::function<void(const std::string&)>;

    // More than any desk needs, and few for a network and for the descriptors that a process has.
    static constexpr std::size_t MOST_AT_ONCE = 64;

    // `urls` are in the form of serverUrl(); how they are asked is the same for all, and the access's URL is not looked
    // at. `warn` gets what people should know of answers that can be shown all the same, once of each server. Throws
    // ServerError where libcurl does not start.
    Servers(std::vector<std::string> urls, const ServerAccess& access, Warning warn);

    const std::vector<std::string>& urls() const { return m_urls; }

    // MOST_AT_ONCE requests are under way, or as many answers have come that nobody has taken.
    bool isFull() const { return m_http.isFull() || m_came.size() >= MOST_AT_ONCE; }

    // Sends a request; not where isFull(), and not to a server whose answer has not come.
    void ask(std::size_t server, const Reading& reading);

    struct Answer {
        std::size_t server;
        broker::Reply reply;
        std::string failure;  // not empty where no usable answer came: a sentence, see ServerError
    };
    // One that has come; waits for it, but not longer than until then. Where several have come, the others are read
    // later, so that the next requests can be sent first: servers answer while answers are read.
    std::optional<Answer> answer(Clock::time_point until);

  private:
    Answer answerOf(HttpMany::Ended ended);

    std::vector<std::string> m_urls;
    ServerAccess m_access;
    Warning m_warn;
    HttpMany m_http;
    std::map<std::size_t, CimXmlRequest> m_requests;  // under way, by server
    std::deque<Answer> m_ready;                       // of requests that cannot be sent
    std::deque<HttpMany::Ended> m_came;               // not read yet
    std::set<std::size_t> m_warned;
    unsigned m_lastMessage = 1000;
};

}  // namespace host

#endif
