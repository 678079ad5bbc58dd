#include "cli/CommandLine.h"

#include <algorithm>
#include <string>
#include <vector>

#include "cli/Failure.h"
#include "cli/Grammar.h"
#include "cli/Spelling.h"
#include "format/PluginFormat.h"
#include "text/Charset.h"
#include "text/Utf8.h"

namespace host {
namespace {

std::string meant(const std::string& word, const std::vector<std::string>& candidates) {
    const std::string nearest = nearestTo(word, candidates);
    return nearest.empty() ? "" : "; did you mean " + nearest + "?";
}

bool looksLikeOption(const std::string& word) {
    return word.size() > 1 && word.front() == '-';
}

void refuseCommand(const Grammar& grammar, const std::string& word) {
    throw UsageError("there is no command " + word + meant(word, grammar.commands()));
}

// Throws UsageError for words that mean nothing here.
void refuseUnknownWords(Grammar& grammar) {
    const std::vector<std::string> unknown = grammar.app().remaining(true);
    if (unknown.empty()) return;
    const std::string command = grammar.command();
    if (command.empty() && !looksLikeOption(unknown.front())) refuseCommand(grammar, unknown.front());
    const auto option = std::find_if(unknown.begin(), unknown.end(), looksLikeOption);
    if (option == unknown.end()) throw UsageError(command + ": there is an argument too many: " + unknown.front());
    const std::string name = option->substr(0, option->find('='));
    throw UsageError("there is no option " + name + meant(name, grammar.optionNames()));
}

// Throws UsageError for options that the command does not take, and for those given twice.
void refuseWrongOptions(Grammar& grammar) {
    const std::string command = grammar.command();
    const std::string refusal = command + " has no option ";
    for (const CLI::Option* option : grammar.app().get_options()) {
        const std::string name = option->get_name();
        if (grammar.isMisplaced(option, command)) throw UsageError(refusal + name);
        if (option->count() > 1 && !grammar.mayBeRepeated(option)) throw UsageError(name + " is given more than once");
    }
}

// Throws UsageError for a format that the command does not have.
void refuseWrongFormat(const Options& options) {
    const Command command = options.request.command;
    if (options.format == Format::Csv && command != Command::Sensors) {
        throw UsageError(std::string(nameOf(command)) + " has no CSV format; sensors has one");
    }
    if (options.format != Format::Table && command == Command::Check) {
        throw UsageError("check has the format of monitoring plugins alone");
    }
    if (options.format != Format::Table && command == Command::Metrics) {
        throw UsageError("metrics has a format of its own");
    }
    if (options.format != Format::Table && command == Command::Record) {
        throw UsageError("record writes a scenario, in no other format");
    }
    const bool hasNoMof = command == Command::Sensors || command == Command::Watch || command == Command::Verify ||
                          command == Command::Doctor || command == Command::Diff;
    if (options.format == Format::Mof && hasNoMof)
        throw UsageError(std::string(nameOf(command)) + " has no MOF format");
}

// Throws UsageError.
void refuseWrongMetrics(const Options& options) {
    if (options.every > 0 && options.to.empty()) {
        throw UsageError("metrics: --every needs --to, a file that is replaced each time");
    }
}

// Throws UsageError.
void refuseWrongFollowing(const Options& options) {
    if (options.isFollowed && options.format != Format::Table) {
        throw UsageError("log --follow shows the lines alone, in no other format");
    }
    const bool isFollowing = options.every > 0 || options.rounds > 0 || !options.state.empty();
    if (!options.isFollowed && isFollowing) {
        throw UsageError(std::string("log: ") +
                         (options.every > 0    ? "--every"
                          : options.rounds > 0 ? "--count"
                                               : "--state") +
                         " is for --follow");
    }
}

// Throws UsageError.
void refuseWrongServers(const Options& options) {
    if (!options.server.list.empty() && !options.sensors.names.empty()) {
        throw UsageError("sensors: --servers asks for all sensors, not for " + options.sensors.names.front() +
                         "; --type and --problems choose among them");
    }
}

// What was wrong where it was neither an unknown word nor a value.
std::string reasonOf(const CLI::ParseError& error, Grammar& grammar, const std::string& lastWord) {
    if (grammar.app().get_option_no_throw(lastWord) != nullptr) return lastWord + " needs a value";
    const std::string missing = grammar.missingArgument();
    return missing.empty() ? error.what() : grammar.command() + ": " + missing + " is missing";
}

// Throws UsageError.
ScenarioAction scenarioActionIn(const std::string& word, const std::vector<std::string>& files) {
    const std::vector<std::string> actions{"list", "check"};
    if (std::find(actions.begin(), actions.end(), word) == actions.end()) {
        throw UsageError("scenario: there is no action " + word + meant(word, actions));
    }
    const bool isList = word == "list";
    if (isList && !files.empty()) throw UsageError("scenario list: there is an argument too many: " + files.front());
    if (!isList && files.empty()) throw UsageError("scenario check: FILE is missing");
    return isList ? ScenarioAction::List : ScenarioAction::Check;
}

enum class Wish { Request, Help, Version };

// Throws UsageError.
Wish parse(Grammar& grammar, int count, const char* const* arguments) {
    try {
        grammar.app().parse(count, arguments);
        return Wish::Request;
    } catch (const CLI::CallForHelp&) {
        refuseUnknownWords(grammar);
        return Wish::Help;
    } catch (const CLI::CallForVersion&) {
        refuseUnknownWords(grammar);
        return Wish::Version;
    } catch (const CLI::ParseError& error) {
        refuseUnknownWords(grammar);
        throw UsageError(reasonOf(error, grammar, arguments[count - 1]));
    }
}

std::string helpOn(const std::string& topic, const Grammar& grammar) {
    const std::vector<std::string> commands = grammar.commands();
    const bool isKnown = topic.empty() || std::find(commands.begin(), commands.end(), topic) != commands.end();
    if (!isKnown) refuseCommand(grammar, topic);
    return grammar.helpOf(topic);
}

std::optional<int> read(Grammar& grammar, int count, const char* const* arguments, Options& options,
                        std::ostream& output, std::ostream& errors) {
    const Wish wish = parse(grammar, count, arguments);
    const std::string command = grammar.command();
    if (wish == Wish::Version || command == "version") {
        output << "zelhost " ZELHOST_VERSION "\n";
        return ExitCode::Fine;
    }
    if (wish == Wish::Help || command == "help") {
        output << helpOn(wish == Wish::Help ? command : grammar.topic(), grammar);
        return ExitCode::Fine;
    }
    if (command.empty()) {
        errors << grammar.helpOf("");
        return ExitCode::WrongUsage;
    }
    refuseWrongOptions(grammar);
    grammar.refuseContradictions();
    refuseWrongFormat(options);
    refuseWrongServers(options);
    if (command == "scenario") options.scenarioAction = scenarioActionIn(grammar.action(), options.scenarioFiles);
    if (options.request.command == Command::Doctor && !options.server.url.empty())
        throw UsageError("doctor looks at the machine that it runs on, not at a --server");
    if (options.request.command == Command::Diff && !options.server.url.empty())
        throw UsageError("diff compares two files, and asks no --server");
    if (options.request.command == Command::Metrics) refuseWrongMetrics(options);
    if (options.request.command == Command::Log) {
        refuseWrongFollowing(options);
        options.request.className = EVENT_LOG_CLASS;
    }
    return std::nullopt;
}

}  // namespace

std::optional<int> readCommandLine(int count, const char* const* arguments, Options& options, std::ostream& output,
                                   std::ostream& errors) {
    Grammar grammar(options);
    try {
        return read(grammar, count, arguments, options, output, errors);
    } catch (const UsageError& error) {
        const std::string command = grammar.command();
        // A monitoring system reads standard output alone, and the status 2 would be CRITICAL.
        if (command == nameOf(Command::Check)) {
            const PluginAnswer answer = unknownAnswer(error.what(), charsetOfEnvironment());
            output << answer.text;
            return static_cast<int>(answer.state);
        }
        errors << "zelhost: " << printable(error.what()) << "\nSee zelhost " << command << (command.empty() ? "" : " ")
               << "--help.\n";
        return ExitCode::WrongUsage;
    }
}

}  // namespace host
