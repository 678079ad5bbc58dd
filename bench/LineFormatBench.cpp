// The making of a line's text alone, against spdlog's for a line of the same shape.
#include <benchmark/benchmark.h>
#include <spdlog/pattern_formatter.h>

#include <string>

#include "LinePattern.h"
#include "LogRecord.h"

static void formatLine(benchmark::State& state) {
    std::string message = MESSAGE;
    std::string line;
    for (auto _ : state) {
        LogRecord record(LOG_INFO, message);
        record.GetLogLine(line);
        benchmark::DoNotOptimize(line);
    }
}
BENCHMARK(formatLine)->Name("lineFormat/LogRecord");

static void formatLineSpdlog(benchmark::State& state) {
    spdlog::pattern_formatter formatter(LINE_PATTERN);
    spdlog::memory_buf_t line;
    for (auto _ : state) {
        line.clear();
        const spdlog::details::log_msg message(spdlog::source_loc{}, "bench", spdlog::level::info, MESSAGE);
        formatter.format(message, line);
        benchmark::DoNotOptimize(line);
    }
}
BENCHMARK(formatLineSpdlog)->Name("lineFormat/spdlog");
