// The names of all sensors.
#include <benchmark/benchmark.h>

#include "Stage.h"

static void names(benchmark::State& state, CMPIInstanceMI* (Stage::*who)()) {
    Stage& stage = Stage::get();
    stage.setSensors(static_cast<int>(state.range(0)));
    CMPIInstanceMI* mi = (stage.*who)();
    for (auto _ : state) stage.askNames(mi);
}
BENCHMARK_CAPTURE(names, provider, &Stage::provider)->RangeMultiplier(10)->Range(10, 10000);
BENCHMARK_CAPTURE(names, floor, &Stage::floor)->RangeMultiplier(10)->Range(10, 10000);
