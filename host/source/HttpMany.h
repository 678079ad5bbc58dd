// HTTP to many servers at once, by libcurl's multi interface.
#ifndef ZELSENSORS_SOURCE_HTTPMANY_H
#define ZELSENSORS_SOURCE_HTTPMANY_H

#include <chrono>
#include <cstddef>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "source/Http.h"
#include "source/HttpHandle.h"

namespace host {

// No more connections are open at any time than exchanges may go on at a time. A connection that is not used is kept
// until that number needs its place, so that a server that is asked again soon is asked on the same one.
class HttpMany {
  public:
    using Clock = std::chrono::steady_clock;

    // How all servers are asked; its URL is not looked at. Throws ServerError where libcurl does not start.
    HttpMany(const ServerAccess& access, std::size_t mostAtOnce);
    ~HttpMany();
    HttpMany(const HttpMany&) = delete;
    HttpMany& operator=(const HttpMany&) = delete;

    // As many exchanges go on as may.
    bool isFull() const { return m_running.size() == m_mostAtOnce; }

    // Begins an exchange with the server of that address; not where isFull(). Throws ServerError.
    void post(std::size_t tag, const std::string& url, HttpRequest request);

    struct Ended {
        std::size_t tag;
        HttpAnswer answer;
        std::string failure;  // where it is not empty no usable answer came: a sentence, see ServerError
    };
    // Those that have ended since; waits for one, but not longer than until then.
    std::vector<Ended> wait(Clock::time_point until);

  private:
    struct Exchange {
        std::unique_ptr<HttpHandle> handle;
        std::size_t tag;
    };
    struct MultiCloser {
        void operator()(CURLM* multi) const { curl_multi_cleanup(multi); }
    };

    std::vector<Ended> takeEnded();

    ServerAccess m_access;
    std::size_t m_mostAtOnce;
    std::vector<std::unique_ptr<HttpHandle>> m_idle;
    std::unique_ptr<CURLM, MultiCloser> m_multi;
    std::map<CURL*, Exchange> m_running;
};

}  // namespace host

#endif
