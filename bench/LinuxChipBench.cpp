// The chip library on Linux's own drivers, against libsensors alone, on a made-up tree of fifty sensors in memory.
#include <benchmark/benchmark.h>
#include <sensors/sensors.h>

#include <memory>
#include <stdexcept>
#include <string>

#include "Sandbox.h"
#include "SensorTree.h"
#include "chip.h"

namespace {

constexpr int CHIPS = 10;
constexpr int SENSORS_EACH = 5;

void makeTree() {
    static bool isMade = false;
    if (isMade) return;
    isMade = true;
    sandbox::hideHardware();
    sensortree::addAdapter(0, "SMBus I801 adapter at 0400");
    for (int chip = 0; chip < CHIPS; ++chip) {
        sensortree::Attributes attributes;
        for (int i = 0; i < SENSORS_EACH; ++i) {
            const std::string feature = "in" + std::to_string(i);
            attributes[feature + "_input"] = "3322";
            attributes[feature + "_min"] = "3000";
            attributes[feature + "_max"] = "3600";
            attributes[feature + "_label"] = "Rail " + std::to_string(chip * SENSORS_EACH + i);
        }
        sensortree::addI2c(chip, "max16065", 0, static_cast<unsigned>(0x50 + chip), attributes);
    }
}

struct InitialisedChip {
    InitialisedChip() {
        if (chip.Initialise() != 0 || chip.EnumerateSensorHandles(handles) != 0) throw std::runtime_error("no chip");
        if (handles.size() != CHIPS * SENSORS_EACH) throw std::runtime_error("not the tree's sensors");
    }
    CChip chip;
    CSensorHandleList handles;
};

void read(benchmark::State& state) {
    makeTree();
    InitialisedChip chip;
    CSensorReading reading{0, READING_PRESET};
    for (auto _ : state) {
        chip.chip.ReadSensor(chip.handles.front(), reading);
        benchmark::DoNotOptimize(reading.value);
    }
}
BENCHMARK(read)->Name("linuxRead/ReadSensor");

struct InitialisedLibrary {
    InitialisedLibrary() {
        if (sensors_init(nullptr) != 0) throw std::runtime_error("no sensors");
    }
    ~InitialisedLibrary() { sensors_cleanup(); }
    InitialisedLibrary(const InitialisedLibrary&) = delete;
    InitialisedLibrary& operator=(const InitialisedLibrary&) = delete;
};

void readAlone(benchmark::State& state) {
    makeTree();
    const InitialisedLibrary library;
    int number = 0;
    const sensors_chip_name* chip = sensors_get_detected_chips(nullptr, &number);
    double value = 0;
    for (auto _ : state) {
        sensors_get_value(chip, 0, &value);
        benchmark::DoNotOptimize(value);
    }
}
BENCHMARK(readAlone)->Name("linuxRead/sensors_get_value");

void startUp(benchmark::State& state) {
    makeTree();
    for (auto _ : state) const InitialisedChip chip;
}
BENCHMARK(startUp)->Name("linuxStartUp/Initialise")->Unit(benchmark::kMicrosecond);

void startUpAlone(benchmark::State& state) {
    makeTree();
    for (auto _ : state) const InitialisedLibrary library;
}
BENCHMARK(startUpAlone)->Name("linuxStartUp/sensors_init")->Unit(benchmark::kMicrosecond);

}  // namespace
