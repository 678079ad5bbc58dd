// A round of `zelhost metrics` with its page, and the same round without one. Every reading is another one each time.
// The first round is not counted in either: the labels' texts are made in it, and kept.
#include <benchmark/benchmark.h>

#include <cstddef>
#include <cstdlib>
#include <fstream>
#include <memory>
#include <stdexcept>
#include <string>

#include "FakeClock.h"
#include "cli/Metrics.h"
#include "source/Session.h"

namespace {

constexpr char NAMESPACE[] = "root/cimv2";

// As playTerminal(), but for the readings.
void play(int sensors) {
    const std::string path = "/etc/tarn/moving.toml";  // in the private directory
    std::ofstream(path) << "[[sensor]]\nhandle = 0x1000\nname = \"Probe {}\"\nsensor-type = \"temperature\"\n"
                           "base-units = \"degrees-c\"\nunit-modifier = -1\n"
                           "lower-threshold-non-critical = 50\nlower-threshold-critical = 0\n"
                           "upper-threshold-non-critical = 650\nupper-threshold-critical = 750\n"
                           "upper-threshold-fatal = 850\n"
                           "reading = { kind = \"ramp\", from = 100, to = 600, steps = 500, every = \"call\" }\n"
                           "count = "
                        << sensors << "\n";
    setenv("ZELCHIP_SCENARIO", path.c_str(), 1);
}

// The provider with so many sensors, all of which are due at each round.
class Provider {
  public:
    explicit Provider(int sensors) {
        timeval now{};
        gettimeofday(&now, nullptr);
        fakeclock::set(now);
        play(sensors);
        m_session = std::make_unique<host::Session>(PROVIDER_LIBRARY, "SensorProvider");
    }

    host::Session& due() {
        fakeclock::advanceMilliseconds(1000);
        return *m_session;
    }

  private:
    std::unique_ptr<host::Session> m_session;
};

void require(bool holds) {
    if (!holds) throw std::runtime_error("a request failed");
}

}  // namespace

static void metricsRound(benchmark::State& state) {
    Provider provider(static_cast<int>(state.range(0)));
    host::MetricsRounds rounds(provider.due(), NAMESPACE, {true, true});
    require(!rounds.next().failure);
    for (auto _ : state) {
        provider.due();
        const host::MetricsRounds::Page page = rounds.next();
        require(!page.failure);
        benchmark::DoNotOptimize(page.text.data());
    }
}
BENCHMARK(metricsRound)->Arg(14)->Arg(100)->Arg(1000);

static void metricsRequests(benchmark::State& state) {
    Provider provider(static_cast<int>(state.range(0)));
    host::SensorRounds sensors(provider.due(), NAMESPACE);
    host::EventLogRounds eventLog(provider.due(), NAMESPACE);
    require(sensors.next().status.rc == CMPI_RC_OK && eventLog.next().log);
    for (auto _ : state) {
        provider.due();
        const host::Round round = sensors.next();
        require(round.sensors.size() == static_cast<std::size_t>(state.range(0)) && eventLog.next().log);
    }
}
BENCHMARK(metricsRequests)->Arg(14)->Arg(100)->Arg(1000);
