// The instances of all sensors, with readings that are fresh and with readings that are due.
#include <benchmark/benchmark.h>

#include "Stage.h"

static void freshInstances(benchmark::State& state, CMPIInstanceMI* (Stage::*who)()) {
    Stage& stage = Stage::get();
    stage.setSensors(static_cast<int>(state.range(0)));
    CMPIInstanceMI* mi = (stage.*who)();
    for (auto _ : state) stage.askInstances(mi);
}
BENCHMARK_CAPTURE(freshInstances, provider, &Stage::provider)->RangeMultiplier(10)->Range(10, 10000);
BENCHMARK_CAPTURE(freshInstances, floor, &Stage::floor)->RangeMultiplier(10)->Range(10, 10000);

static void dueInstances(benchmark::State& state, CMPIInstanceMI* (Stage::*who)()) {
    Stage& stage = Stage::get();
    stage.setSensors(static_cast<int>(state.range(0)));
    CMPIInstanceMI* mi = (stage.*who)();
    for (auto _ : state) {
        stage.advanceToNextReading();
        stage.askInstances(mi);
    }
}
BENCHMARK_CAPTURE(dueInstances, provider, &Stage::provider)->RangeMultiplier(10)->Range(10, 10000);
BENCHMARK_CAPTURE(dueInstances, floor, &Stage::floor)->RangeMultiplier(10)->Range(10, 10000);
