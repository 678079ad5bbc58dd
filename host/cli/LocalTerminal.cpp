#include "cli/LocalTerminal.h"

#include <cstdlib>
#include <utility>

#include "chipsim/ScenarioCheck.h"
#include "cli/PrivateLog.h"

namespace host {
namespace {

constexpr const char* SCENARIO_VARIABLE = "ZELCHIP_SCENARIO";

// The simulated library would refuse it as well, but in its own words and among the provider's.
void requireScenario(const LibraryChoice& choice) {
    if (!choice.scenario.empty()) setenv(SCENARIO_VARIABLE, choice.scenario.c_str(), 1);
    const char* file = std::getenv(SCENARIO_VARIABLE);
    if (file == nullptr || *file == '\0') return;
    std::vector<std::string> mistakes = mistakesOfScenario(file);
    if (!mistakes.empty()) throw Mistakes(std::move(mistakes));
}

// Gives whether the provider's log is one of this process alone.
bool prepare(const LibraryChoice& choice, const AnsweringChip& chip) {
    if (!chip.isSimulated) {
        if (choice.scenario.empty()) return false;
        throw UsageError("a scenario needs a simulated chip library, and " + choice.chip.path + " is none");
    }
    requireScenario(choice);
    const char* scenario = std::getenv(SCENARIO_VARIABLE);
    return enterPrivateLog({choice.provider, scenario == nullptr ? "" : scenario});
}

}  // namespace

LocalTerminal::LocalTerminal(LibraryChoice choice)
    : m_choice(std::move(choice)),
      m_library(m_choice.chip),
      m_chip{m_library.path(), m_library.isSimulated()},
      m_log(prepare(m_choice, m_chip)) {}

}  // namespace host
