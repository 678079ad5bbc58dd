// A line that is written and flushed, from one thread and from several, against spdlog's basic file sink with a flush
// on every line, and against nothing but fstat and one write of a line that is ready.
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <spdlog/sinks/basic_file_sink.h>
#include <spdlog/spdlog.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <memory>
#include <string>

#include "LinePattern.h"
#include "log.h"

namespace {

// All files lie side by side in memory, and none grows from one benchmark to the next.
constexpr char LOG_PATH[] = "/var/log/tarn/tarn.log";
constexpr char SPDLOG_PATH[] = "/var/log/tarn/spdlog.log";
constexpr char FLOOR_PATH[] = "/var/log/tarn/floor.log";

void truncateFiles(const benchmark::State&) {
    for (const char* path : {LOG_PATH, SPDLOG_PATH, FLOOR_PATH}) {
        if (truncate(path, 0) != 0) continue;  // not there yet
    }
}

spdlog::logger& peer() {
    static const std::shared_ptr<spdlog::logger> logger = [] {
        auto made = spdlog::basic_logger_mt("bench", SPDLOG_PATH);
        made->set_pattern(LINE_PATTERN);
        made->flush_on(spdlog::level::trace);
        return made;
    }();
    return *logger;
}

}  // namespace

static void writeLine(benchmark::State& state) {
    for (auto _ : state) Log(LOG_INFO, "%s", MESSAGE);
}
BENCHMARK(writeLine)->Name("writtenLine/Log")->Setup(truncateFiles)->ThreadRange(1, 8);

static void writeLineQuick(benchmark::State& state) {
    for (auto _ : state) LogQuick(LOG_INFO, MESSAGE);
}
BENCHMARK(writeLineQuick)->Name("writtenLine/LogQuick")->Setup(truncateFiles)->ThreadRange(1, 1);

static void writeLineSpdlog(benchmark::State& state) {
    spdlog::logger& logger = peer();
    for (auto _ : state) logger.info("{}", MESSAGE);
}
BENCHMARK(writeLineSpdlog)->Name("writtenLine/spdlog")->Setup(truncateFiles)->ThreadRange(1, 8);

// The peer, with the look at the file and the line on standard output that the provider's log owes besides.
static void writeLineSpdlogWithFstat(benchmark::State& state) {
    spdlog::logger& logger = peer();
    const int file = open(SPDLOG_PATH, O_RDONLY | O_CLOEXEC);
    for (auto _ : state) {
        struct stat status {};
        fstat(file, &status);
        std::printf("link count=%ld\n", static_cast<long>(status.st_nlink));
        logger.info("{}", MESSAGE);
    }
    close(file);
}
BENCHMARK(writeLineSpdlogWithFstat)->Name("writtenLine/spdlogWithFstat")->Setup(truncateFiles)->ThreadRange(1, 8);

static void writeLineFloor(benchmark::State& state) {
    const std::string line = std::string("21/11/2026 14:30:00.000\tP[00000a1c] T[f7d3c740]\tInfo \t") + MESSAGE + "\n";
    const int file = open(FLOOR_PATH, O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, 0644);
    for (auto _ : state) {
        struct stat status {};
        fstat(file, &status);
        benchmark::DoNotOptimize(status);
        if (write(file, line.data(), line.size()) < 0) state.SkipWithError("write failed");
    }
    close(file);
}
BENCHMARK(writeLineFloor)->Name("writtenLine/floor")->Setup(truncateFiles)->ThreadRange(1, 8);
