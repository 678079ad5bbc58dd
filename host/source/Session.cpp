#include "source/Session.h"

#include <dlfcn.h>

namespace host {

ChipLibrary::ChipLibrary(const std::string& path) {
    if (path.empty()) return;
    m_handle = dlopen(path.c_str(), RTLD_NOW | RTLD_GLOBAL);
    if (m_handle == nullptr) throw broker::LoadError(std::string("the chip library cannot be loaded: ") + dlerror());
}

ChipLibrary::~ChipLibrary() {
    if (m_handle != nullptr) dlclose(m_handle);
}

Session::Session(const LibraryChoice& choice, const std::string& providerName)
    : m_chip(choice.chip), m_library(choice.provider), m_provider(m_library, providerName, m_broker) {}

broker::Reply Session::ask(const Request& request) {
    const broker::ObjectPath classPath{"", request.nameSpace, request.className, {}};
    broker::ObjectPath path = classPath;
    path.keys.push_back({"Name", broker::Value::ofText(request.instanceName)});
    switch (request.command) {
        case Command::Names:
            return m_provider.enumerateInstanceNames(classPath);
        case Command::Instances:
        case Command::Log:
        case Command::Watch:
            return m_provider.enumerateInstances(classPath);
        case Command::Get:
            return m_provider.getInstance(path);
        case Command::Create:
            return m_provider.createInstance(classPath, {path, path.keys});
        case Command::Modify:
            return m_provider.modifyInstance(path, {path, path.keys});
        case Command::Delete:
            return m_provider.deleteInstance(path);
        case Command::Query:
            return m_provider.execQuery(classPath, request.query, request.queryLanguage);
        case Command::Verify:
            break;  // many requests, made through provider()
    }
    return {};
}

}  // namespace host
