#include "cli/AskedServers.h"

#include <algorithm>
#include <cstddef>

#include "cli/Failure.h"
#include "cli/Password.h"

namespace host {
namespace {

using Warning = std::function<void(const std::string&)>;

std::size_t unencrypted(const AskedServers& servers) {
    return static_cast<std::size_t>(std::count_if(servers.urls.begin(), servers.urls.end(),
                                                  [](const std::string& url) { return url.rfind("http:", 0) == 0; }));
}

void warnOfRisks(const AskedServers& servers, const ServerOptions& options, const Warning& warn) {
    const bool isOne = servers.urls.size() == 1;
    if (options.isInsecure) {
        warn("--insecure: nobody checks that " + std::string(isOne ? "this is " : "these are ") + servers.name +
             "; the readings may come from somebody else" +
             (options.user.empty() ? "" : ", who also gets the password"));
    }
    const std::size_t open = unencrypted(servers);
    if (options.user.empty() || open == 0) return;
    warn("the password goes to " + (isOne ? "" : std::to_string(open) + " of ") + servers.name +
         " without encryption; https encrypts it");
}

}  // namespace

ServerAccess accessTo(const AskedServers& servers, const ServerOptions& options, const Warning& warn) {
    const bool areAllOpen = unencrypted(servers) == servers.urls.size();
    for (const auto& [option, isGiven] :
         {std::pair("--ca", !options.caFile.empty()), std::pair("--insecure", options.isInsecure)}) {
        if (areAllOpen && isGiven) throw UsageError(std::string(option) + " is for https, not for http");
    }
    warnOfRisks(servers, options, warn);
    ServerAccess access;
    access.url = servers.urls.front();
    access.user = options.user;
    if (!options.user.empty()) access.password = passwordOf(options.user, servers.name, options.passwordFile);
    access.caFile = options.caFile;
    access.checksCertificate = !options.isInsecure;
    access.timeout = options.timeout;
    return access;
}

}  // namespace host
