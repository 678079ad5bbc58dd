#include "cli/ProviderSettings.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <map>
#include <string>

#include "cli/ProviderLog.h"

namespace host {
namespace {

using IsValue = std::function<bool(const std::string&)>;

struct SettingsFile {
    const char* path;
    std::map<std::string, IsValue> keys;
};

bool isAny(const std::string& value) {
    return !value.empty();
}

bool isNumber(const std::string& value) {
    char* end = nullptr;
    std::strtoul(value.c_str(), &end, 10);
    return end != value.c_str();
}

bool isLevel(const std::string& value) {
    return isNumber(value) && std::strtoul(value.c_str(), nullptr, 10) <= 4;
}

bool isSwitch(const std::string& value) {
    return value == "0" || value == "1";
}

std::vector<SettingsFile> settingsFiles() {
    return {{"/etc/tarn/log.conf",
             {{"FileName", isAny}, {"IsConsole", isAny}, {"Level", isLevel}, {"MaxLength", isNumber}}},
            {"/etc/tarn/sensor.conf", {{"NvmeReadings", isSwitch}}}};
}

// What is wrong with a line; empty where nothing is. A line that nobody takes for a setting is none.
std::string mistakeIn(const std::string& line, const SettingsFile& file) {
    if (line.empty() || line.front() == '#') return "";
    const std::size_t equals = line.find('=');
    if (equals == std::string::npos) return "no key=value";
    const auto key = file.keys.find(line.substr(0, equals));
    if (key == file.keys.end()) return "no such key: \"" + line.substr(0, equals) + '"';
    const std::string value = line.substr(equals + 1);
    return key->second(value) ? "" : "no value of " + key->first + ": \"" + value + '"';
}

Finding mistake(const SettingsFile& file, std::size_t number, const std::string& text) {
    const std::string line = "line " + std::to_string(number);
    return {"settings", file.path, line + ": " + text, std::string("mend ") + file.path + ", " + line};
}

std::vector<Finding> findingsIn(const SettingsFile& file) {
    std::ifstream stream(file.path);
    if (!stream) {
        if (errno == ENOENT) return {{"settings", file.path, "there is none: the defaults count", ""}};
        return {{"settings", file.path, std::string("it cannot be read: ") + std::strerror(errno),
                 std::string("let the object manager's user read ") + file.path}};
    }
    std::vector<Finding> findings;
    std::size_t number = 0;
    for (std::string line; std::getline(stream, line);) {
        ++number;
        const std::string text = mistakeIn(line, file);
        if (!text.empty()) findings.push_back(mistake(file, number, text));
        if (stream.eof())
            findings.push_back(mistake(file, number, "no newline ends it, and so its last character is lost"));
    }
    if (findings.empty()) findings.push_back({"settings", file.path, "it is read", ""});
    return findings;
}

// Why the log's file cannot be written; empty where it can, or could be made.
std::string whyUnwritable(const std::string& file) {
    if (faccessat(AT_FDCWD, file.c_str(), W_OK, AT_EACCESS) == 0) return "";
    const int error = errno;
    if (error != ENOENT) return std::strerror(error);
    const std::string directory = std::filesystem::path(file).parent_path();
    if (faccessat(AT_FDCWD, directory.c_str(), W_OK | X_OK, AT_EACCESS) == 0) return "";
    return "the directory " + directory + ": " + std::strerror(errno);
}

}  // namespace

std::vector<Finding> settingsFindings() {
    std::vector<Finding> all;
    for (const SettingsFile& file : settingsFiles()) {
        for (Finding& finding : findingsIn(file)) all.push_back(std::move(finding));
    }
    return all;
}

Finding logFinding() {
    const LogSettings settings = readLogSettings();
    if (settings.level == 0) return {"log", "-", "it is off", "set Level=2 in /etc/tarn/log.conf"};
    if (settings.isConsole) return {"log", "-", "it goes to standard error", ""};
    const std::string reason = whyUnwritable(settings.file);
    if (!reason.empty()) {
        return {"log", settings.file, "it cannot be written: " + reason,
                "make the log's directory, and let the object manager's user write there"};
    }
    struct stat status {};
    const bool isThere = stat(settings.file.c_str(), &status) == 0;
    if (isThere && status.st_size >= settings.maxLength) {
        return {"log", settings.file, "it has grown to MaxLength, and nothing is added to it",
                "move the log away, and restart the object manager"};
    }
    return {"log", settings.file, isThere ? "it is written" : "it is made when the first line comes", ""};
}

}  // namespace host
