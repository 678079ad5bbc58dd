// One exchange of libcurl: what it is given for a request, and what its answers and failures mean. For those who run
// it.
#ifndef ZELSENSORS_SOURCE_HTTPHANDLE_H
#define ZELSENSORS_SOURCE_HTTPHANDLE_H

#include <curl/curl.h>

#include <array>
#include <cstddef>
#include <memory>
#include <string>

#include "source/Http.h"

namespace host {

// For one exchange after the other. Follows no redirection, uses no proxy and takes no unencrypted way where https is
// asked for. Stays where it is while an exchange goes on.
class HttpHandle {
  public:
    // How servers are asked; its URL is not looked at. Throws ServerError where libcurl does not start.
    explicit HttpHandle(const ServerAccess& access);
    ~HttpHandle();
    HttpHandle(const HttpHandle&) = delete;
    HttpHandle& operator=(const HttpHandle&) = delete;

    // Makes the next exchange ready to be run, with the server of that address. Throws ServerError.
    void prepare(const std::string& url, HttpRequest request);
    // What came of it; `code` is libcurl's. An answer that is not whole is none. Throws ServerError.
    HttpAnswer take(CURLcode code);

    // To be run with curl_easy_perform() or in a multi handle.
    CURL* curl() const { return m_curl; }

  private:
    // What has come so far.
    struct Receipt {
        HttpAnswer answer;
        std::size_t headerBytes = 0;
        bool isTooLong = false;
    };
    struct ListCloser {
        void operator()(curl_slist* list) const { curl_slist_free_all(list); }
    };
    using List = std::unique_ptr<curl_slist, ListCloser>;

    static List listOf(const std::vector<std::string>& lines);
    static std::size_t takeBody(const char* data, std::size_t one, std::size_t count, void* user);
    static std::size_t takeHeader(const char* data, std::size_t one, std::size_t count, void* user);

    template <typename Setting>
    void set(CURLoption option, Setting setting) const;
    template <typename Number>
    Number number(CURLINFO what) const;

    // Why no whole answer came.
    std::string reason(CURLcode code) const;
    std::string timeoutReason() const;
    std::string certificateReason() const;
    std::string connectionReason() const;

    ServerAccess m_access;
    CURL* m_curl;
    HttpRequest m_request;  // libcurl reads its body
    List m_headers;         // and these
    Receipt m_receipt;
    std::array<char, CURL_ERROR_SIZE> m_message{};
};

}  // namespace host

#endif
