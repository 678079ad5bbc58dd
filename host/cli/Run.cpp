#include "cli/Run.h"

#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <exception>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "cli/Check.h"
#include "cli/Failure.h"
#include "cli/LineKeeper.h"
#include "cli/LocalTerminal.h"
#include "cli/Metrics.h"
#include "cli/ProviderOutput.h"
#include "cli/ScenarioCommands.h"
#include "cli/Sensors.h"
#include "cli/Watch.h"
#include "format/JsonFormat.h"
#include "format/MofFormat.h"
#include "format/TableFormat.h"
#include "mof/MofError.h"
#include "source/Answer.h"
#include "source/Session.h"
#include "text/Charset.h"
#include "text/Output.h"
#include "text/Utf8.h"
#include "verify/SchemaError.h"
#include "verify/SchemaFiles.h"
#include "verify/Verify.h"
#include "verify/VerifyFormat.h"

namespace host {
namespace {

bool showsReadings(Command command) {
    return command == Command::Instances || command == Command::Get || command == Command::Log;
}

std::string textOf(const Answer& answer, Format format, Charset charset) {
    if (format == Format::Json) return jsonText(answer, JsonLayout::Indented);
    if (format == Format::Mof) return mofText(answer);
    std::string text = tableText(answer, charset);
    if (!text.empty() && answer.chip && showsReadings(answer.command)) {
        text += '\n' + shownIn(charset, chipNote(*answer.chip)) + '\n';
    }
    return text;
}

// Standard error that cannot be written changes nothing: there is nobody to tell, and the exit code says it too.
void tell(Output& errors, const std::string& text) {
    try {
        errors.write(shownIn(errors.charset(), text));
    } catch (const OutputError&) {
        return;
    }
}

// With a word before each line, so that nobody takes it for ours.
std::string marked(std::string_view lines) {
    std::string text;
    while (!lines.empty()) {
        const std::size_t end = std::min(lines.find('\n'), lines.size());
        text += "provider: " + printable(lines.substr(0, end)) + '\n';
        lines.remove_prefix(std::min(end + 1, lines.size()));
    }
    return text;
}

// Where a run's texts go, and the provider's own lines come from.
struct Streams {
    ProviderOutput& provider;
    Output output;
    Output errors;
};

// Nobody asked for the provider's own lines, but those of its start say why it failed.
void explainStart(const Options& options, Streams& streams) {
    if (options.providerOutput == "-") return;  // all of them are shown at the end
    if (!options.providerOutput.empty()) {
        tell(streams.errors,
             "zelhost: its start failed; its own lines are in " + printable(options.providerOutput) + '\n');
        return;
    }
    const std::string lines = marked(streams.provider.start());
    tell(streams.errors, lines.empty() ? "zelhost: its start failed, without a line of its own\n"
                                       : "zelhost: its start failed; its own lines:\n" + lines);
}

// With the cause, as far as the provider has told it: in the lines of its start, or in its log.
void report(const broker::Status& status, const std::string& ownLines, const LocalTerminal& terminal,
            const Options& options, Streams& streams) {
    tell(streams.errors, "zelhost: the provider answered " + statusText(status) + '\n');
    if (status.rc == CMPI_RC_ERR_METHOD_NOT_AVAILABLE) explainStart(options, streams);
    tell(streams.errors, terminal.log().explanation(ownLines));
}

int ask(const Options& options, const LocalTerminal& terminal, Streams& streams) {
    Session session(terminal.provider(), options.providerName);
    streams.provider.endStart();
    const Request& request = options.request;
    NamedReply named =
        request.command == Command::Get ? getNamed(request, session) : NamedReply{host::ask(session, request), ""};
    Answer answer{request.command, request.nameSpace, request.className, std::move(named.reply), terminal.chip()};
    if (request.command == Command::Log) answer = withLines(std::move(answer), options.lines);
    streams.output.write(textOf(answer, options.format, streams.output.charset()));
    if (answer.reply.status.rc == CMPI_RC_OK) return ExitCode::Fine;
    report(answer.reply.status, streams.provider.collected(), terminal, options, streams);
    if (!named.hint.empty()) tell(streams.errors, "zelhost: " + printable(named.hint) + '\n');
    return ExitCode::AnsweredError;
}

int askForSensors(const Options& options, const LocalTerminal& terminal, Streams& streams) {
    Session session(terminal.provider(), options.providerName);
    streams.provider.endStart();
    const std::optional<broker::Status> failure = showSensors(options, session, terminal.chip(), streams.output);
    if (!failure) return ExitCode::Fine;
    report(*failure, streams.provider.collected(), terminal, options, streams);
    return ExitCode::AnsweredError;
}

int askAgain(const Options& options, const LocalTerminal& terminal, Streams& streams) {
    Session session(terminal.provider(), options.providerName);
    streams.provider.endStart();
    LineKeeper source(session, streams.provider);
    const WatchOutcome outcome = watch(options, source, chipNote(terminal.chip()), terminal.chip(), streams.output);
    if (outcome.failedRounds == 0) return ExitCode::Fine;
    tell(streams.errors, "zelhost: " + std::to_string(outcome.failedRounds) + " of " + std::to_string(outcome.rounds) +
                             " rounds failed; the last failure was:\n");
    report(outcome.lastFailure, source.linesOfFailure(), terminal, options, streams);
    return ExitCode::AnsweredError;
}

int publish(const Options& options, const LocalTerminal& terminal, LineKeeper& source, MetricsRounds& rounds,
            const ReplacedFile& file, Streams& streams) {
    const std::chrono::nanoseconds interval(static_cast<std::int64_t>(options.every * 1e9));
    publishMetrics(
        rounds, interval, file,
        {[&](const broker::Status& status) { report(status, source.linesOfFailure(), terminal, options, streams); },
         [&](const std::string& text) { tell(streams.errors, "zelhost: " + printable(text) + '\n'); }});
    file.remove();
    return ExitCode::Fine;
}

int showMetrics(const Options& options, const LocalTerminal& terminal, std::optional<PublishedFile>& published,
                Streams& streams) {
    Session session(terminal.provider(), options.providerName);
    streams.provider.endStart();
    LineKeeper source(session, streams.provider);
    MetricsRounds rounds(source, options.request.nameSpace, {terminal.chip().isSimulated, options.hasThresholds});
    if (options.every > 0) return publish(options, terminal, source, rounds, published->file(), streams);
    const MetricsRounds::Page page = rounds.next();
    if (published) {
        published->file().replace(page.text);
        published->keep();
    } else {
        streams.output.write(page.text);
    }
    if (!page.failure) return ExitCode::Fine;
    report(*page.failure, source.linesOfFailure(), terminal, options, streams);
    return ExitCode::AnsweredError;
}

int verifyAnswers(const Options& options, const LocalTerminal& terminal, const mof::Schema& schema, Streams& streams) {
    Session session(terminal.provider(), options.providerName);
    streams.provider.endStart();
    const Verification verification = verify(schema, options.request.nameSpace, session);
    streams.output.write(options.format == Format::Json
                             ? verificationJson(verification, terminal.chip().isSimulated)
                             : shownIn(streams.output.charset(), verificationText(verification)));
    if (verification.firstFailure) {
        report(*verification.firstFailure, streams.provider.collected(), terminal, options, streams);
    }
    return verification.conforms() ? ExitCode::Fine : ExitCode::AnsweredError;
}

int tellPlugin(const PluginAnswer& answer, Output& output) {
    output.write(answer.text);
    return static_cast<int>(answer.state);
}

int check(const Options& options, const LocalTerminal& terminal, Streams& streams) {
    const Charset charset = streams.output.charset();
    if (terminal.chip().isSimulated && !isSimulationWanted(options)) {
        return tellPlugin(unknownAnswer("the chip library is a simulated one, which nobody asked for (--scenario or "
                                        "--chip simulated); --chip system takes the terminal's own",
                                        charset),
                          streams.output);
    }
    Session session(terminal.provider(), options.providerName);
    streams.provider.endStart();
    const PluginFindings findings =
        findingsOf(options.check, options.request.nameSpace, session, chipNote(terminal.chip()));
    if (const std::optional<broker::Status> failure = firstFailure(findings))
        report(*failure, streams.provider.collected(), terminal, options, streams);
    const PluginRules rules{options.check.warnsOnCritical, options.check.warnsOnNoReading};
    return tellPlugin(pluginAnswer(findings, rules, charset), streams.output);
}

int complain(Output& errors, const std::exception& failure, int exitCode) {
    tell(errors, "zelhost: " + printable(failure.what()) + '\n');
    return exitCode;
}

// Whatever goes wrong is UNKNOWN, and said where monitoring systems read it.
int checkReported(const Options& options, const InstallTree& tree, Streams& streams) {
    try {
        try {
            return check(options, LocalTerminal(choose(options, tree)), streams);
        } catch (const OutputError&) {
            throw;
        } catch (const ScenarioMistakes& failure) {
            return tellPlugin(unknownAnswer(failure.lines().front(), streams.output.charset()), streams.output);
        } catch (const std::exception& failure) {
            return tellPlugin(unknownAnswer(failure.what(), streams.output.charset()), streams.output);
        }
    } catch (const OutputError& failure) {
        return complain(streams.errors, failure, static_cast<int>(PluginState::Unknown));
    }
}

int runCommand(const Options& options, const InstallTree& tree, Streams& streams) {
    if (options.scenarioAction != ScenarioAction::None) return runScenarioCommand(options, tree, streams.output);
    const bool isVerify = options.request.command == Command::Verify;
    const mof::Schema schema = isVerify ? readSchema(schemaFiles(options, tree)) : mof::Schema();
    // Before whatever may fail: then an old page goes.
    std::optional<PublishedFile> published;
    if (!options.to.empty()) published.emplace(options.to);
    const LocalTerminal terminal(choose(options, tree));
    if (terminal.isSubstitute()) {
        tell(streams.errors,
             std::string("zelhost: this system has no ") + CHIP_LIBRARY + "; what follows is simulated\n");
    }
    if (isVerify) return verifyAnswers(options, terminal, schema, streams);
    switch (options.request.command) {
        case Command::Sensors:
            return askForSensors(options, terminal, streams);
        case Command::Watch:
            return askAgain(options, terminal, streams);
        case Command::Metrics:
            return showMetrics(options, terminal, published, streams);
        default:
            return ask(options, terminal, streams);
    }
}

int runReported(const Options& options, const InstallTree& tree, Streams& streams) {
    Output& errors = streams.errors;
    if (options.request.command == Command::Check) return checkReported(options, tree, streams);
    try {
        return runCommand(options, tree, streams);
    } catch (const ReaderGone&) {
        return ExitCode::BrokenPipe;
    } catch (const OutputError& failure) {
        return complain(errors, failure, ExitCode::NotWritten);
    } catch (const ScenarioMistakes& failure) {
        for (const std::string& line : failure.lines()) tell(errors, "zelhost: " + printable(line) + '\n');
        return ExitCode::WrongUsage;
    } catch (const UsageError& failure) {
        return complain(errors, failure, ExitCode::WrongUsage);
    } catch (const SchemaError& failure) {
        return complain(errors, failure, ExitCode::WrongUsage);
    } catch (const mof::MofError& failure) {
        return complain(errors, failure, ExitCode::WrongUsage);
    } catch (const broker::LoadError& failure) {
        complain(errors, failure, ExitCode::NotLoaded);
        // A factory that failed may have said why.
        if (options.providerOutput.empty()) tell(errors, marked(streams.provider.collected()));
        return ExitCode::NotLoaded;
    } catch (const std::exception& failure) {
        return complain(errors, failure, ExitCode::AnsweredError);
    }
}

}  // namespace

int run(const Options& options, const InstallTree& tree) try {
    ProviderOutput providerOutput(options.providerOutput);
    const Charset charset = charsetOfEnvironment();
    Streams streams{providerOutput, Output(providerOutput.standardOutput(), charset),
                    Output(providerOutput.standardError(), charset)};
    const int exitCode = runReported(options, tree, streams);
    if (options.providerOutput == "-") tell(streams.errors, marked(providerOutput.collected()));
    return exitCode;
} catch (const UsageError& failure) {
    // Where the provider's lines cannot go.
    if (options.request.command != Command::Check) throw;
    Output output(STDOUT_FILENO, charsetOfEnvironment());
    return tellPlugin(unknownAnswer(failure.what(), output.charset()), output);
}

}  // namespace host
