#include "CommandLine.h"

#include <CLI/CLI.hpp>
#include <map>
#include <string>

#include "Failure.h"

namespace host {
namespace {

constexpr const char* kFooter =
    "Libraries: without --provider and --chip, the provider and the simulated chip library are those\n"
    "of zelhost's own tree, built or installed. Where that has no simulated chip library, and with\n"
    "--chip system, the loader takes the system's libzelchip.so.0.\n"
    "\n"
    "Exit codes:\n"
    "  0  fine\n"
    "  1  the provider's answer was an error (its CIM status is on standard error), verify found a\n"
    "     problem, or the output could not be written\n"
    "  2  wrong usage, or a schema that cannot be read\n"
    "  3  the provider or the chip library could not be loaded";

void addCommonOptions(CLI::App& app, Options& options) {
    static const std::map<std::string, Format> formats{
        {"table", Format::Table}, {"json", Format::Json}, {"mof", Format::Mof}};
    app.add_option("--provider", options.provider, "Provider library (default: libzelsensors.so.0 of zelhost's tree)")
        ->type_name("PATH");
    app.add_option("--provider-name", options.providerName, "Name that its factory bears")
        ->type_name("NAME")
        ->capture_default_str();
    app.add_option("--chip", options.chip,
                   "Chip library: a file, a folder that holds libzelchip.so.0, or the word system for the system's "
                   "(default: the simulated one of zelhost's tree, else the system's)")
        ->type_name("PATH");
    app.add_option("--scenario", options.scenario,
                   "What the simulated chip library plays: a file (written with a slash), or a name from the folder "
                   "of scenarios")
        ->type_name("NAME|FILE");
    app.add_option("--namespace", options.nameSpace, "CIM namespace")->type_name("NAME")->capture_default_str();
    app.add_option("--format", options.format, "Output format: table, json or mof (default: table)")
        ->type_name("FORMAT")
        ->transform(CLI::CheckedTransformer(formats).description(""));
    app.add_option("--provider-output", options.providerOutput,
                   "Where the provider's own lines go: a file, or - to show them on standard error at the end "
                   "(default: discarded)")
        ->type_name("FILE|-");
}

CLI::App* addCommand(CLI::App& app, Options& options, Command command, const char* description) {
    return app.add_subcommand(nameOf(command), description)->callback([&options, command] {
        options.command = command;
    });
}

void addClassArgument(CLI::App* command, Options& options) {
    command->add_option("CLASS", options.className, "CIM class")->type_name("")->capture_default_str();
}

void addClassOption(CLI::App* command, Options& options) {
    command->add_option("--class", options.className, "CIM class")->type_name("CLASS")->capture_default_str();
}

void addReadingCommands(CLI::App& app, Options& options) {
    addClassArgument(addCommand(app, options, Command::Names, "Show the names of a class's instances"), options);
    addClassArgument(addCommand(app, options, Command::Instances, "Show the instances of a class"), options);

    CLI::App* get = addCommand(app, options, Command::Get, "Show one instance with all its properties");
    get->add_option("NAME", options.instanceName, "Value of the key Name")->type_name("")->required();
    addClassOption(get, options);

    addCommand(app, options, Command::Log, "Show the lines and the state of the event log");

    CLI::App* watch = addCommand(app, options, Command::Watch, "Show the sensors again and again");
    addClassArgument(watch, options);
    watch->add_option("--interval", options.interval, "Seconds between two rounds")
        ->type_name("SECONDS")
        ->check(CLI::Range(0.1, 86400.0).description(""))
        ->capture_default_str();
    watch->add_option("--count", options.rounds, "End after so many rounds (default: when interrupted)")
        ->type_name("ROUNDS")
        ->check(CLI::PositiveNumber.description(""));
}

void addVerifyCommand(CLI::App& app, Options& options) {
    CLI::App* verify = addCommand(app, options, Command::Verify, "Compare all answers with the classes' schema");
    verify
        ->add_option("--schema", options.schema,
                     "MOF file with declarations of qualifiers or classes; may be given again, and each file may use "
                     "what those before it declare (default: the schema of zelhost's tree)")
        ->type_name("FILE")
        ->allow_extra_args(false);
}

void addWritingCommands(CLI::App& app, Options& options) {
    CLI::App* create = addCommand(app, options, Command::Create, "Ask for a new instance, and show the refusal");
    create->add_option("NAME", options.instanceName, "Value of the key Name")->type_name("");
    addClassOption(create, options);

    CLI::App* modify = addCommand(app, options, Command::Modify, "Ask for a change, and show the refusal");
    modify->add_option("NAME", options.instanceName, "Value of the key Name")->type_name("")->required();
    addClassOption(modify, options);

    CLI::App* remove = addCommand(app, options, Command::Delete, "Ask for a removal, and show the refusal");
    remove->add_option("NAME", options.instanceName, "Value of the key Name")->type_name("")->required();
    addClassOption(remove, options);

    CLI::App* query = addCommand(app, options, Command::Query, "Send a query, and show the refusal");
    query->add_option("TEXT", options.query, "The query")->type_name("")->required();
    query->add_option("--language", options.queryLanguage, "The language it is written in")
        ->type_name("NAME")
        ->capture_default_str();
    addClassOption(query, options);
}

}  // namespace

std::optional<int> readCommandLine(int count, const char* const* arguments, Options& options, std::ostream& output,
                                   std::ostream& errors) {
    CLI::App app{"Loads a CMPI instance provider as an object manager does, and shows what it answers.", "zelhost"};
    app.set_version_flag("--version", "zelhost " ZELHOST_VERSION);
    app.footer(kFooter);
    app.fallthrough();
    app.require_subcommand(0, 1);
    addCommonOptions(app, options);
    addReadingCommands(app, options);
    addVerifyCommand(app, options);
    addWritingCommands(app, options);
    try {
        app.parse(count, arguments);
    } catch (const CLI::ParseError& error) {
        return app.exit(error, output, errors) == 0 ? kFine : kWrongUsage;
    }
    if (app.get_subcommands().empty()) {
        errors << app.help();
        return kWrongUsage;
    }
    if (options.command == Command::Log) options.className = kEventLogClass;
    return std::nullopt;
}

}  // namespace host
