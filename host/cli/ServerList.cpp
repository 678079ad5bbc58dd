#include "cli/ServerList.h"

#include <cerrno>
#include <cstring>
#include <fstream>
#include <iostream>
#include <istream>
#include <map>

#include "cli/Failure.h"
#include "source/ServerUrl.h"
#include "text/Blanks.h"
#include "text/Utf8.h"

namespace host {
namespace {

using Warning = std::function<void(const std::string&)>;

std::string withoutComment(const std::string& line) {
    return std::string(withoutBlanks(std::string_view(line).substr(0, line.find('#'))));
}

// What stands before an '@' may be a password.
std::string withoutSecrets(const std::string& address) {
    const std::size_t at = address.rfind('@');
    return at == std::string::npos ? address : "..." + address.substr(at);
}

std::vector<std::string> serversFrom(std::istream& stream, const std::string& name, const Warning& warn) {
    std::vector<std::string> urls;
    std::vector<std::string> mistakes;
    std::map<std::string, std::size_t> lineOf;
    std::size_t number = 0;
    for (std::string line; std::getline(stream, line);) {
        const std::string place = name + ':' + std::to_string(++number) + ": ";
        const std::string address = withoutComment(line);
        if (address.empty()) continue;
        try {
            const std::string url = serverUrl(address);
            const auto [known, isNew] = lineOf.emplace(url, number);
            if (isNew) {
                urls.push_back(url);
            } else {
                warn(printable(place + url) + " stands in line " + std::to_string(known->second) +
                     " too; it is asked once");
            }
        } catch (const ServerUrlError& error) {
            mistakes.push_back(place + '\'' + withoutSecrets(address) + "': " + error.what());
        }
    }
    if (!mistakes.empty()) throw Mistakes(std::move(mistakes));
    return urls;
}

UsageError unreadable(const std::string& name) {
    return UsageError(name + " cannot be read (" + std::strerror(errno) + ')');
}

std::vector<std::string> serversInFile(const std::string& file, const Warning& warn) {
    errno = 0;
    std::ifstream stream(file);
    if (!stream) throw unreadable(file);
    std::vector<std::string> urls = serversFrom(stream, file, warn);
    // Of a directory only the reading fails.
    if (stream.bad()) throw unreadable(file);
    return urls;
}

}  // namespace

std::vector<std::string> serversIn(const std::string& file, const Warning& warn) {
    const std::string name = nameOfServerList(file);
    std::vector<std::string> urls = file == "-" ? serversFrom(std::cin, name, warn) : serversInFile(file, warn);
    if (urls.empty()) throw UsageError(name + " names no server");
    return urls;
}

std::string nameOfServerList(const std::string& file) {
    return file == "-" ? "standard input" : file;
}

}  // namespace host
