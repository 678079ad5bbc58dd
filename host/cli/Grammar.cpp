#include "cli/Grammar.h"

#include <algorithm>
#include <charconv>
#include <chrono>
#include <cstdint>
#include <ctime>
#include <optional>
#include <sstream>
#include <system_error>

#include "cli/Failure.h"
#include "health/Sensor.h"
#include "source/ServerUrl.h"

namespace host {
namespace {

constexpr const char* FOOTER =
    "Options may stand before and after the command.\n"
    "\n"
    "Libraries: without --provider the provider is that of zelhost's own tree, built or installed.\n"
    "Without --chip an installed zelhost takes the system's libzelchip.so.0, as with --chip system. The\n"
    "simulated one plays with --scenario, with --chip simulated, in a build tree, and where the system\n"
    "has none. --chip linux shows what Linux's own drivers measure on this machine, terminal or not.\n"
    "\n"
    "Exit codes:\n"
    "  0  fine\n"
    "  1  the provider's answer was an error (its CIM status is on standard error), one of several\n"
    "     servers failed, verify found a problem, or doctor something to do\n"
    "  2  wrong usage, or a schema or a scenario that cannot be read or has mistakes\n"
    "  3  the provider or the chip library could not be loaded, or no server gave a usable answer\n"
    "  4  the output could not be written\n"
    "check ends as monitoring plugins do: 0 OK, 1 WARNING, 2 CRITICAL, 3 UNKNOWN\n";

constexpr const char* COMMON_GROUP = "Options of every command";
constexpr const char* SERVER_GROUP = "Options for an object manager on the network";
constexpr const char* SPECIAL_GROUP = "Options of some commands";

// Help of one layout whatever the version of the library, in which a command shows the program's options that it takes.
class HelpLayout : public CLI::Formatter {
  public:
    explicit HelpLayout(std::shared_ptr<const SpecialOptions> special) : m_special(std::move(special)) {
        label("REQUIRED", "(required)");
    }

    std::string make_help(const CLI::App* app, std::string name, CLI::AppFormatMode mode) const override {
        std::ostringstream text;
        if (const CLI::App* program = app->get_parent(); program != nullptr) {
            text << make_description(app) << "Usage: " << name << " [OPTIONS]" << usageOf(app->get_options()) << '\n'
                 << (app->get_options().empty() ? "" : make_group("Arguments", true, app->get_options()))
                 << optionsOf(program, SPECIAL_GROUP, app->get_name())
                 << optionsOf(program, COMMON_GROUP, app->get_name())
                 << optionsOf(program, SERVER_GROUP, app->get_name());
        } else {
            text << make_description(app) << "Usage: " << name << " [OPTIONS] COMMAND\n"
                 << make_subcommands(app, mode) << optionsOf(app, COMMON_GROUP, "") << optionsOf(app, SERVER_GROUP, "")
                 << optionsOf(app, SPECIAL_GROUP, "") << '\n'
                 << FOOTER;
        }
        return text.str();
    }

  private:
    static std::string usageOf(const std::vector<const CLI::Option*>& arguments) {
        std::string text;
        for (const CLI::Option* option : arguments) {
            const std::string name = option->get_name(true);
            const std::string repeated = option->get_expected_max() > 1 ? name + "..." : name;
            text += option->get_required() ? ' ' + repeated : " [" + repeated + ']';
        }
        return text;
    }

    // Those of a group that the command takes; for an empty command all of the group.
    std::string optionsOf(const CLI::App* program, const std::string& group, const std::string& command) const {
        const auto isShown = [&](const CLI::Option* option) {
            const auto takers = m_special->find(option);
            const bool isTaken = command.empty() || takers == m_special->end() || takers->second.count(command) != 0;
            return option->get_group() == group && isTaken;
        };
        const std::vector<const CLI::Option*> shown = program->get_options(isShown);
        const bool isOwn = !command.empty() && group == SPECIAL_GROUP;
        return shown.empty() ? "" : make_group(isOwn ? "Options" : group, false, shown);
    }

