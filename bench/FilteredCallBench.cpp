// A log call that the level filters, against an empty virtual call.
#include <benchmark/benchmark.h>

#include "log.h"

namespace {

class Nothing {
  public:
    virtual ~Nothing() = default;
    virtual int level() { return 0; }
};

}  // namespace

static void filteredLog(benchmark::State& state) {
    for (auto _ : state) Log(LOG_DEBUG, "Class::operation - value=%d", 42);
}
BENCHMARK(filteredLog)->Name("filteredCall/Log");

static void filteredLogQuick(benchmark::State& state) {
    for (auto _ : state) LogQuick(LOG_DEBUG, "Class::operation");
}
BENCHMARK(filteredLogQuick)->Name("filteredCall/LogQuick");

static void emptyVirtualCall(benchmark::State& state) {
    Nothing nothing;
    Nothing* hidden = &nothing;
    benchmark::DoNotOptimize(hidden);  // so that the call stays virtual
    for (auto _ : state) benchmark::DoNotOptimize(hidden->level());
}
BENCHMARK(emptyVirtualCall)->Name("filteredCall/virtual");
