// From the factory to the end of cleanup, against the chip's calls alone.
#include <benchmark/benchmark.h>

#include <stdexcept>

#include "Stage.h"
#include "Terminal.h"
#include "chip.h"

static void startUpProvider(benchmark::State& state) {
    Stage& stage = Stage::get();
    for (auto _ : state) stage.startAndStop(static_cast<int>(state.range(0)));
}
BENCHMARK(startUpProvider)->Name("startUp/provider")->RangeMultiplier(10)->Range(10, 1000);

static void startUpFloor(benchmark::State& state) {
    for (auto _ : state) {
        playTerminal(static_cast<int>(state.range(0)));
        CChip chip;
        CSensorHandleList handles;
        if (chip.Initialise() != 0 || chip.EnumerateSensorHandles(handles) != 0) throw std::runtime_error("no chip");
        for (const unsigned handle : handles) {
            CSensorInformation information{};
            CSensorReading reading{0, READING_PRESET};
            chip.GetSensorInformation(handle, information);
            chip.ReadSensor(handle, reading);
            benchmark::DoNotOptimize(reading);
        }
    }
}
BENCHMARK(startUpFloor)->Name("startUp/floor")->RangeMultiplier(10)->Range(10, 1000);
