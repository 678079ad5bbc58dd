#include "LogHandler.h"

#include <sys/stat.h>

#include <algorithm>

#include "LogRecord.h"
#include "SettingsFile.h"

namespace {

constexpr const char* CONFIGURATION_PATH = "/etc/tarn/log.conf";
constexpr const char* DEFAULT_LOG_PATH = "/var/log/tarn/tarn.log";
constexpr std::uint64_t DEFAULT_MAX_LENGTH = 10UL * 1024 * 1024;  // bytes
constexpr unsigned long LEAST_MAX_LENGTH = 4096;                  // bytes

}  // namespace

FileLogHandler::FileLogHandler() {
    GetConfig();
}

FileLogHandler::~FileLogHandler() {
    CloseFile();
}

void FileLogHandler::Log(LogRecord& record) {
    std::string line;
    record.GetLogLine(line);
    if (m_isConsole) {
        std::fputs(line.c_str(), stderr);
    } else {
        WriteLog(line);
    }
}

LOG_LEVEL FileLogHandler::GetLevel() {
    return m_level;
}

void FileLogHandler::GetConfig() {
    m_level = LOG_INFO;
    m_fileName = DEFAULT_LOG_PATH;
    m_maxLength = DEFAULT_MAX_LENGTH;
    m_isConsole = false;
    readSettings(CONFIGURATION_PATH,
                 [this](const std::string& key, const std::string& value) { ApplySetting(key, value); });
}

void FileLogHandler::ApplySetting(const std::string& key, const std::string& value) {
    unsigned long number = 0;
    if (key == "FileName") {
        if (!value.empty()) m_fileName = value;
    } else if (key == "IsConsole") {
        // Only ever switched on: a later "0" does not take it back.
        if (!value.empty() && (value[0] == '1' || value[0] == 'T' || value[0] == 't')) m_isConsole = true;
    } else if (key == "Level") {
        if (scanUnsigned(value, number) && number <= LOG_TRACE) m_level = static_cast<LOG_LEVEL>(number);
    } else if (key == "MaxLength") {
        if (scanUnsigned(value, number)) m_maxLength = std::max(number, LEAST_MAX_LENGTH);
    }
}

void FileLogHandler::WriteLog(std::string& line) {
    const std::lock_guard<std::mutex> lock(m_writing);
    if (m_stopped) return;
    if (m_file != nullptr) {
        struct stat status {};
        if (fstat(fileno(m_file), &status) != 0) return;
        if (static_cast<std::uint64_t>(status.st_size) >= m_maxLength) {
            CloseFile();
            m_stopped = true;
            return;
        }
        std::printf("link count=%ld\n", static_cast<long>(status.st_nlink));
        if (status.st_nlink == 0) CloseFile();  // deleted while it was open: this line starts a new one
    }
    if (m_file == nullptr) OpenFile();
    if (m_file == nullptr) return;
    std::fwrite(line.data(), 1, line.size(), m_file);
    std::fflush(m_file);
}

int FileLogHandler::WriteConsole(std::string& line) {
    return std::fputs(line.c_str(), stderr);
}

void FileLogHandler::OpenFile() {
    m_file = std::fopen(m_fileName.c_str(), "a+");
    // Without a buffer a line of any length goes out in one piece, so that those of several processes do not mix.
    if (m_file != nullptr) std::setvbuf(m_file, nullptr, _IONBF, 0);
}

void FileLogHandler::CloseFile() {
    if (m_file != nullptr) std::fclose(m_file);
    m_file = nullptr;
}
