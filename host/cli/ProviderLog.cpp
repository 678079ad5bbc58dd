#include "cli/ProviderLog.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <deque>
#include <filesystem>
#include <fstream>
#include <istream>
#include <sstream>

#include "text/Utf8.h"

namespace host {
namespace {

constexpr const char* SETTINGS = "/etc/tarn/log.conf";
constexpr std::size_t MOST_LINES = 10;

void apply(const std::string& key, const std::string& value, LogSettings& settings) {
    if (value.empty()) return;
    if (key == "FileName") settings.file = value;
    if (key == "IsConsole" && std::strchr("1Tt", value.front()) != nullptr) settings.isConsole = true;
    char* end = nullptr;
    const unsigned long number = std::strtoul(value.c_str(), &end, 10);
    if (key == "Level" && end != value.c_str() && number <= 4) {
        settings.level = static_cast<unsigned>(number);
    }
    if (key == "MaxLength" && end != value.c_str())
        settings.maxLength = std::max<off_t>(static_cast<off_t>(number), 4096);
}

// The lines of this process with the level Error, and how many there were before the last ten.
struct ErrorLines {
    std::deque<std::string> last;
    std::size_t count = 0;
};

// DATE TIME<tab>P[process] T[thread]<tab>Error<tab>message
ErrorLines errorsIn(std::istream& lines) {
    std::array<char, 16> process{};
    std::snprintf(process.data(), process.size(), "\tP[%08x] T[", static_cast<unsigned>(getpid()));
    ErrorLines errors;
    for (std::string line; std::getline(lines, line);) {
        const std::size_t time = line.find(process.data());
        const std::string level = "\tError\t";
        const std::size_t place = time == std::string::npos ? time : line.find(level, time);
        if (place == std::string::npos || line.find('\t', time + 1) != place) continue;
        ++errors.count;
        errors.last.push_back("log: " + printable(line.substr(0, time) + ' ' + line.substr(place + level.size())));
        if (errors.last.size() > MOST_LINES) errors.last.pop_front();
    }
    return errors;
}

std::string textOf(const ErrorLines& errors, const std::string& name) {
    if (errors.count == 0) return "";
    std::string text = "zelhost: " + name + " says";
    if (errors.count > MOST_LINES) {
        text += ", in the last " + std::to_string(MOST_LINES) + " of " + std::to_string(errors.count) + " errors";
    }
    text += ":\n";
    for (const std::string& line : errors.last) text += line + '\n';
    return text;
}

// The file is not there because nothing has been written to it yet, though it could be.
bool couldBeMade(const std::string& file) {
    const std::string directory = std::filesystem::path(file).parent_path();
    return faccessat(AT_FDCWD, directory.c_str(), W_OK | X_OK, AT_EACCESS) == 0;
}

}  // namespace

LogSettings readLogSettings() {
    LogSettings settings;
    std::ifstream file(SETTINGS);
    for (std::string line; std::getline(file, line);) {
        // The provider ends a line at a NUL, and takes its last character for the newline, also where there is none.
        const std::size_t length = std::strlen(line.c_str());
        const bool isShort = file.eof() || length < line.size();
        line.resize(length - (isShort && length > 0 ? 1 : 0));
        const std::size_t equals = line.find('=');
        if (equals != std::string::npos) apply(line.substr(0, equals), line.substr(equals + 1), settings);
    }
    return settings;
}

ProviderLog::ProviderLog(bool isPrivate) : m_settings(readLogSettings()), m_isPrivate(isPrivate) {
    struct stat status {};
    if (stat(m_settings.file.c_str(), &status) != 0) return;
    m_device = status.st_dev;
    m_inode = status.st_ino;
    m_size = status.st_size;
}

std::string ProviderLog::explanation(const std::string& console) const {
    if (m_settings.level == 0) return std::string("zelhost: its log is off, by Level=0 in ") + SETTINGS + '\n';
    if (!m_settings.isConsole) return explanationOfFile();
    std::istringstream lines(console);
    return textOf(errorsIn(lines), "its log");
}

std::string ProviderLog::explanationOfFile() const {
    const std::string& path = m_settings.file;
    const std::string name = m_isPrivate ? "its log" : "its log " + printable(path);
    std::ifstream file(path, std::ios::binary);
    struct stat status {};
    if (!file || stat(path.c_str(), &status) != 0) {
        const int error = errno;
        if (error == ENOENT && couldBeMade(path)) return "";
        return "zelhost: " + name + " cannot be read: " + std::strerror(error) + '\n';
    }
    if (faccessat(AT_FDCWD, path.c_str(), W_OK, AT_EACCESS) != 0) {
        return "zelhost: " + name + " cannot be written, so it holds nothing of this run: " + std::strerror(errno) +
               '\n';
    }
    const bool isSame = status.st_dev == m_device && status.st_ino == m_inode && status.st_size >= m_size;
    if (isSame) file.seekg(m_size);
    return textOf(errorsIn(file), name);
}

}  // namespace host
