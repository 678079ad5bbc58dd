#include "cli/ChosenSource.h"

#include "cli/Password.h"
#include "source/Server.h"
#include "source/Session.h"
#include "text/Utf8.h"

namespace host {
namespace {

using Warning = std::function<void(const std::string&)>;

// What somebody gives up who does not want encryption, or not to know with whom.
void warnOfRisks(const ServerOptions& server, const Warning& warn) {
    if (server.isInsecure) {
        warn("--insecure: nobody checks that this is " + printable(server.url) +
             "; the readings may come from somebody else" +
             (server.user.empty() ? "" : ", who also gets the password"));
    } else if (!server.user.empty() && server.url.rfind("http:", 0) == 0) {
        warn("the password goes to " + printable(server.url) + " without encryption; https encrypts it");
    }
}

std::unique_ptr<Source> namedServer(const ServerOptions& server, const Warning& warn) {
    warnOfRisks(server, warn);
    ServerAccess access;
    access.url = server.url;
    access.user = server.user;
    if (!server.user.empty()) access.password = passwordOf(server.user, server.url, server.passwordFile);
    access.caFile = server.caFile;
    access.checksCertificate = !server.isInsecure;
    access.timeout = server.timeout;
    return std::make_unique<Server>(access, warn);
}

}  // namespace

ChosenSource::ChosenSource(const Options& options, const InstallTree& tree, const Warning& warn)
    : m_providerName(options.providerName) {
    if (options.server.url.empty()) {
        m_terminal.emplace(choose(options, tree));
        m_note = chipNote(m_terminal->chip());
    } else {
        m_source = namedServer(options.server, warn);
        m_note = "Server: " + printable(options.server.url);
    }
}

Source& ChosenSource::start() {
    if (!m_source) m_source = std::make_unique<Session>(m_terminal->provider(), m_providerName);
    return *m_source;
}

std::optional<AnsweringChip> ChosenSource::chip() const {
    if (!m_terminal) return std::nullopt;
    return m_terminal->chip();
}

}  // namespace host
