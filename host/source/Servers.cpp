#include "source/Servers.h"

#include <utility>

#include "source/CimXmlOverHttp.h"

namespace host {
namespace {

CimXmlRequest xmlOf(const Reading& reading, const std::string& messageId) {
    switch (reading.operation) {
        case Reading::Operation::Names:
            return enumerateInstanceNamesXml(messageId, reading.object);
        case Reading::Operation::Instances:
            return enumerateInstancesXml(messageId, reading.object);
        case Reading::Operation::Get:
            break;
    }
    return getInstanceXml(messageId, reading.object);
}

}  // namespace

Servers::Servers(std::vector<std::string> urls, const ServerAccess& access, Warning warn)
    : m_urls(std::move(urls)), m_access(access), m_warn(std::move(warn)), m_http(access, MOST_AT_ONCE) {}

void Servers::ask(std::size_t server, const Reading& reading) {
    try {
        CimXmlRequest request = xmlOf(reading, std::to_string(++m_lastMessage));
        m_http.post(server, m_urls.at(server), httpRequestOf(request));
        m_requests[server] = std::move(request);
    } catch (const UnsendableError& error) {
        Answer answer{server, {}, ""};
        answer.reply.status = {CMPI_RC_ERR_INVALID_PARAMETER, error.what()};
        m_ready.push_back(std::move(answer));
    }
}

std::optional<Servers::Answer> Servers::answer(Clock::time_point until) {
    if (!m_ready.empty()) {
        Answer answer = std::move(m_ready.front());
        m_ready.pop_front();
        return answer;
    }
    for (HttpMany::Ended& ended : m_http.wait(m_came.empty() ? until : Clock::time_point::min())) {
        m_came.push_back(std::move(ended));
    }
    if (m_came.empty()) return std::nullopt;
    HttpMany::Ended ended = std::move(m_came.front());
    m_came.pop_front();
    return answerOf(std::move(ended));
}

Servers::Answer Servers::answerOf(HttpMany::Ended ended) {
    Answer answer{ended.tag, {}, std::move(ended.failure)};
    const CimXmlRequest request = std::move(m_requests.extract(ended.tag).mapped());
    if (!answer.failure.empty()) return answer;
    m_access.url = m_urls.at(ended.tag);
    try {
        CimXmlAnswer read = cimXmlAnswerIn(ended.answer, request, m_access);
        answer.reply = std::move(read.reply);
        if (read.hasUnfitText && m_warned.insert(ended.tag).second) m_warn(unfitTextWarning(m_access.url));
    } catch (const ServerError& error) {
        answer.failure = error.what();
    }
    return answer;
}

}  // namespace host
