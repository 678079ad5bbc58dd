// A round of the model against the requests that it makes, both through the same loaded provider.
#include <benchmark/benchmark.h>

#include <stdexcept>

#include "FakeClock.h"
#include "Terminal.h"
#include "health/SensorRounds.h"
#include "source/Session.h"

namespace {

const broker::ObjectPath CLASS_PATH{"", "root/cimv2", "TQS_NumericSensor", {}};

// A provider of so many sensors, none of which is due: the chip is not measured.
host::Session sessionOf(const benchmark::State& state) {
    timeval now{};
    gettimeofday(&now, nullptr);
    fakeclock::set(now);
    playTerminal(static_cast<int>(state.range(0)));
    return {PROVIDER_LIBRARY, "SensorProvider"};
}

void require(const broker::Status& status, std::size_t answered, const benchmark::State& state) {
    if (status.rc == CMPI_RC_OK && answered == static_cast<std::size_t>(state.range(0))) return;
    throw std::runtime_error("a round is not complete");
}

void model(benchmark::State& state) {
    host::Session session = sessionOf(state);
    host::SensorRounds rounds(session, "root/cimv2");
    for (auto _ : state) {
        const host::Round round = rounds.next();
        require(round.status, round.sensors.size(), state);
    }
}

void requests(benchmark::State& state) {
    host::Session session = sessionOf(state);
    for (auto _ : state) {
        const broker::Reply names = session.enumerateInstanceNames(CLASS_PATH);
        const broker::Reply instances = session.enumerateInstances(CLASS_PATH);
        require(instances.status, names.paths.size(), state);
    }
}

}  // namespace

BENCHMARK(model)->Name("round/model")->Arg(14)->Arg(100)->Arg(1000);
BENCHMARK(requests)->Name("round/requests")->Arg(14)->Arg(100)->Arg(1000);
