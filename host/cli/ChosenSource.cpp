#include "cli/ChosenSource.h"

#include "cli/AskedServers.h"
#include "source/Server.h"
#include "source/Session.h"
#include "text/Utf8.h"

namespace host {
namespace {

using Warning = std::function<void(const std::string&)>;

std::unique_ptr<Source> namedServer(const ServerOptions& server, const Warning& warn) {
    return std::make_unique<Server>(accessTo({{server.url}, printable(server.url)}, server, warn), warn);
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
