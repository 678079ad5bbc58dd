#include "cli/Run.h"

#include <algorithm>
#include <cstdlib>
#include <exception>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "cli/Failure.h"
#include "cli/ProviderOutput.h"
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

// People shall see whether values are real.
std::string chipNote(const LibraryChoice& choice) {
    if (choice.chip.empty()) return "Chip library: the system's";
    return (choice.isChipSimulated ? "Chip library: simulated, " : "Chip library: ") + printable(choice.chip);
}

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
    const std::string lines = marked(streams.provider.collected());
    tell(streams.errors, lines.empty() ? "zelhost: its start failed, without a line of its own\n"
                                       : "zelhost: its start failed; its own lines:\n" + lines);
}

void report(const broker::Status& status, const Options& options, Streams& streams) {
    tell(streams.errors, "zelhost: the provider answered " + statusText(status) + '\n');
    if (status.rc == CMPI_RC_ERR_METHOD_NOT_AVAILABLE) explainStart(options, streams);
}

int ask(const Options& options, const LibraryChoice& choice, Streams& streams) {
    Session session(choice, options.providerName);
    streams.provider.endStart();
    const Request& request = options.request;
    NamedReply named =
        request.command == Command::Get ? getNamed(request, session) : NamedReply{host::ask(session, request), ""};
    const Answer answer{request.command, request.nameSpace, request.className, std::move(named.reply)};
    streams.output.write(textOf(answer, options.format, chipNote(choice), streams.output.charset()));
    if (answer.reply.status.rc == CMPI_RC_OK) return ExitCode::Fine;
    report(answer.reply.status, options, streams);
    if (!named.hint.empty()) tell(streams.errors, "zelhost: " + printable(named.hint) + '\n');
    return ExitCode::AnsweredError;
}

int askForSensors(const Options& options, const LibraryChoice& choice, Streams& streams) {
    Session session(choice, options.providerName);
    streams.provider.endStart();
    const std::optional<broker::Status> failure =
        showSensors(options, session, chipNote(choice), ChipInfo{choice.chip, choice.isChipSimulated}, streams.output);
    if (!failure) return ExitCode::Fine;
    report(*failure, options, streams);
    return ExitCode::AnsweredError;
}

int askAgain(const Options& options, const LibraryChoice& choice, Streams& streams) {
    Session session(choice, options.providerName);
    streams.provider.endStart();
    const WatchOutcome outcome = watch(
        options, chipNote(choice), [&] { return host::ask(session, options.request); }, streams.output);
    if (outcome.failedRounds == 0) return ExitCode::Fine;
    tell(streams.errors, "zelhost: " + std::to_string(outcome.failedRounds) + " of " + std::to_string(outcome.rounds) +
                             " rounds failed; the last failure was:\n");
    report(outcome.lastFailure, options, streams);
    return ExitCode::AnsweredError;
}

int verifyAnswers(const Options& options, const LibraryChoice& choice, const std::vector<std::string>& files,
                  Streams& streams) {
    const mof::Schema schema = readSchema(files);
    Session session(choice, options.providerName);
    streams.provider.endStart();
    const Verification verification = verify(schema, options.request.nameSpace, session);
    streams.output.write(options.format == Format::Json
                             ? verificationJson(verification)
                             : shownIn(streams.output.charset(), verificationText(verification)));
    if (verification.firstFailure) report(*verification.firstFailure, options, streams);
    return verification.conforms() ? ExitCode::Fine : ExitCode::AnsweredError;
}

int complain(Output& errors, const std::exception& failure, int exitCode) {
    tell(errors, "zelhost: " + printable(failure.what()) + '\n');
    return exitCode;
}

int runReported(const Options& options, const InstallTree& tree, Streams& streams) {
    Output& errors = streams.errors;
    try {
        const LibraryChoice choice = choose(options, tree);
        if (!choice.scenario.empty()) setenv("ZELCHIP_SCENARIO", choice.scenario.c_str(), 1);
        if (options.request.command == Command::Verify) {
            return verifyAnswers(options, choice, schemaFiles(options, tree), streams);
        }
        switch (options.request.command) {
            case Command::Sensors:
                return askForSensors(options, choice, streams);
            case Command::Watch:
                return askAgain(options, choice, streams);
            default:
                return ask(options, choice, streams);
        }
    } catch (const ReaderGone&) {
        return ExitCode::BrokenPipe;
    } catch (const OutputError& failure) {
        return complain(errors, failure, ExitCode::NotWritten);
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

int run(const Options& options, const InstallTree& tree) {
    ProviderOutput providerOutput(options.providerOutput);
    const Charset charset = charsetOfEnvironment();
    Streams streams{providerOutput, Output(providerOutput.standardOutput(), charset),
                    Output(providerOutput.standardError(), charset)};
    const int exitCode = runReported(options, tree, streams);
    if (options.providerOutput == "-") tell(streams.errors, marked(providerOutput.collected()));
    return exitCode;
}

}  // namespace host
