// HTTP to one server, by libcurl.
#ifndef ZELSENSORS_SOURCE_HTTPCLIENT_H
#define ZELSENSORS_SOURCE_HTTPCLIENT_H

#include <memory>
#include <string>

#include "source/Http.h"

namespace host {

class HttpHandle;

// Keeps its connection from request to request, as long as the server does. See HttpHandle for what it never does.
class HttpClient {
  public:
    // Throws ServerError where libcurl does not start.
    explicit HttpClient(const ServerAccess& access);
    ~HttpClient();
    HttpClient(const HttpClient&) = delete;
    HttpClient& operator=(const HttpClient&) = delete;

    // Throws ServerError, also for a file of certificates that cannot be read.
    HttpAnswer post(HttpRequest request);

  private:
    std::string m_url;
    std::unique_ptr<HttpHandle> m_handle;
};

}  // namespace host

#endif
