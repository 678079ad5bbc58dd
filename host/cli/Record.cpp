#include "cli/Record.h"

#include <sys/stat.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <exception>
#include <vector>

#include "cli/Ending.h"
#include "cli/Failure.h"
#include "cli/ProgressLine.h"
#include "format/ScenarioText.h"
#include "health/Recording.h"
#include "text/ReplacedFile.h"
#include "text/Utf8.h"

namespace host {
namespace {

using Clock = Ending::Clock;
using Reporting = std::function<void(const std::string&)>;

std::chrono::nanoseconds nanosecondsOf(double seconds) {
    return std::chrono::nanoseconds(static_cast<std::int64_t>(seconds * 1e9));
}

// "0:09:58"
std::string clockText(std::chrono::nanoseconds time) {
    const auto seconds = std::chrono::ceil<std::chrono::seconds>(std::max(time, std::chrono::nanoseconds(0))).count();
    char text[48];
    std::snprintf(text, sizeof text, "%lld:%02lld:%02lld", static_cast<long long>(seconds / 3600),
                  static_cast<long long>(seconds / 60 % 60), static_cast<long long>(seconds % 60));
    return text;
}

std::string counted(std::size_t count, const std::string& noun) {
    return std::to_string(count) + ' ' + noun + (count == 1 ? "" : "s");
}

std::string progressText(const Recorder::Counts& counts, std::chrono::nanoseconds left) {
    std::string text = "recording: " + clockText(left) + " left, " + counted(counts.rounds, "round") + ", " +
                       counted(counts.sensors, "sensor");
    if (counts.unread > 0) text += ", " + std::to_string(counts.unread) + " without a reading";
    return text + "; Ctrl-C ends it";
}

// The file, and what goes into it.
class RecordedFile {
  public:
    RecordedFile(const Options& options, const std::string& heading)
        : m_file(options.record.file, options.record.isForced ? ReplacedFile::Kind::Lasting : ReplacedFile::Kind::New),
          m_choice{options.record.isRedacted ? "A recorded terminal." : heading, options.record.isRedacted} {}

    // Gives what it does not hold.
    std::vector<std::string> write(const Recording& recording) const {
        const ScenarioText text = scenarioText(recording, m_choice);
        m_file.replace(text.text);
        return text.losses;
    }

  private:
    ReplacedFile m_file;
    ScenarioChoice m_choice;
};

void recordRounds(Recorder& recorder, const Options& options, ProgressLine& line, Ending& ending) {
    const std::chrono::nanoseconds interval = nanosecondsOf(options.every > 0 ? options.every : 1);
    const Clock::time_point start = Clock::now();
    const Clock::time_point end = start + nanosecondsOf(options.record.duration);
    Clock::time_point next = start;
    do {
        recorder.round();
        next = nextMultiple(start, interval, Clock::now());
        line.show(progressText(recorder.counts(), end - Clock::now()));
    } while (next < end && ending.waitUntil(next));
}

// A recording that cannot be played makes no file.
void save(const RecordedFile& file, const Recording& recording, const Reporting& report) {
    if (!isPlayable(recording.start)) return;
    for (const std::string& loss : file.write(recording)) report(loss);
}

// What is left to do where a request does not return; gives the exit status.
int abandon(const RecordedFile& file, const Recorder& recorder, const Reporting& report) noexcept {
    try {
        const Recording recording = recorder.recording();
        if (recording.times.empty()) {
            report("nothing has answered yet, so nothing is recorded");
            return ExitCode::AnsweredError;
        }
        save(file, recording, report);
        return recording.start.rc == CMPI_RC_OK ? ExitCode::Fine : ExitCode::AnsweredError;
    } catch (const OutputError& error) {
        report(printable(error.what()));
        return ExitCode::NotWritten;
    } catch (const std::exception& error) {
        report(printable(error.what()));
        return ExitCode::AnsweredError;
    }
}

}  // namespace

void refuseUnwritable(const RecordOptions& options) {
    struct stat status {};
    if (!options.isForced && lstat(options.file.c_str(), &status) == 0) {
        throw UsageError(options.file + " is there already; --force replaces it");
    }
    ReplacedFile(options.file).foresee();
}

RecordOutcome record(const Options& options, Source& source, const std::string& heading, Output& progress,
                     const std::function<void(const std::string&)>& report) {
    const RecordedFile file(options, heading);
    Recorder recorder(source, options.request.nameSpace);
    std::exception_ptr interruption;
    ProgressLine line(progress);
    constexpr std::chrono::seconds grace(2);
    // A request that does not return shall not cost what was recorded before.
    Ending ending(grace, [&] {
        line.abandon();
        return abandon(file, recorder, report);
    });
    try {
        recordRounds(recorder, options, line, ending);
    } catch (const std::exception&) {
        if (recorder.counts().rounds == 0) throw;
        interruption = std::current_exception();
    }
    // A signal that comes now ends nothing half-way.
    ending.reach();
    line.show("");
    const Recording recording = recorder.recording();
    save(file, recording, report);
    if (interruption) std::rethrow_exception(interruption);
    return {recording.start.rc == CMPI_RC_OK ? std::nullopt : std::make_optional(recording.start)};
}

}  // namespace host
