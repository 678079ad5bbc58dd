// Who is asked: a provider that is loaded here, or an object manager on the network.
#ifndef ZELSENSORS_CLI_CHOSENSOURCE_H
#define ZELSENSORS_CLI_CHOSENSOURCE_H

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "cli/LocalTerminal.h"
#include "cli/Options.h"
#include "source/Answer.h"
#include "source/Source.h"

namespace host {

class ChosenSource {
  public:
    // Makes ready the terminal that a provider loaded here answers for, or the server, having asked for a password
    // where one is needed; no provider is loaded and nothing sent yet. `warn` gets sentences for people, then and while
    // a server is asked. Throws what LocalTerminal throws, and ServerError.
    ChosenSource(const Options& options, const InstallTree& tree, const std::function<void(const std::string&)>& warn);

    // Loads the provider, where one is to be loaded here; once at most. What it gives lives as long as this object.
    // Throws broker::LoadError.
    Source& start();

    // None: a server is asked.
    const std::optional<LocalTerminal>& terminal() const { return m_terminal; }
    // Where the readings come from: people shall see whether values are real. Fit for a terminal.
    const std::string& note() const { return m_note; }
    // Not known of a server.
    std::optional<AnsweringChip> chip() const;

  private:
    std::optional<LocalTerminal> m_terminal;
    std::string m_providerName;
    std::string m_note;
    std::unique_ptr<Source> m_source;
};

}  // namespace host

#endif
