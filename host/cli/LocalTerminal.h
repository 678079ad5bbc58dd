// The terminal that a provider loaded here answers for: its chip library, and what has to be so before the provider is
// loaded.
#ifndef ZELSENSORS_CLI_LOCALTERMINAL_H
#define ZELSENSORS_CLI_LOCALTERMINAL_H

#include <string>
#include <vector>

#include "cli/Failure.h"
#include "cli/Locations.h"
#include "cli/ProviderLog.h"
#include "source/Answer.h"
#include "source/ChipLibrary.h"

namespace host {

class LocalTerminal {
  public:
    // Loads the chip library; where it is a simulated one, checks the scenario and keeps the real terminal's log out of
    // sight. Throws UsageError, Mistakes for a scenario, and broker::LoadError.
    explicit LocalTerminal(LibraryChoice choice);

    const std::string& provider() const { return m_choice.provider; }
    const AnsweringChip& chip() const { return m_chip; }
    const ChipLibrary& library() const { return m_library; }
    // Nobody asked for a simulated one, and there was no other.
    bool isSubstitute() const { return m_library.isSubstitute(); }
    // Of the provider, from now on.
    const ProviderLog& log() const { return m_log; }

  private:
    LibraryChoice m_choice;
    ChipLibrary m_library;
    AnsweringChip m_chip;
    ProviderLog m_log;
};

}  // namespace host

#endif
