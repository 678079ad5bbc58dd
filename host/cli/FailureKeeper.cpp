#include "cli/FailureKeeper.h"

#include "source/Http.h"

namespace host {

template <typename Ask>
broker::Reply FailureKeeper::kept(Ask ask) {
    m_output.forget();
    broker::Reply reply;
    try {
        reply = ask();
    } catch (const ServerError& error) {
        m_hasUnanswered = true;
        reply.status = {CMPI_RC_ERROR_SYSTEM, error.what()};
    }
    if (reply.status.rc != CMPI_RC_OK) m_linesOfFailure = m_output.collected();
    return reply;
}

broker::Reply FailureKeeper::enumerateInstanceNames(const broker::ObjectPath& classPath) {
    return kept([&] { return m_source.enumerateInstanceNames(classPath); });
}

broker::Reply FailureKeeper::enumerateInstances(const broker::ObjectPath& classPath) {
    return kept([&] { return m_source.enumerateInstances(classPath); });
}

broker::Reply FailureKeeper::getInstance(const broker::ObjectPath& path) {
    return kept([&] { return m_source.getInstance(path); });
}

broker::Reply FailureKeeper::createInstance(const broker::ObjectPath& classPath, const broker::Instance& instance) {
    return kept([&] { return m_source.createInstance(classPath, instance); });
}

broker::Reply FailureKeeper::modifyInstance(const broker::ObjectPath& path, const broker::Instance& instance) {
    return kept([&] { return m_source.modifyInstance(path, instance); });
}

broker::Reply FailureKeeper::deleteInstance(const broker::ObjectPath& path) {
    return kept([&] { return m_source.deleteInstance(path); });
}

broker::Reply FailureKeeper::execQuery(const broker::ObjectPath& classPath, const std::string& query,
                                       const std::string& language) {
    return kept([&] { return m_source.execQuery(classPath, query, language); });
}

}  // namespace host
