#include "source/Server.h"

#include <utility>

#include "source/CimXmlOverHttp.h"

namespace host {

using broker::ObjectPath;
using broker::Reply;

Server::Server(const ServerAccess& access, Warning warn)
    : m_access(access), m_warn(std::move(warn)), m_client(access) {}

template <typename Write>
Reply Server::ask(const Write& write) {
    try {
        return answerTo(write(std::to_string(++m_lastMessage)));
    } catch (const UnsendableError& error) {
        Reply reply;
        reply.status = {CMPI_RC_ERR_INVALID_PARAMETER, error.what()};
        return reply;
    }
}

Reply Server::answerTo(const CimXmlRequest& request) {
    CimXmlAnswer answer = cimXmlAnswerIn(m_client.post(httpRequestOf(request)), request, m_access);
    if (answer.hasUnfitText && !m_hasWarned) {
        m_hasWarned = true;
        m_warn(unfitTextWarning(m_access.url));
    }
    return std::move(answer.reply);
}

Reply Server::enumerateInstanceNames(const ObjectPath& classPath) {
    return ask([&](const std::string& id) { return enumerateInstanceNamesXml(id, classPath); });
}

Reply Server::enumerateInstances(const ObjectPath& classPath) {
    return ask([&](const std::string& id) { return enumerateInstancesXml(id, classPath); });
}

Reply Server::getInstance(const ObjectPath& path) {
    return ask([&](const std::string& id) { return getInstanceXml(id, path); });
}

Reply Server::createInstance(const ObjectPath& classPath, const broker::Instance& instance) {
    return ask([&](const std::string& id) { return createInstanceXml(id, classPath, instance); });
}

Reply Server::modifyInstance(const ObjectPath& path, const broker::Instance& instance) {
    return ask([&](const std::string& id) { return modifyInstanceXml(id, path, instance); });
}

Reply Server::deleteInstance(const ObjectPath& path) {
    return ask([&](const std::string& id) { return deleteInstanceXml(id, path); });
}

Reply Server::execQuery(const ObjectPath& classPath, const std::string& query, const std::string& language) {
    return ask([&](const std::string& id) { return execQueryXml(id, classPath, query, language); });
}

}  // namespace host
