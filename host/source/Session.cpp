#include "source/Session.h"

#include <utility>

namespace host {

Session::Session(std::string path, std::string providerName)
    : m_path(std::move(path)),
      m_providerName(std::move(providerName)),
      m_loaded(std::make_unique<Loaded>(m_path, m_providerName, m_broker)) {}

bool Session::restart() {
    m_loaded.reset();
    m_loaded = std::make_unique<Loaded>(m_path, m_providerName, m_broker);
    return true;
}

broker::InstanceProvider& Session::provider() {
    if (!m_loaded) throw broker::LoadError("the provider is no longer loaded: " + m_path);
    return m_loaded->provider;
}

broker::Reply Session::enumerateInstanceNames(const broker::ObjectPath& classPath) {
    return provider().enumerateInstanceNames(classPath);
}

broker::Reply Session::enumerateInstances(const broker::ObjectPath& classPath) {
    return provider().enumerateInstances(classPath);
}

broker::Reply Session::getInstance(const broker::ObjectPath& path) {
    return provider().getInstance(path);
}

broker::Reply Session::createInstance(const broker::ObjectPath& classPath, const broker::Instance& instance) {
    return provider().createInstance(classPath, instance);
}

broker::Reply Session::modifyInstance(const broker::ObjectPath& path, const broker::Instance& instance) {
    return provider().modifyInstance(path, instance);
}

broker::Reply Session::deleteInstance(const broker::ObjectPath& path) {
    return provider().deleteInstance(path);
}

broker::Reply Session::execQuery(const broker::ObjectPath& classPath, const std::string& query,
                                 const std::string& language) {
    return provider().execQuery(classPath, query, language);
}

}  // namespace host
