#include "source/HttpClient.h"

#include <utility>

#include "source/HttpHandle.h"

namespace host {

HttpClient::HttpClient(const ServerAccess& access)
    : m_url(access.url), m_handle(std::make_unique<HttpHandle>(access)) {}

HttpClient::~HttpClient() = default;

HttpAnswer HttpClient::post(HttpRequest request) {
    m_handle->prepare(m_url, std::move(request));
    return m_handle->take(curl_easy_perform(m_handle->curl()));
}

}  // namespace host