    std::shared_ptr<const SpecialOptions> m_special;
};

// All of the text as a number, without regard to the locale.
template <typename Number>
bool isNumber(const std::string& text, Number& number) {
    const char* end = text.data() + text.size();
    const auto result = std::from_chars(text.data(), end, number);
    return result.ec == std::errc() && result.ptr == end;
}

double intervalIn(const std::string& text) {
    double seconds = 0;
    if (isNumber(text, seconds) && seconds >= 0.1 && seconds <= 86400) return seconds;
    throw UsageError("--interval: '" + text + "' is not a number of seconds from 0.1 to 86400");
}

std::string momentOf(const std::string& text) {
    if (const std::optional<std::string> moment = momentIn(text, std::time(nullptr))) return *moment;
    throw UsageError("--since: '" + text +
                     "' is neither a date and time, such as 2026-02-17 or '2026-02-17 06:30', nor a duration, such as "
                     "90s, 15m, 2h, 3d or 1w");
}

std::size_t lastIn(const std::string& text) {
    std::uint32_t lines = 0;
    if (isNumber(text, lines) && lines > 0) return lines;
    throw UsageError("--last: '" + text + "' is not a whole number from 1 to 4294967295");
}

// "10m", "1.5h", "90s"; seconds where no unit stands.
double durationIn(const std::string& text) {
    const std::size_t end = std::min(text.find_first_not_of("0123456789."), text.size());
    static const std::map<std::string, double> units{{"", 1}, {"s", 1}, {"m", 60}, {"h", 3600}, {"d", 86400}};
    const auto unit = units.find(text.substr(end));
    double number = 0;
    if (unit != units.end() && isNumber(text.substr(0, end), number)) {
        const double seconds = number * unit->second;
        constexpr double longest = 7 * 86400;
        if (seconds >= 0.1 && seconds <= longest) return seconds;
    }
    throw UsageError("--for: '" + text + "' is not a time from 0.1s to 7d, such as 10m");
}

double everyIn(const std::string& text) {
    double seconds = 0;
    const bool hasUnit = !text.empty() && text.back() == 's';
    if (isNumber(text.substr(0, text.size() - (hasUnit ? 1 : 0)), seconds) && seconds >= 0.1 && seconds <= 86400) {
        return seconds;
    }
    throw UsageError("--every: '" + text + "' is not a number of seconds from 0.1 to 86400, such as 15s");
}

std::string fileIn(const char* option, const std::string& text) {
    if (!text.empty()) return text;
    throw UsageError(std::string(option) + ": the name of the file is empty");
}

unsigned countIn(const std::string& text) {
    std::uint32_t rounds = 0;
    if (isNumber(text, rounds) && rounds > 0) return rounds;
    throw UsageError("--count: '" + text + "' is not a whole number from 1 to 4294967295");
}

// "10s", "1.5s", "500ms", "2m"; seconds where no unit stands.
std::chrono::milliseconds timeoutIn(const std::string& text) {
    const std::size_t end = std::min(text.find_first_not_of("0123456789."), text.size());
    static const std::map<std::string, double> units{{"", 1000}, {"ms", 1}, {"s", 1000}, {"m", 60000}};
    const auto unit = units.find(text.substr(end));
    double number = 0;
    if (unit != units.end() && isNumber(text.substr(0, end), number)) {
        const double milliseconds = number * unit->second;
        if (milliseconds >= 1 && milliseconds <= 86400000) {
            return std::chrono::milliseconds(static_cast<std::int64_t>(milliseconds));
        }
    }
    throw UsageError("--timeout: '" + text + "' is not a time from 1ms to 1440m, such as 10s");
}

std::string listIn(const std::string& text) {
    if (!text.empty()) return text;
    throw UsageError("--servers: the name of the file is empty");
}

std::string urlIn(const std::string& text) {
    try {
        return serverUrl(text);
    } catch (const ServerUrlError& error) {
        throw UsageError(std::string("--server: ") + error.what());
    }
}

Format formatIn(const std::string& text) {
    if (text == "table") return Format::Table;
    if (text == "json") return Format::Json;
    if (text == "mof") return Format::Mof;
    if (text == "csv") return Format::Csv;
    throw UsageError("--format: '" + text + "' is not one of table, json, mof, csv");
}

Colouring colouringIn(const std::string& text) {
    if (text == "auto") return Colouring::Auto;
    if (text == "always") return Colouring::Always;
    if (text == "never") return Colouring::Never;
    throw UsageError("--color: '" + text + "' is not one of auto, always, never");
}

bool isWorstFirstIn(const std::string& text) {
    if (text == "severity") return true;
    throw UsageError("--sort: '" + text + "' is not severity");
}

void readWarning(const std::string& word, CheckOptions& check) {
    if (word == "critical") {
        check.warnsOnCritical = true;
    } else if (word == "no-reading") {
        check.warnsOnNoReading = true;
    } else {
        throw UsageError("--warn-on: '" + word + "' is not one of critical, no-reading");
    }
}

std::string kindIn(const std::string& text) {
    std::string kinds;
    for (const char* kind : sensorKinds()) {
        if (text == kind) return text;
        kinds += (kinds.empty() ? "" : ", ") + std::string(kind);
    }
    throw UsageError("--type: '" + text + "' is not one of " + kinds);
}

// The value is taken when all has been read; an option that stands there twice is refused then.
template <typename Read>
CLI::Option* addOption(CLI::App& app, const char* name, const char* type, const char* description, const Read& read) {
    return app.add_option_function<std::string>(name, read, description)->type_name(type)->take_last();
}

CLI::Option* addText(CLI::App& app, const char* name, const char* type, const char* description, std::string& text) {
    CLI::Option* option = app.add_option(name, text, description)->type_name(type)->take_last();
    return text.empty() ? option : option->capture_default_str();
}

CLI::App* addCommand(CLI::App& app, Options& options, Command command, const char* description) {
    CLI::App* added = app.add_subcommand(nameOf(command), description)->group("Commands");
    // The program's serves: a second one of the command's own would hide it.
    added->set_help_flag();
    added->callback([&options, command] { options.request.command = command; });
    return added;
}

void addClassArgument(CLI::App* command, Options& options) {
    command->add_option("CLASS", options.request.className, "CIM class")->type_name("")->capture_default_str();
}

CLI::Option* addNameArgument(CLI::App* command, Options& options, const char* description = "Value of the key Name") {
    return command->add_option("NAME", options.request.instanceName, description)->type_name("");
}

}  // namespace

Grammar::Grammar(Options& options)
    : m_app("Loads a CMPI instance provider as an object manager does, and shows what it answers.", "zelhost") {
    m_app.formatter(std::make_shared<HelpLayout>(m_special));
    m_app.fallthrough();
    m_app.require_subcommand(0, 1);
    addCommonOptions(options);
    addServerOptions(options.server);
    addSpecialOptions(options);
    addReadingCommands(options);
    addWritingCommands(options);
    addOwnCommands(options);
}

void Grammar::addCommonOptions(Options& options) {
    m_app.option_defaults()->group(COMMON_GROUP);
    m_app.set_help_flag("-h,--help", "Show this help, or that of the command")->group(COMMON_GROUP);
    m_app.set_version_flag("-V,--version", "zelhost " ZELHOST_VERSION, "Show the version")->group(COMMON_GROUP);
    addText(m_app, "--provider", "PATH", "Provider library (default: libzelsensors.so.0 of zelhost's tree)",
            options.provider);
    addText(m_app, "--provider-name", "NAME", "Name that its factory bears", options.providerName);
    addText(
        m_app, "--chip", "system|simulated|linux|PATH",
        "Chip library: the word system for the system's, the words simulated and linux for those of zelhost's tree, a "
        "file, or a directory that holds libzelchip.so.0 (default: see below)",
        options.chip);
    addText(m_app, "--scenario", "NAME|FILE",
            "What the simulated chip library plays: a file (written with a slash), or a name from the directory of "
            "scenarios",
            options.scenario);
    addText(m_app, "--namespace", "NAME", "CIM namespace", options.request.nameSpace);
    addOption(m_app, "--format", "FORMAT",
              "Output format: table, json, mof (not of sensors, watch, verify and doctor) or csv (of sensors) "
              "(default: table)",
              [&options](const std::string& text) { options.format = formatIn(text); });
    addText(m_app, "--provider-output", "FILE|-",
            "Where the provider's own lines go: a file, or - to show them on standard error at the end (default: "
            "discarded, but those of a start that fails, and of errors in the log, are shown)",
            options.providerOutput);
}

void Grammar::addServerOptions(ServerOptions& server) {
    m_app.option_defaults()->group(SERVER_GROUP);
    addOption(m_app, "--server", "URL",
              "Ask that object manager instead of loading a provider: http://HOST[:5988] or https://HOST[:5989]",
              [&server](const std::string& text) { server.url = urlIn(text); });
    addText(m_app, "--user", "NAME", "Who asks; the password is asked for, or in ZELHOST_PASSWORD", server.user);
    addText(m_app, "--password-file", "FILE", "The password's file, which only its owner may read",
            server.passwordFile);
    addText(m_app, "--ca", "FILE", "Certificates to trust instead of the system's", server.caFile);
    m_app.add_flag("--insecure", server.isInsecure, "Take any certificate");
    addOption(m_app, "--timeout", "TIME", "How long one request may take, such as 10s or 500ms",
              [&server](const std::string& text) { server.timeout = timeoutIn(text); })
        ->default_str("30s");
}

void Grammar::addSpecialOptions(Options& options) {
    m_app.option_defaults()->group(SPECIAL_GROUP);
    SpecialOptions& special = *m_special;
    special[addText(m_app, "--class", "CLASS", "CIM class of get, create, modify, delete and query",
                    options.request.className)] = {"get", "create", "modify", "delete", "query"};
    special[addText(m_app, "--language", "NAME", "The language that a query is written in",
                    options.request.queryLanguage)] = {"query"};
    special[addOption(m_app, "--interval", "SECONDS", "Seconds between two rounds of watch",
                      [&options](const std::string& text) { options.interval = intervalIn(text); })
                ->default_str("2")] = {"watch"};
    special[addOption(m_app, "--count", "ROUNDS",
                      "End watch, or log --follow, after so many rounds (default: when interrupted)",
                      [&options](const std::string& text) { options.rounds = countIn(text); })] = {"watch", "log"};
    special[addOption(m_app, "--servers", "FILE|-",
                      "Ask all object managers that the file names, a URL in a line, and show the worst sensor of each",
                      [&options](const std::string& text) { options.server.list = listIn(text); })] = {"sensors"};
    addSensorOptions(options.sensors);
    special[addOption(m_app, "--last", "N", "Show the last N lines alone, of those that the other options leave",
                      [&options](const std::string& text) { options.lines.last = lastIn(text); })] = {"log"};
    special[addOption(m_app, "--since", "WHEN",
                      "Show the lines from then on: a date, a date and time, or a duration before now (90s, 15m, 2h, "
                      "3d, 1w); a line without a date is shown",
                      [&options](const std::string& text) { options.lines.since = momentOf(text); })] = {"log"};
    special[addText(m_app, "--match", "TEXT", "Show the lines that have this text, in capitals or not",
                    options.lines.match)] = {"log"};
    addFollowOptions(options);
    addCheckOptions(options.check);
    addMetricsOptions(options);
    addRecordOptions(options.record);
    CLI::Option* schema =
        m_app
            .add_option("--schema", options.schema,
                        "MOF file with declarations of qualifiers or classes, for verify; may be given again, "
                        "and each file may use what those before it declare (default: the schema of zelhost's "
                        "tree)")
            ->type_name("FILE")
            ->allow_extra_args(false);
    special[schema] = {"verify"};
    m_repeatable.insert(schema);
}

void Grammar::addSensorOptions(SensorOptions& sensors) {
    SpecialOptions& special = *m_special;
    special[m_app.add_flag("--problems", sensors.onlyProblems,
                           "Show only sensors that are past a limit or have no reading")] = {"sensors"};
    special[addOption(m_app, "--type", "KIND", "Show only sensors of that kind, such as temperature or fan",
                      [&sensors](const std::string& text) { sensors.kind = kindIn(text); })] = {"sensors"};
    special[addOption(m_app, "--sort", "ORDER", "severity: the worst first (default: the provider's order)",
                      [&sensors](const std::string& text) { sensors.isWorstFirst = isWorstFirstIn(text); })] = {
        "sensors"};
    special[addOption(m_app, "--color", "WHEN", "Colours in the table: auto, always or never",
                      [&sensors](const std::string& text) { sensors.colouring = colouringIn(text); })
                ->default_str("auto")] = {"sensors", "watch"};
    special[m_app.add_flag_callback(
        "--no-header", [&sensors] { sensors.hasHeader = false; },
        "Leave out the titles of table and CSV, and the table's last line")] = {"sensors"};
}

void Grammar::addCheckOptions(CheckOptions& check) {
    SpecialOptions& special = *m_special;
    CLI::Option* ignored = m_app
                               .add_option("--ignore", check.ignored,
                                           "Leave out the sensors of that name, label, handle or pattern with * and ?; "
                                           "may be given again")
                               ->type_name("PATTERN")
                               ->allow_extra_args(false);
    special[ignored] = {"check"};
    CLI::Option* warnings = m_app
                                .add_option_function<std::vector<std::string>>(
                                    "--warn-on",
                                    [&check](const std::vector<std::string>& words) {
                                        for (const std::string& word : words) readWarning(word, check);
                                    },
                                    "What is to be a WARNING: critical (thresholds past, else CRITICAL) or no-reading "
                                    "(else UNKNOWN); may be given again")
                                ->type_name("WHAT")
                                ->allow_extra_args(false);
    special[warnings] = {"check"};
    special[m_app.add_flag("--event-log", check.withEventLog,
                           "Look at the event log too: a full or invalid one is a WARNING")] = {"check"};
    m_repeatable.insert({ignored, warnings});
}

void Grammar::addFollowOptions(Options& options) {
    SpecialOptions& special = *m_special;
    special[m_app.add_flag("--follow", options.isFollowed,
                           "Show the lines of the log alone, go on, and show new ones as they come")] = {"log"};
    special[addOption(m_app, "--state", "FILE",
                      "File that keeps which lines have been shown, so that a later --follow goes on behind them",
                      [&options](const std::string& text) { options.state = fileIn("--state", text); })] = {"log"};
}

void Grammar::addMetricsOptions(Options& options) {
    SpecialOptions& special = *m_special;
    special[addOption(m_app, "--every", "SECONDS",
                      "Seconds between two pages of metrics, such as 15s (default: one page), between two looks of "
                      "log --follow (default: 5s), or between two rounds of record (default: 1s)",
                      [&options](const std::string& text) { options.every = everyIn(text); })] = {"metrics", "log",
                                                                                                  "record"};
    special[addOption(m_app, "--to", "FILE",
                      "File that always holds the last page of metrics (default: standard output)",
                      [&options](const std::string& text) { options.to = fileIn("--to", text); })] = {"metrics"};
    special[m_app.add_flag_function(
        "--no-thresholds", [&options](std::int64_t) { options.hasThresholds = false; },
        "Leave the thresholds out of the page of metrics")] = {"metrics"};
}

void Grammar::addRecordOptions(RecordOptions& record) {
    SpecialOptions& special = *m_special;
    special[addOption(m_app, "--for", "TIME", "Record for so long, such as 90s, 10m or 2h (default: one round)",
                      [&record](const std::string& text) { record.duration = durationIn(text); })] = {"record"};
    special[m_app.add_flag("--force", record.isForced, "Replace the file where it is there already")] = {"record"};
    special[m_app.add_flag("--redact", record.isRedacted,
                           "Numbered words in the place of names and of the event log's texts")] = {"record"};
}

void Grammar::addReadingCommands(Options& options) {
    addCommand(m_app, options, Command::Sensors, "Show the sensors, and how they stand to their limits")
        ->add_option("NAME", options.sensors.names,
                     "Only these: labels, handles, beginnings of names, or patterns with * and ?")
        ->type_name("");
    addClassArgument(addCommand(m_app, options, Command::Names, "Show the names of a class's instances"), options);
    addClassArgument(addCommand(m_app, options, Command::Instances, "Show the instances of a class"), options);
    addNameArgument(addCommand(m_app, options, Command::Get, "Show one instance with all its properties"), options,
                    "Value of the key Name, or what sensors takes for one")
        ->required();
    addCommand(m_app, options, Command::Log, "Show the lines and the state of the event log");
    addCommand(m_app, options, Command::Watch, "Show the sensors again and again; q ends, arrows and pages scroll");
    addCommand(m_app, options, Command::Check, "Check the sensors, as a plugin of a monitoring system");
    addCommand(m_app, options, Command::Metrics, "Show the health of the terminal for Prometheus");
    addCommand(m_app, options, Command::Verify, "Compare all answers with the classes' schema");
    addCommand(m_app, options, Command::Doctor, "Look for the cause of missing or wrong sensors, and say what to do");
    addCommand(m_app, options, Command::Record, "Write a scenario that plays what the terminal answers")
        ->add_option("FILE", options.record.file, "The scenario; where it is there already, see --force")
        ->type_name("")
        ->required();
}

void Grammar::addWritingCommands(Options& options) {
    addNameArgument(addCommand(m_app, options, Command::Create, "Ask for a new instance, and show the refusal"),
                    options);
    addNameArgument(addCommand(m_app, options, Command::Modify, "Ask for a change, and show the refusal"), options)
        ->required();
    addNameArgument(addCommand(m_app, options, Command::Delete, "Ask for a removal, and show the refusal"), options)
        ->required();
    addCommand(m_app, options, Command::Query, "Send a query, and show the refusal")
        ->add_option("TEXT", options.request.query, "The query")
        ->type_name("")
        ->required();
}

void Grammar::addOwnCommands(Options& options) {
    CLI::App* scenario =
        m_app.add_subcommand("scenario", "List the supplied scenarios, or check scenario files for mistakes")
            ->group("Commands");
    scenario->set_help_flag();
    scenario->add_option("ACTION", m_action, "list or check")->type_name("")->required();
    scenario->add_option("FILE", options.scenarioFiles, "The files that check reads")->type_name("");
    CLI::App* diff = addCommand(m_app, options, Command::Diff, "Show what is different between two scenarios");
    diff->add_option("FILE", options.scenarioFiles, "The one before and the one after")
        ->type_name("")
        ->expected(2)
        ->required();
    CLI::App* help = m_app.add_subcommand("help", "Show this help, or that of a command")->group("Commands");
    help->set_help_flag();
    help->add_option("COMMAND", m_topic, "The command")->type_name("");
    m_app.add_subcommand("version", "Show the version")->group("Commands")->set_help_flag();
}

std::string Grammar::command() const {
    const std::vector<CLI::App*> chosen = m_app.get_subcommands();
    return chosen.empty() ? "" : chosen.front()->get_name();
}

std::vector<std::string> Grammar::commands() const {
    std::vector<std::string> names;
    for (const CLI::App* each : m_app.get_subcommands([](const CLI::App*) { return true; })) {
        names.push_back(each->get_name());
    }
    return names;
}

std::vector<std::string> Grammar::optionNames() const {
    std::vector<std::string> names;
    for (const CLI::Option* each : m_app.get_options()) names.push_back("--" + each->get_lnames().front());
    return names;
}

bool Grammar::isMisplaced(const CLI::Option* option, const std::string& command) const {
    const auto takers = m_special->find(option);
    return option->count() > 0 && takers != m_special->end() && takers->second.count(command) == 0;
}

bool Grammar::isGiven(const char* option) const {
    return m_app.get_option(option)->count() > 0;
}

void Grammar::refuseContradictions() const {
    const bool hasList = isGiven("--servers");
    const bool hasServer = isGiven("--server") || hasList;
    const std::string given = hasList ? "--servers" : "--server";
    if (isGiven("--server") && hasList) throw UsageError("--server and --servers exclude each other");
    for (const char* option : {"--provider", "--provider-name", "--chip", "--scenario", "--provider-output"}) {
        if (hasServer && isGiven(option)) {
            throw UsageError(std::string(option) + " is for a provider that is loaded here, " + given +
                             " asks elsewhere");
        }
    }
    for (const char* option : {"--user", "--password-file", "--ca", "--insecure", "--timeout"}) {
        if (!hasServer && isGiven(option)) throw UsageError(std::string(option) + " is for --server and --servers");
    }
    if (isGiven("--password-file") && !isGiven("--user")) throw UsageError("--password-file needs --user");
    if (isGiven("--ca") && isGiven("--insecure")) throw UsageError("--ca and --insecure exclude each other");
}

std::string Grammar::missingArgument() const {
    if (command().empty()) return "";
    for (const CLI::Option* each : m_app.get_subcommand(command())->get_options()) {
        if (each->get_required() && each->count() == 0) return each->get_name(true);
    }
    return "";
}

std::string Grammar::helpOf(const std::string& command) const {
    const CLI::App* app = command.empty() ? &m_app : m_app.get_subcommand(command);
    const std::string name = command.empty() ? "zelhost" : "zelhost " + command;
    return app->get_formatter()->make_help(app, name, CLI::AppFormatMode::Normal);
}

}  // namespace host
