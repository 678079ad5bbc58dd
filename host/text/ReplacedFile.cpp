#include "text/ReplacedFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>

#include "text/Output.h"

namespace host {
namespace {

// Where its name begins, behind the last slash.
std::size_t nameIn(const std::string& path) {
    const std::size_t slash = path.rfind('/');
    return slash == std::string::npos ? 0 : slash + 1;
}

std::string temporaryOf(const std::string& path) {
    return path.substr(0, nameIn(path)) + '.' + path.substr(nameIn(path)) + ".tmp";
}

// Takes errno.
OutputError notWritten(const std::string& path) {
    return OutputError(path + " cannot be written: " + std::strerror(errno));
}

bool writeAll(int file, std::string_view text) {
    while (!text.empty()) {
        const ssize_t count = write(file, text.data(), text.size());
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) return false;
        text.remove_prefix(static_cast<std::size_t>(count));
    }
    return true;
}

}  // namespace

ReplacedFile::ReplacedFile(const std::string& path, Kind kind)
    : m_path(path), m_temporary(temporaryOf(path)), m_kind(kind) {}

void ReplacedFile::foresee() const {
    if (!isReplaceable()) throw OutputError(m_path + " cannot be replaced: it is no regular file");
    if (access(directory().c_str(), W_OK | X_OK) != 0) throw notWritten(m_path);
    struct stat status {};
    if (lstat(m_temporary.c_str(), &status) != 0 && errno != ENOENT) throw notWritten(m_path);  // a name too long
}

void ReplacedFile::replace(std::string_view text) const {
    if (!isReplaceable()) throw OutputError(m_path + " cannot be replaced: it is no regular file");
    try {
        write(text);
        if (!takeName(m_path)) {
            if (m_kind != Kind::New || errno != EEXIST) throw notWritten(m_path);
            takeAnotherName();
        }
        if (m_kind != Kind::ForAll) forceName();
    } catch (const OutputError&) {
        unlink(m_temporary.c_str());
        throw;
    }
}

void ReplacedFile::remove() const {
    if (isReplaceable() && unlink(m_path.c_str()) != 0 && errno != ENOENT) {
        throw OutputError(m_path + " cannot be removed: " + std::strerror(errno));
    }
}

void ReplacedFile::removeSilently() const noexcept {
    if (isReplaceable()) unlink(m_path.c_str());
    unlink(m_temporary.c_str());
}

bool ReplacedFile::isReplaceable() const {
    struct stat status {};
    return lstat(m_path.c_str(), &status) != 0 || S_ISREG(status.st_mode);
}

std::string ReplacedFile::directory() const {
    return nameIn(m_path) == 0 ? "." : m_path.substr(0, nameIn(m_path));
}

void ReplacedFile::write(std::string_view text) const {
    // Nothing that somebody has put there is written into.
    if (unlink(m_temporary.c_str()) != 0 && errno != ENOENT) throw notWritten(m_temporary);
    const bool isLasting = m_kind != Kind::ForAll;
    const mode_t mode = isLasting ? 0600 : 0644;
    const int file = open(m_temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, mode);
    if (file < 0) throw notWritten(m_path);
    const bool isWritten = fchmod(file, mode) == 0 && writeAll(file, text) && (!isLasting || fsync(file) == 0);
    const int error = errno;
    if (close(file) != 0 && isWritten) throw notWritten(m_path);
    errno = error;
    if (!isWritten) throw notWritten(m_path);
}

// Errno says why not.
bool ReplacedFile::takeName(const std::string& name) const {
    if (m_kind != Kind::New) return rename(m_temporary.c_str(), name.c_str()) == 0;
    if (renameat2(AT_FDCWD, m_temporary.c_str(), AT_FDCWD, name.c_str(), RENAME_NOREPLACE) == 0) return true;
    // Some file systems do not know that flag, nor, some of them, a second name of a file.
    if (errno != EINVAL) return false;
    if (access(name.c_str(), F_OK) != 0) return rename(m_temporary.c_str(), name.c_str()) == 0;
    errno = EEXIST;
    return false;
}

// What took hours to get is not thrown away because somebody else has taken its name. Always throws.
void ReplacedFile::takeAnotherName() const {
    constexpr int names = 99;
    for (int number = 1; number <= names; ++number) {
        const std::string other = m_path + '.' + std::to_string(number);
        if (takeName(other)) {
            forceName();
            throw OutputError(m_path + " is somebody else's by now; what belongs there is in " + other);
        }
        if (errno != EEXIST) break;
    }
    throw notWritten(m_path);
}

// A directory that cannot be forced, as of some network file systems, has the new name all the same.
void ReplacedFile::forceName() const {
    const int file = open(directory().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (file < 0) return;
    fsync(file);
    close(file);
}

}  // namespace host
