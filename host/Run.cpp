#include "Run.h"

#include <algorithm>
#include <cstdlib>
#include <exception>
#include <string>
#include <string_view>
#include <vector>

#include "Answer.h"
#include "Failure.h"
#include "JsonFormat.h"
#include "MofFormat.h"
#include "Output.h"
#include "ProviderOutput.h"
#include "SchemaFiles.h"
#include "Session.h"
#include "TableFormat.h"
#include "Utf8.h"
#include "Verify.h"
#include "VerifyFormat.h"
#include "Watch.h"
#include "mof/MofReader.h"

namespace host {
namespace {

// People shall see whether values are real.
std::string chipNote(const Choice& choice) {
    if (choice.chip.empty()) return "Chip library: the system's";
    return (choice.isChipSimulated ? "Chip library: simulated, " : "Chip library: ") + printable(choice.chip);
}

bool showsReadings(Command command) {
    return command == Command::Instances || command == Command::Get || command == Command::Log;
}

std::string textOf(const Answer& answer, Format format, const std::string& note) {
    if (format == Format::Json) return jsonText(answer, JsonLayout::Indented);
    if (format == Format::Mof) return mofText(answer);
    std::string text = tableText(answer);
    if (!text.empty() && showsReadings(answer.command)) text += '\n' + note + '\n';
    return text;
}

// Standard error that cannot be written changes nothing: there is nobody to tell, and the exit code says it too.
void tell(Output& errors, const std::string& text) {
    try {
        errors.write(text);
    } catch (const OutputError&) {
        return;
    }
}

void report(const broker::Status& status, const Options& options, Output& errors) {
    tell(errors, "zelhost: the provider answered " + statusText(status) + '\n');
    if (status.rc == CMPI_RC_ERR_METHOD_NOT_AVAILABLE && options.providerOutput.empty()) {
        tell(errors, "zelhost: it may have said why; --provider-output - shows its own lines\n");
    }
}

int ask(const Options& options, const Choice& choice, Output& output, Output& errors) {
    Session session(options, choice);
    const Answer answer{options.command, options.nameSpace, options.className, session.request()};
    output.write(textOf(answer, options.format, chipNote(choice)));
    if (answer.reply.status.rc == CMPI_RC_OK) return kFine;
    report(answer.reply.status, options, errors);
    return kAnsweredError;
}

int askAgain(const Options& options, const Choice& choice, Output& output, Output& errors) {
    Session session(options, choice);
    const WatchOutcome outcome = watch(
        options, chipNote(choice), [&session] { return session.request(); }, output);
    if (outcome.failedRounds == 0) return kFine;
    tell(errors, "zelhost: " + std::to_string(outcome.failedRounds) + " of " + std::to_string(outcome.rounds) +
                     " rounds failed; the last failure was:\n");
    report(outcome.lastFailure, options, errors);
    return kAnsweredError;
}

int verifyAnswers(const Options& options, const Choice& choice, const std::vector<std::string>& files, Output& output,
                  Output& errors) {
    if (options.format == Format::Mof) throw UsageError("verify has no MOF format");
    const mof::Schema schema = readSchema(files);
    Session session(options, choice);
    broker::InstanceProvider& provider = session.provider();
    const Questions questions{[&](const broker::ObjectPath& path) { return provider.enumerateInstanceNames(path); },
                              [&](const broker::ObjectPath& path) { return provider.enumerateInstances(path); },
                              [&](const broker::ObjectPath& path) { return provider.getInstance(path); }};
    const Verification verification = verify(schema, options.nameSpace, questions);
    output.write(options.format == Format::Json ? verificationJson(verification) : verificationText(verification));
    if (verification.firstFailure) report(*verification.firstFailure, options, errors);
    return verification.conforms() ? kFine : kAnsweredError;
}

int complain(Output& errors, const std::exception& failure, int exitCode) {
    tell(errors, "zelhost: " + printable(failure.what()) + '\n');
    return exitCode;
}

int runReported(const Options& options, const OwnTree& tree, Output& output, Output& errors) {
    try {
        const Choice choice = choose(options, tree);
        if (!choice.scenario.empty()) setenv("ZELCHIP_SCENARIO", choice.scenario.c_str(), 1);
        if (options.command == Command::Verify) {
            return verifyAnswers(options, choice, schemaFiles(options, tree), output, errors);
        }
        const auto run = options.command == Command::Watch ? askAgain : ask;
        return run(options, choice, output, errors);
    } catch (const UsageError& failure) {
        return complain(errors, failure, kWrongUsage);
    } catch (const mof::MofError& failure) {
        return complain(errors, failure, kWrongUsage);
    } catch (const broker::LoadError& failure) {
        return complain(errors, failure, kNotLoaded);
    } catch (const std::exception& failure) {
        return complain(errors, failure, kAnsweredError);
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

}  // namespace

int run(const Options& options, const OwnTree& tree) {
    const ProviderOutput providerOutput(options.providerOutput);
    Output output(providerOutput.standardOutput());
    Output errors(providerOutput.standardError());
    const int exitCode = runReported(options, tree, output, errors);
    tell(errors, marked(providerOutput.collected()));
    return exitCode;
}

}  // namespace host
