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

#include "broker/ProviderLibrary.h"
#include "cli/Check.h"
#include "cli/ChosenSource.h"
#include "cli/Doctor.h"
#include "cli/Failure.h"
#include "cli/FailureKeeper.h"
#include "cli/Follow.h"
#include "cli/Metrics.h"
#include "cli/ProviderOutput.h"
#include "cli/Record.h"
#include "cli/ScenarioCommands.h"
#include "cli/Sensors.h"
#include "cli/SensorsOfServers.h"
#include "cli/Watch.h"
#include "format/FindingsFormat.h"
#include "format/JsonFormat.h"
#include "format/MofFormat.h"
#include "format/TableFormat.h"
#include "mof/MofError.h"
#include "source/Answer.h"
#include "source/Http.h"
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

std::string textOf(const Answer& answer, Format format, const std::string& note, Charset charset) {
    if (format == Format::Json) return jsonText(answer, JsonLayout::Indented);
    if (format == Format::Mof) return mofText(answer);
    std::string text = tableText(answer, charset);
    if (!text.empty() && showsReadings(answer.command)) text += '\n' + shownIn(charset, note) + '\n';
    return text;
}

// Standard error that cannot be written changes nothing: nobody is left to read it, and the exit code says it too.
void reportOn(Output& errors, const std::string& text) {
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
        reportOn(streams.errors,
                 "zelhost: its start failed; its own lines are in " + printable(options.providerOutput) + '\n');
        return;
    }
    const std::string lines = marked(streams.provider.start());
    reportOn(streams.errors, lines.empty() ? "zelhost: its start failed, without a line of its own\n"
                                           : "zelhost: its start failed; its own lines:\n" + lines);
}

// What the status means where it comes from, and what helps; a line, or nothing.
std::string adviceFromServer(CMPIrc rc) {
    switch (rc) {
        case CMPI_RC_ERR_ACCESS_DENIED:
            return "zelhost: this user has no right to ask there; the object manager's configuration gives it\n";
        case CMPI_RC_ERR_INVALID_NAMESPACE:
        case CMPI_RC_ERR_INVALID_CLASS:
            return "zelhost: is the provider registered there? zelsensors-register does it\n";
        case CMPI_RC_ERR_METHOD_NOT_AVAILABLE:
            return "zelhost: the provider's start failed there; /var/log/tarn/tarn.log on that machine may say why\n";
        default:
            return "";
    }
}

// Who is asked in this run, and how; what is shown of it goes to the streams.
struct Asking {
    const Options& options;
    ChosenSource& chosen;
    Streams& streams;

    // Loads the provider, where one is to be loaded here.
    Source& start() {
        Source& source = chosen.start();
        streams.provider.endStart();
        return source;
    }
};

// With the cause, as far as the provider has reported it: in the lines of its start, or in its log. A server's is
// elsewhere.
void report(const broker::Status& status, const std::string& ownLines, Asking& asking) {
    Output& errors = asking.streams.errors;
    if (!asking.chosen.terminal()) {
        reportOn(errors, "zelhost: the server answered " + statusText(status) + '\n');
        reportOn(errors, adviceFromServer(status.rc));
        return;
    }
    reportOn(errors, "zelhost: the provider answered " + statusText(status) + '\n');
    if (status.rc == CMPI_RC_ERR_METHOD_NOT_AVAILABLE) explainStart(asking.options, asking.streams);
    reportOn(errors, asking.chosen.terminal()->log().explanation(ownLines));
}

void report(const broker::Status& status, Asking& asking) {
    report(status, asking.streams.provider.collected(), asking);
}

// Of what was asked again and again. Throws ServerError where no usable answer came.
void reportLast(const broker::Status& status, const FailureKeeper& source, Asking& asking) {
    if (source.isUnanswered(status)) throw ServerError(status.message.value_or(""));
    report(status, source.linesOfFailure(), asking);
}

int ask(Asking& asking) {
    Source& source = asking.start();
    const Request& request = asking.options.request;
    NamedReply named =
        request.command == Command::Get ? getNamed(request, source) : NamedReply{host::ask(source, request), ""};
    Answer answer{request.command, request.nameSpace, request.className, std::move(named.reply), asking.chosen.chip()};
    if (request.command == Command::Log) answer = withLines(std::move(answer), asking.options.lines);
    Output& output = asking.streams.output;
    output.write(textOf(answer, asking.options.format, asking.chosen.note(), output.charset()));
    if (answer.reply.status.rc == CMPI_RC_OK) return ExitCode::Fine;
    report(answer.reply.status, asking);
    if (!named.hint.empty()) reportOn(asking.streams.errors, "zelhost: " + printable(named.hint) + '\n');
    return ExitCode::AnsweredError;
}

int askForSensors(Asking& asking) {
    Source& source = asking.start();
    const std::optional<broker::Status> failure =
        showSensors(asking.options, source, asking.chosen.note(), asking.chosen.chip(), asking.streams.output);
    if (!failure) return ExitCode::Fine;
    report(*failure, asking);
    return ExitCode::AnsweredError;
}

