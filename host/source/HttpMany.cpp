#include "source/HttpMany.h"

#include <algorithm>
#include <utility>

namespace host {
namespace {

void require(CURLMcode code) {
    if (code != CURLM_OK) throw ServerError(std::string("HTTP fails here: ") + curl_multi_strerror(code));
}

// Up, or it would be looked at again and again before its time.
int millisecondsUntil(HttpMany::Clock::time_point time) {
    constexpr std::chrono::milliseconds longest{60000};
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(time - HttpMany::Clock::now());
    return static_cast<int>(std::clamp(left, std::chrono::milliseconds{0}, longest).count());
}

}  // namespace

HttpMany::HttpMany(const ServerAccess& access, std::size_t mostAtOnce) : m_access(access), m_mostAtOnce(mostAtOnce) {
    // The first handle starts libcurl.
    m_idle.push_back(std::make_unique<HttpHandle>(access));
    m_multi.reset(curl_multi_init());
    if (!m_multi) throw ServerError("HTTP is not available");
    require(curl_multi_setopt(m_multi.get(), CURLMOPT_MAX_TOTAL_CONNECTIONS, static_cast<long>(mostAtOnce)));
    require(curl_multi_setopt(m_multi.get(), CURLMOPT_MAXCONNECTS, static_cast<long>(mostAtOnce)));
}

HttpMany::~HttpMany() {
    for (const auto& [curl, exchange] : m_running) curl_multi_remove_handle(m_multi.get(), curl);
}

void HttpMany::post(std::size_t tag, const std::string& url, HttpRequest request) {
    if (m_idle.empty()) m_idle.push_back(std::make_unique<HttpHandle>(m_access));
    std::unique_ptr<HttpHandle> handle = std::move(m_idle.back());
    m_idle.pop_back();
    handle->prepare(url, std::move(request));
    CURL* curl = handle->curl();
    require(curl_multi_add_handle(m_multi.get(), curl));
    m_running[curl] = {std::move(handle), tag};
}

std::vector<HttpMany::Ended> HttpMany::wait(Clock::time_point until) {
    for (;;) {
        int running = 0;
        require(curl_multi_perform(m_multi.get(), &running));
        std::vector<Ended> ended = takeEnded();
        if (!ended.empty() || Clock::now() >= until) return ended;
        require(curl_multi_poll(m_multi.get(), nullptr, 0, millisecondsUntil(until), nullptr));
    }
}

std::vector<HttpMany::Ended> HttpMany::takeEnded() {
    std::vector<Ended> all;
    int left = 0;
    while (const CURLMsg* message = curl_multi_info_read(m_multi.get(), &left)) {
        const CURLcode code = message->data.result;
        const auto found = m_running.find(message->easy_handle);
        // Before it is asked what came: the message goes with this.
        require(curl_multi_remove_handle(m_multi.get(), message->easy_handle));
        Ended ended{found->second.tag, {}, ""};
        try {
            ended.answer = found->second.handle->take(code);
        } catch (const ServerError& error) {
            ended.failure = error.what();
        }
        m_idle.push_back(std::move(found->second.handle));
        m_running.erase(found);
        all.push_back(std::move(ended));
    }
    return all;
}

}  // namespace host
