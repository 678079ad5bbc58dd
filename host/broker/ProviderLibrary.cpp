#include "broker/ProviderLibrary.h"

#include <dlfcn.h>

#include "broker/Names.h"

namespace broker {
namespace {

std::string lastLoaderError() {
    const char* error = dlerror();
    return error == nullptr ? "unknown error" : error;
}

// A list of names as CMPI takes it: ended by null, and null itself for all.
class NameList {
  public:
    explicit NameList(const std::vector<std::string>& names) {
        for (const std::string& name : names) m_names.push_back(name.c_str());
        m_names.push_back(nullptr);
    }
    const char** names() { return m_names.size() > 1 ? m_names.data() : nullptr; }

  private:
    std::vector<const char*> m_names;
};

// Runs an operation in a request of its own, and gives copies of all that it answered.
template <typename Operation>
Reply inRequest(Broker& broker, Operation operation) {
    Request request(broker);
    const CMPIStatus status = operation(request);
    Reply reply = request.reply();
    reply.status = copyOut(status);
    return reply;
}

CMPIInstanceMI* makeProvider(const ProviderLibrary& library, const std::string& name, Broker& broker) {
    const auto factory = library.factory(name);
    const Request request(broker);
    CMPIStatus made{};
    CMPIInstanceMI* mi = factory(broker.handle(), request.context(), &made);
    // cppcheck-suppress returnDanglingLifetime ; no factory answers what lies in the status
    if (made.rc == CMPI_RC_OK && mi != nullptr) return mi;
    const std::string what = "the factory of " + name + " in " + library.path() + " answered ";
    if (made.rc == CMPI_RC_OK) throw LoadError(what + "null");
    const Status status = copyOut(made);
    throw LoadError(what + nameOfStatus(status.rc) + (status.message ? ": " + *status.message : ""));
}

}  // namespace

ProviderLibrary::ProviderLibrary(const std::string& path)
    : m_path(path), m_handle(dlopen(path.c_str(), RTLD_NOW | RTLD_GLOBAL)) {
    if (m_handle == nullptr) throw LoadError("cannot load " + path + ": " + lastLoaderError());
}

ProviderLibrary::~ProviderLibrary() {
    dlclose(m_handle);
}

ProviderLibrary::Factory ProviderLibrary::factory(const std::string& providerName) const {
    const std::string symbol = providerName + "_Create_InstanceMI";
    void* address = dlsym(m_handle, symbol.c_str());
    if (address == nullptr) throw LoadError(m_path + " has no " + symbol);
    return reinterpret_cast<Factory>(address);
}

InstanceProvider::InstanceProvider(const ProviderLibrary& library, const std::string& providerName, Broker& broker)
    : m_broker(broker), m_mi(makeProvider(library, providerName, broker)) {}

InstanceProvider::~InstanceProvider() {
    if (m_cleanedUp) return;
    try {
        cleanUp(true);
    } catch (...) {  // nobody is left to report it to
        m_cleanedUp = true;
    }
}

Reply InstanceProvider::enumerateInstanceNames(const ObjectPath& classPath) {
    return inRequest(m_broker, [&](Request& request) {
        return m_mi->ft->enumerateInstanceNames(m_mi, request.context(), request.result(), request.makePath(classPath));
    });
}

Reply InstanceProvider::enumerateInstances(const ObjectPath& classPath, const std::vector<std::string>& properties) {
    NameList wanted(properties);
    return inRequest(m_broker, [&](Request& request) {
        return m_mi->ft->enumerateInstances(m_mi, request.context(), request.result(), request.makePath(classPath),
                                            wanted.names());
    });
}

Reply InstanceProvider::getInstance(const ObjectPath& path, const std::vector<std::string>& properties) {
    NameList wanted(properties);
    return inRequest(m_broker, [&](Request& request) {
        return m_mi->ft->getInstance(m_mi, request.context(), request.result(), request.makePath(path), wanted.names());
    });
}

Reply InstanceProvider::createInstance(const ObjectPath& classPath, const Instance& instance) {
    return inRequest(m_broker, [&](Request& request) {
        return m_mi->ft->createInstance(m_mi, request.context(), request.result(), request.makePath(classPath),
                                        request.makeInstance(instance));
    });
}

Reply InstanceProvider::modifyInstance(const ObjectPath& path, const Instance& instance,
                                       const std::vector<std::string>& properties) {
    NameList wanted(properties);
    return inRequest(m_broker, [&](Request& request) {
        return m_mi->ft->modifyInstance(m_mi, request.context(), request.result(), request.makePath(path),
                                        request.makeInstance(instance), wanted.names());
    });
}

Reply InstanceProvider::deleteInstance(const ObjectPath& path) {
    return inRequest(m_broker, [&](Request& request) {
        return m_mi->ft->deleteInstance(m_mi, request.context(), request.result(), request.makePath(path));
    });
}

Reply InstanceProvider::execQuery(const ObjectPath& classPath, const std::string& query, const std::string& language) {
    return inRequest(m_broker, [&](Request& request) {
        return m_mi->ft->execQuery(m_mi, request.context(), request.result(), request.makePath(classPath),
                                   query.c_str(), language.c_str());
    });
}

Status InstanceProvider::cleanUp(bool terminating) {
    const Reply reply = inRequest(m_broker, [&](Request& request) {
        return m_mi->ft->cleanup(m_mi, request.context(), static_cast<CMPIBoolean>(terminating ? 1 : 0));
    });
    const bool isPutOff = reply.status.rc == CMPI_RC_DO_NOT_UNLOAD || reply.status.rc == CMPI_RC_NEVER_UNLOAD;
    m_cleanedUp = terminating || !isPutOff;
    return reply.status;
}

}  // namespace broker