int askServersForSensors(const Options& options, Streams& streams) {
    const ServersOutcome outcome =
        showSensorsOfServers(options, streams.output, streams.errors,
                             [&](const std::string& text) { reportOn(streams.errors, "zelhost: " + text + '\n'); });
    if (outcome.failed == 0) return ExitCode::Fine;
    reportOn(streams.errors, "zelhost: " + std::to_string(outcome.failed) + " of " + std::to_string(outcome.servers) +
                                 (outcome.servers == 1 ? " server failed\n" : " servers failed\n"));
    return outcome.unanswered == outcome.servers ? ExitCode::NotAnswered : ExitCode::AnsweredError;
}

int askAgain(Asking& asking) {
    FailureKeeper source(asking.start(), asking.streams.provider);
    const WatchOutcome outcome =
        watch(asking.options, source, asking.chosen.note(), asking.chosen.chip(), asking.streams.output);
    if (outcome.failedRounds == 0) return ExitCode::Fine;
    reportOn(asking.streams.errors, "zelhost: " + std::to_string(outcome.failedRounds) + " of " +
                                        std::to_string(outcome.rounds) + " rounds failed; the last failure was:\n");
    reportLast(outcome.lastFailure, source, asking);
    return ExitCode::AnsweredError;
}

TroubleListener listenerOf(const FailureKeeper& source, Asking& asking) {
    const auto reportLine = [&asking](const std::string& text) {
        reportOn(asking.streams.errors, "zelhost: " + printable(text) + '\n');
    };
    const auto reportFailure = [&source, &asking, reportLine](const broker::Status& status) {
        source.isUnanswered(status) ? reportLine(status.message.value_or(""))
                                    : report(status, source.linesOfFailure(), asking);
    };
    return {reportFailure, reportLine};
}

std::chrono::nanoseconds nanoseconds(double seconds) {
    return std::chrono::nanoseconds(static_cast<std::int64_t>(seconds * 1e9));
}

int publish(const FailureKeeper& source, MetricsRounds& rounds, const ReplacedFile& file, Asking& asking) {
    publishMetrics(rounds, nanoseconds(asking.options.every), file, listenerOf(source, asking));
    file.remove();
    return ExitCode::Fine;
}

int follow(Asking& asking) {
    const Options& options = asking.options;
    std::optional<SeenLines> state;
    if (!options.state.empty()) state.emplace(options.state);
    const SeenLines::Kept kept = state ? state->read() : SeenLines::Kept();
    if (!kept.complaint.empty()) {
        reportOn(asking.streams.errors,
                 "zelhost: --state: " + printable(kept.complaint) + "; all lines of the log are shown\n");
    }
    FailureKeeper source(asking.start(), asking.streams.provider);
    LogFollower follower(source, options.request.nameSpace, options.lines, kept.lines);
    constexpr double defaultInterval = 5;
    const FollowTiming timing{nanoseconds(options.every > 0 ? options.every : defaultInterval), options.rounds};
    const FollowOutcome outcome = followLog(follower, state, timing, asking.streams.output, listenerOf(source, asking));
    if (outcome.failure) return ExitCode::AnsweredError;
    return outcome.isSaved ? ExitCode::Fine : ExitCode::NotWritten;
}

std::optional<bool> isChipSimulated(const ChosenSource& chosen) {
    if (!chosen.terminal()) return std::nullopt;
    return chosen.terminal()->chip().isSimulated;
}

int showMetrics(std::optional<PublishedFile>& published, Asking& asking) {
    FailureKeeper source(asking.start(), asking.streams.provider);
    MetricsRounds rounds(source, asking.options.request.nameSpace,
                         {isChipSimulated(asking.chosen), asking.options.hasThresholds});
    if (asking.options.every > 0) return publish(source, rounds, published->file(), asking);
    const MetricsRounds::Page page = rounds.next();
    if (published) {
        published->file().replace(page.text);
        published->keep();
    } else {
        asking.streams.output.write(page.text);
    }
    if (!page.failure) return ExitCode::Fine;
    reportLast(*page.failure, source, asking);
    return ExitCode::AnsweredError;
}

int recordAnswers(Asking& asking) {
    FailureKeeper source(asking.start(), asking.streams.provider);
    const std::string heading = "Recorded by zelhost " ZELHOST_VERSION ". " + asking.chosen.note();
    const RecordOutcome outcome =
        record(asking.options, source, heading, asking.streams.errors,
               [&](const std::string& text) { reportOn(asking.streams.errors, "zelhost: " + text + '\n'); });
    if (!outcome.failure) return ExitCode::Fine;
    reportLast(*outcome.failure, source, asking);
    return ExitCode::AnsweredError;
}

int verifyAnswers(const mof::Schema& schema, Asking& asking) {
    Source& source = asking.start();
    const Via via = asking.chosen.terminal() ? Via::Provider : Via::Manager;
    const Verification verification = verify(schema, asking.options.request.nameSpace, source, via);
    Output& output = asking.streams.output;
    output.write(asking.options.format == Format::Json ? verificationJson(verification, isChipSimulated(asking.chosen))
                                                       : shownIn(output.charset(), verificationText(verification)));
    if (verification.firstFailure) report(*verification.firstFailure, asking);
    return verification.conforms() ? ExitCode::Fine : ExitCode::AnsweredError;
}

