// The words of the command line: the commands, the options, and which command takes which option.
#ifndef ZELSENSORS_CLI_GRAMMAR_H
#define ZELSENSORS_CLI_GRAMMAR_H

#include <CLI/CLI.hpp>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "cli/Options.h"

namespace host {

// The options that only some commands take, with the names of those commands.
using SpecialOptions = std::map<const CLI::Option*, std::set<std::string>>;

// Every option is the program's, so that it may stand before and after the command; what it stands for is written into
// `options`, which must outlive this object.
class Grammar {
  public:
    explicit Grammar(Options& options);
    Grammar(const Grammar&) = delete;
    Grammar& operator=(const Grammar&) = delete;

    CLI::App& app() { return m_app; }

    // The command that was read: a name of commands(), or empty. What `help` is asked about is in topic().
    std::string command() const;
    const std::string& topic() const { return m_topic; }
    // What `scenario` is to do.
    const std::string& action() const { return m_action; }
    std::vector<std::string> commands() const;
    std::vector<std::string> optionNames() const;

    // The option stands on the command line, and this command does not take it.
    bool isMisplaced(const CLI::Option* option, const std::string& command) const;
    bool mayBeRepeated(const CLI::Option* option) const { return m_repeatable.count(option) != 0; }
    // Throws UsageError for options that cannot stand together.
    void refuseContradictions() const;
    // The command's argument that has to be there and is not; empty for none.
    std::string missingArgument() const;

    // Of the program, for an empty command.
    std::string helpOf(const std::string& command) const;

  private:
    bool isGiven(const char* option) const;
    void addCommonOptions(Options& options);
    void addServerOptions(ServerOptions& server);
    void addSpecialOptions(Options& options);
    void addSensorOptions(SensorOptions& sensors);
    void addFollowOptions(Options& options);
    void addCheckOptions(CheckOptions& check);
    void addMetricsOptions(Options& options);
    void addRecordOptions(RecordOptions& record);
    void addReadingCommands(Options& options);
    void addWritingCommands(Options& options);
    void addOwnCommands(Options& options);

    std::shared_ptr<SpecialOptions> m_special = std::make_shared<SpecialOptions>();
    CLI::App m_app;
    std::set<const CLI::Option*> m_repeatable;
    std::string m_topic;
    std::string m_action;
};

}  // namespace host

#endif
