// One sensor by its name: the first, which is compared alone, and the last, before which all others are compared.
#include <benchmark/benchmark.h>

#include "Stage.h"

static void firstInstance(benchmark::State& state, CMPIInstanceMI* (Stage::*who)()) {
    Stage& stage = Stage::get();
    stage.setSensors(static_cast<int>(state.range(0)));
    CMPIInstanceMI* mi = (stage.*who)();
    for (auto _ : state) stage.askInstance(mi, 0);
}
BENCHMARK_CAPTURE(firstInstance, provider, &Stage::provider)->RangeMultiplier(10)->Range(10, 10000);
BENCHMARK_CAPTURE(firstInstance, floor, &Stage::floor)->RangeMultiplier(10)->Range(10, 10000);

static void lastInstance(benchmark::State& state, CMPIInstanceMI* (Stage::*who)()) {
    Stage& stage = Stage::get();
    const int count = static_cast<int>(state.range(0));
    stage.setSensors(count);
    CMPIInstanceMI* mi = (stage.*who)();
    for (auto _ : state) stage.askInstance(mi, count - 1);
}
BENCHMARK_CAPTURE(lastInstance, provider, &Stage::provider)->RangeMultiplier(10)->Range(10, 10000);
BENCHMARK_CAPTURE(lastInstance, floor, &Stage::floor)->RangeMultiplier(10)->Range(10, 10000);

// As lastInstance, but the reading of the one sensor is due.
static void dueInstance(benchmark::State& state, CMPIInstanceMI* (Stage::*who)()) {
    Stage& stage = Stage::get();
    const int count = static_cast<int>(state.range(0));
    stage.setSensors(count);
    CMPIInstanceMI* mi = (stage.*who)();
    for (auto _ : state) {
        stage.advanceToNextReading();
        stage.askInstance(mi, count - 1);
    }
}
BENCHMARK_CAPTURE(dueInstance, provider, &Stage::provider)->RangeMultiplier(10)->Range(10, 10000);
BENCHMARK_CAPTURE(dueInstance, floor, &Stage::floor)->RangeMultiplier(10)->Range(10, 10000);
