#include "cli/Record.h"

#include <sys/stat.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>

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

ScenarioText textOf(const Recorder& recorder, const Options& options, const std::string& heading) {
    return scenarioText(recorder.recording(),
                        {options.record.isRedacted ? "A recorded terminal." : heading, options.record.isRedacted});
}

ReplacedFile fileOf(const RecordOptions& options) {
    return ReplacedFile(options.file, options.isForced ? ReplacedFile::Kind::Lasting : ReplacedFile::Kind::New);
}

}  // namespace

void refuseExisting(const RecordOptions& options) {
    struct stat status {};
    if (options.isForced || lstat(options.file.c_str(), &status) != 0) return;
    throw UsageError(options.file + " is there already; --force replaces it");
}

RecordOutcome record(const Options& options, Source& source, const std::string& heading, Output& progress,
                     const std::function<void(const std::string&)>& report) {
    const ReplacedFile file = fileOf(options.record);
    const std::chrono::nanoseconds interval = nanosecondsOf(options.every > 0 ? options.every : 1);
    const std::chrono::nanoseconds duration = nanosecondsOf(options.record.duration);
    Recorder recorder(source, options.request.nameSpace);
    {
        ProgressLine line(progress);
        constexpr std::chrono::seconds grace(2);
        // A request that does not return shall not cost what was recorded before.
        Ending ending(grace, [&] {
            try {
                if (recorder.counts().rounds > 0) file.replace(textOf(recorder, options, heading).text);
            } catch (const std::exception& failure) {
                report(failure.what());
            }
        });
        const Clock::time_point start = Clock::now();
        Clock::time_point next = start;
        do {
            recorder.round();
            next = nextMultiple(start, interval, Clock::now());
            line.show(progressText(recorder.counts(), start + duration - Clock::now()));
        } while (next < start + duration && ending.waitUntil(next));
    }
    const Recording recording = recorder.recording();
    const bool hasStarted = recording.start.rc == CMPI_RC_OK;
    if (!hasStarted && recording.start.rc != CMPI_RC_ERR_METHOD_NOT_AVAILABLE) return {recording.start, false};
    const ScenarioText text = textOf(recorder, options, heading);
    file.replace(text.text);
    for (const std::string& loss : text.losses) report(loss);
    return {hasStarted ? std::nullopt : std::make_optional(recording.start), true};
}

}  // namespace host
