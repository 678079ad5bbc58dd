#include "source/ChipLibrary.h"

#include <dlfcn.h>
#include <link.h>

#include "broker/ProviderLibrary.h"

namespace host {
namespace {

// Whether the loader has not found the library itself: one that is found and cannot be loaded is not replaced.
bool isNotFound(const std::string& path, const std::string& error) {
    return error.rfind(path + ": cannot open shared object file: No such file", 0) == 0;
}

void* opened(const std::string& path) {
    return dlopen(path.c_str(), RTLD_NOW | RTLD_GLOBAL);
}

}  // namespace

ChipLibrary::ChipLibrary(const ChipChoice& choice) : m_handle(opened(choice.path)) {
    if (m_handle != nullptr) return;
    std::string error = dlerror();
    if (isNotFound(choice.path, error) && !choice.isRequired) {
        if (choice.substitute.empty()) return;
        m_isSubstitute = true;
        m_handle = opened(choice.substitute);
        if (m_handle != nullptr) return;
        error = dlerror();
    }
    throw broker::LoadError("the chip library cannot be loaded: " + error);
}

ChipLibrary::~ChipLibrary() {
    if (m_handle != nullptr) dlclose(m_handle);
}

bool ChipLibrary::isSimulated() const {
    // chipsim/zelchip.map
    return m_handle != nullptr && dlsym(m_handle, "zelchip_is_simulated") != nullptr;
}

std::string ChipLibrary::path() const {
    link_map* map = nullptr;
    if (m_handle == nullptr || dlinfo(m_handle, RTLD_DI_LINKMAP, static_cast<void*>(&map)) != 0) return "";
    return map->l_name;
}

}  // namespace host
