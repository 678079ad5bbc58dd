#include "cli/LineKeeper.h"

namespace host {

template <typename Ask>
broker::Reply LineKeeper::kept(Ask ask) {
    m_output.forget();
    broker::Reply reply = ask();
    if (reply.status.rc != CMPI_RC_OK) m_linesOfFailure = m_output.collected();
    return reply;
}

broker::Reply LineKeeper::enumerateInstanceNames(const broker::ObjectPath& classPath) {
    return kept([&] { return m_source.enumerateInstanceNames(classPath); });
}

broker::Reply LineKeeper::enumerateInstances(const broker::ObjectPath& classPath) {
    return kept([&] { return m_source.enumerateInstances(classPath); });
}

broker::Reply LineKeeper::getInstance(const broker::ObjectPath& path) {
    return kept([&] { return m_source.getInstance(path); });
}

broker::Reply LineKeeper::createInstance(const broker::ObjectPath& classPath, const broker::Instance& instance) {
    return kept([&] { return m_source.createInstance(classPath, instance); });
}

broker::Reply LineKeeper::modifyInstance(const broker::ObjectPath& path, const broker::Instance& instance) {
    return kept([&] { return m_source.modifyInstance(path, instance); });
}

broker::Reply LineKeeper::deleteInstance(const broker::ObjectPath& path) {
    return kept([&] { return m_source.deleteInstance(path); });
}

broker::Reply LineKeeper::execQuery(const broker::ObjectPath& classPath, const std::string& query,
                                    const std::string& language) {
    return kept([&] { return m_source.execQuery(classPath, query, language); });
}

}  // namespace host
