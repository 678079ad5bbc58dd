// What recording costs: a round of it, beside round/model, and loading what an hour of it has written.
#include <benchmark/benchmark.h>

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>

#include "FakeClock.h"
#include "Terminal.h"
#include "chipsim/ScenarioCheck.h"
#include "format/ScenarioText.h"
#include "health/Recording.h"
#include "source/Session.h"

namespace {

constexpr int SECONDS = 3600;
constexpr int SENSORS = 14;
constexpr std::size_t LARGEST_FILE = 1000000;

void require(bool holds, const char* what) {
    if (!holds) throw std::runtime_error(what);
}

// As round/model: none of the sensors is due, and all are known from a round before.
void recordedRound(benchmark::State& state) {
    timeval now{};
    gettimeofday(&now, nullptr);
    fakeclock::set(now);
    playTerminal(static_cast<int>(state.range(0)));
    host::Session session(PROVIDER_LIBRARY, "SensorProvider");
    host::Recorder recorder(session, "root/cimv2");
    recorder.round();
    for (auto _ : state) recorder.round();
    const host::Recorder::Counts counts = recorder.counts();
    require(counts.sensors == static_cast<std::size_t>(state.range(0)) && counts.unread == 0,
            "a round is not complete");
}

// Of an hour at a second: readings of four digits, as fans have.
host::Recording hourRecorded() {
    host::Recording recording;
    for (int i = 0; i < SECONDS; ++i) recording.times.emplace_back(1000 * i + i % 7);
    recording.eventLogFailures.resize(SECONDS);
    for (int i = 0; i < SENSORS; ++i) {
        host::RecordedSensor sensor{"Fan(000000" + std::to_string(10 + i) + ')', {}, {}};
        for (int second = 0; second < SECONDS; ++second) sensor.readings.emplace_back(2000 + (i + second * 37) % 900);
        recording.sensors.push_back(sensor);
    }
    return recording;
}

std::string hoursFile() {
    const std::string path = "/etc/tarn/hour.toml";  // in the private directory
    const std::string text = host::scenarioText(hourRecorded(), {"An hour.", false}).text;
    require(text.size() < LARGEST_FILE, "an hour's recording takes a megabyte or more");
    std::ofstream(path) << text;
    return path;
}

void load(benchmark::State& state) {
    const std::string path = hoursFile();
    for (auto _ : state) require(mistakesOfScenario(path).empty(), "the hour's recording has mistakes");
    std::ifstream file(path, std::ios::ate);
    state.counters["bytes"] = static_cast<double>(file.tellg());
}

// The least that a reader of the file has to do: to have its bytes, and its numbers.
void loadFloor(benchmark::State& state) {
    const std::string path = hoursFile();
    for (auto _ : state) {
        std::ifstream file(path);
        const std::string text{std::istreambuf_iterator<char>(file), {}};
        long sum = 0;
        for (const char* place = text.c_str(); *place != '\0'; ++place) {
            if (*place < '0' || *place > '9') continue;
            char* end = nullptr;
            sum += std::strtol(place, &end, 10);
            place = end - 1;
        }
        benchmark::DoNotOptimize(sum);
    }
}

}  // namespace

BENCHMARK(recordedRound)->Name("round/recording")->Arg(14)->Arg(100)->Arg(1000);
BENCHMARK(load)->Name("recordingLoad/scenario");
BENCHMARK(loadFloor)->Name("recordingLoad/floor");