int showFindings(const Options& options, const InstallTree& tree, Streams& streams) {
    const std::vector<Finding> findings = examine(options, tree, streams.provider);
    streams.output.write(options.format == Format::Json ? findingsJson(findings)
                                                        : findingsText(findings, streams.output.charset()));
    return isAnythingToDo(findings) ? ExitCode::AnsweredError : ExitCode::Fine;
}

int writePlugin(const PluginAnswer& answer, Output& output) {
    output.write(answer.text);
    return static_cast<int>(answer.state);
}

int check(Asking& asking) {
    const Options& options = asking.options;
    Output& output = asking.streams.output;
    if (isChipSimulated(asking.chosen).value_or(false) && !isSimulationWanted(options)) {
        return writePlugin(unknownAnswer("the chip library is a simulated one, which nobody asked for (--scenario or "
                                         "--chip simulated); --chip system takes the terminal's own",
                                         output.charset()),
                           output);
    }
    const PluginFindings findings =
        findingsOf(options.check, options.request.nameSpace, asking.start(), asking.chosen.note());
    if (const std::optional<broker::Status> failure = firstFailure(findings)) report(*failure, asking);
    const PluginRules rules{options.check.warnsOnCritical, options.check.warnsOnNoReading};
    return writePlugin(pluginAnswer(findings, rules, output.charset()), output);
}

ChosenSource chosenSource(const Options& options, const InstallTree& tree, Streams& streams) {
    return ChosenSource(options, tree,
                        [&](const std::string& text) { reportOn(streams.errors, "zelhost: " + text + '\n'); });
}

int complain(Output& errors, const std::exception& failure, int exitCode) {
    reportOn(errors, "zelhost: " + printable(failure.what()) + '\n');
    return exitCode;
}

// Whatever goes wrong is UNKNOWN, and said where monitoring systems read it.
int checkReported(const Options& options, const InstallTree& tree, Streams& streams) {
    try {
        try {
            ChosenSource chosen = chosenSource(options, tree, streams);
            Asking asking{options, chosen, streams};
            return check(asking);
        } catch (const OutputError&) {
            throw;
        } catch (const Mistakes& failure) {
            return writePlugin(unknownAnswer(failure.lines().front(), streams.output.charset()), streams.output);
        } catch (const std::exception& failure) {
            return writePlugin(unknownAnswer(failure.what(), streams.output.charset()), streams.output);
        }
    } catch (const OutputError& failure) {
        return complain(streams.errors, failure, static_cast<int>(PluginState::Unknown));
    }
}

int runCommand(const Options& options, const InstallTree& tree, Streams& streams) {
    if (options.scenarioAction != ScenarioAction::None) return runScenarioCommand(options, tree, streams.output);
    if (!options.server.list.empty()) return askServersForSensors(options, streams);
    if (options.request.command == Command::Doctor) return showFindings(options, tree, streams);
    if (options.request.command == Command::Diff) return showDifferences(options, streams.output);
    const bool isVerify = options.request.command == Command::Verify;
    const mof::Schema schema = isVerify ? readSchema(schemaFiles(options, tree)) : mof::Schema();
    // Before whatever may fail: then an old page goes.
    std::optional<PublishedFile> published;
    if (!options.to.empty()) published.emplace(options.to);
    if (options.request.command == Command::Record) refuseUnwritable(options.record);
    ChosenSource chosen = chosenSource(options, tree, streams);
    if (chosen.terminal() && chosen.terminal()->isSubstitute()) {
        reportOn(streams.errors,
                 std::string("zelhost: this system has no ") + CHIP_LIBRARY + "; what follows is simulated\n");
    }
    Asking asking{options, chosen, streams};
    if (isVerify) return verifyAnswers(schema, asking);
    switch (options.request.command) {
        case Command::Sensors:
            return askForSensors(asking);
        case Command::Watch:
            return askAgain(asking);
        case Command::Metrics:
            return showMetrics(published, asking);
        case Command::Record:
            return recordAnswers(asking);
        case Command::Log:
            return options.isFollowed ? follow(asking) : ask(asking);
        default:
            return ask(asking);
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
    } catch (const Mistakes& failure) {
        for (const std::string& line : failure.lines()) reportOn(errors, "zelhost: " + printable(line) + '\n');
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
        if (options.providerOutput.empty()) reportOn(errors, marked(streams.provider.collected()));
        return ExitCode::NotLoaded;
    } catch (const ServerError& failure) {
        return complain(errors, failure, ExitCode::NotAnswered);
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
    if (options.providerOutput == "-") reportOn(streams.errors, marked(providerOutput.collected()));
    return exitCode;
} catch (const UsageError& failure) {
    // Where the provider's lines cannot go.
    if (options.request.command != Command::Check) throw;
    Output output(STDOUT_FILENO, charsetOfEnvironment());
    return writePlugin(unknownAnswer(failure.what(), output.charset()), output);
}

}  // namespace host
