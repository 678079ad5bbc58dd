#include "cli/ScenarioCommands.h"

#include <filesystem>
#include <fstream>
#include <string>
#include <utility>
#include <vector>

#include "chipsim/ScenarioCheck.h"
#include "chipsim/ScenarioContents.h"
#include "cli/Failure.h"
#include "format/Differences.h"
#include "text/TextTable.h"
#include "text/Utf8.h"

namespace host {
namespace {

// The first words of the comment at the file's head, up to a full stop or a colon.
std::string titleOf(const std::string& file) {
    std::ifstream stream(file);
    std::string title;
    for (std::string line; std::getline(stream, line) && line.rfind("# ", 0) == 0;) title += line.substr(1);
    for (std::size_t i = 0; i < title.size(); ++i) {
        const bool isLastOfWord = i + 1 == title.size() || title[i + 1] == ' ';
        if (isLastOfWord && (title[i] == '.' || title[i] == ':')) title.resize(i);
    }
    return title.empty() ? "" : printable(title.substr(1));
}

int listScenarios(const InstallTree& tree, Output& output) {
    if (tree.scenarios.empty()) throw UsageError("there is no directory of scenarios beside zelhost");
    TextTable table({{"Scenario"}, {"What it shows"}}, output.charset());
    for (const std::string& name : scenarioNames(tree.scenarios)) {
        table.add({printable(name), titleOf(std::filesystem::path(tree.scenarios) / (name + ".toml"))});
    }
    output.write(table.text());
    return ExitCode::Fine;
}

int checkScenarios(const std::vector<std::string>& files, Output& output) {
    int exitCode = ExitCode::Fine;
    for (const std::string& file : files) {
        std::vector<std::string> lines = mistakesOfScenario(file);
        if (lines.empty()) {
            lines.push_back(file + ": no mistakes");
        } else {
            exitCode = ExitCode::WrongUsage;
        }
        for (const std::string& line : lines) output.write(shownIn(output.charset(), printable(line) + '\n'));
    }
    return exitCode;
}

ScenarioContents contentsOf(const std::string& file) {
    ScenarioContents contents = contentsOfScenario(file);
    if (!contents.mistakes.empty()) throw Mistakes(std::move(contents.mistakes));
    return contents;
}

}  // namespace

int showDifferences(const Options& options, Output& output) {
    const ScenarioContents before = contentsOf(options.scenarioFiles.at(0));
    const ScenarioContents after = contentsOf(options.scenarioFiles.at(1));
    const std::vector<Difference> differences = differencesBetween(before, after);
    output.write(options.format == Format::Json ? differencesJson(differences)
                                                : differencesText(differences, output.charset()));
    return differences.empty() ? ExitCode::Fine : ExitCode::AnsweredError;
}

int runScenarioCommand(const Options& options, const InstallTree& tree, Output& output) {
    if (options.format != Format::Table) throw UsageError("scenario has no format but the table");
    return options.scenarioAction == ScenarioAction::List ? listScenarios(tree, output)
                                                          : checkScenarios(options.scenarioFiles, output);
}

}  // namespace host
