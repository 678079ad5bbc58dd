#include "source/ChipLibrary.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <link.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <system_error>

#include "broker/ProviderLibrary.h"
#include "chiplinux/Finding.h"

namespace host {
namespace {

// Whether the loader has not found the library itself: one that is found and cannot be loaded is not replaced.
bool isNotFound(const std::string& path, const std::string& error) {
    return error.rfind(path + ": cannot open shared object file: No such file", 0) == 0;
}

void* opened(const std::string& path) {
    return dlopen(path.c_str(), RTLD_NOW | RTLD_GLOBAL);
}

void take(void* findings, const ZelchipFinding* finding) {
    static_cast<std::vector<Finding>*>(findings)->push_back(
        {finding->area, finding->subject, finding->text, finding->advice == nullptr ? "" : finding->advice});
}

// The path, or a line feed and the error.
std::string loadedPath() {
    try {
        return ChipLibrary({CHIP_LIBRARY, "", false}).path();
    } catch (const broker::LoadError& error) {
        return std::string("\n") + error.what();
    }
}

[[noreturn]] void writePath(int pipe) {
    const std::string path = loadedPath();
    const bool isWritten = write(pipe, path.data(), path.size()) == static_cast<ssize_t>(path.size());
    _exit(isWritten ? 0 : 1);
}

std::string readAll(int pipe) {
    std::string text;
    std::array<char, 4096> block{};
    for (ssize_t count = 0; (count = read(pipe, block.data(), block.size())) != 0;) {
        if (count > 0)
            text.append(block.data(), static_cast<std::size_t>(count));
        else if (errno != EINTR)
            break;
    }
    return text;
}

}  // namespace

FoundLibrary findSystemChipLibrary() {
    std::array<int, 2> ends{};
    if (pipe2(ends.data(), O_CLOEXEC) != 0) throw std::system_error(errno, std::generic_category(), "pipe2");
    const pid_t child = fork();
    if (child == 0) writePath(ends[1]);
    const int error = errno;
    close(ends[1]);
    const std::string text = child < 0 ? "" : readAll(ends[0]);
    close(ends[0]);
    if (child < 0) throw std::system_error(error, std::generic_category(), "fork");
    while (waitpid(child, nullptr, 0) < 0 && errno == EINTR) {
    }
    if (text.empty() || text.front() != '\n') return {text, ""};
    return {"", text.substr(1)};
}

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

std::vector<Finding> ChipLibrary::diagnosis() const {
    std::vector<Finding> findings;
    // chiplinux/Finding.h
    const auto diagnose =
        m_handle == nullptr ? nullptr : reinterpret_cast<ZelchipDiagnose>(dlsym(m_handle, "zelchip_diagnose"));
    if (diagnose != nullptr && diagnose(take, &findings) != 0)
        findings.push_back({"chip library", path(), "its own diagnosis ended early", "find what uses up the memory"});
    return findings;
}

std::string ChipLibrary::path() const {
    link_map* map = nullptr;
    if (m_handle == nullptr || dlinfo(m_handle, RTLD_DI_LINKMAP, static_cast<void*>(&map)) != 0) return "";
    return map->l_name;
}

}  // namespace host
