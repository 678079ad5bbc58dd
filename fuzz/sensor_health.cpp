// Terminals of any sensors, some of which fail, and a source that may be down: each round of the model must show
// every sensor once, in order, as a plain reading of its numbers says; a failing one costs itself alone; no instances
// are enumerated where a drive is; the source is restarted once in a round at most.
#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <set>
#include <string>
#include <vector>

#include "FakeSource.h"
#include "Input.h"
#include "NaiveSensor.h"
#include "Property.h"
#include "health/SensorRounds.h"

namespace {

using broker::ObjectPath;
using broker::Reply;
using host::RoundTiming;

constexpr unsigned MOST_SENSORS = 7;

struct Terminal {
    struct Place {
        NaiveSensor sensor;
        broker::Instance instance;
        CMPIrc failure = CMPI_RC_OK;
    };
    std::vector<Place> places;
    bool isDown = false;
    bool canRestart = false;
    unsigned restarts = 0;
    unsigned enumerations = 0;

    Reply names() const {
        Reply reply;
        if (isDown) reply.status.rc = CMPI_RC_ERR_METHOD_NOT_AVAILABLE;
        if (isDown) return reply;
        for (const Place& place : places) reply.paths.push_back(place.instance.path);
        return reply;
    }
    Reply instances() {
        ++enumerations;
        Reply reply;
        for (const Place& place : places) {
            reply.status.rc = place.failure;
            if (place.failure != CMPI_RC_OK) break;
            reply.instances.push_back(place.instance);
        }
        return reply;
    }
    Reply get(const std::string& name) const {
        Reply reply;
        for (const Place& place : places) {
            if (place.sensor.name != name) continue;
            reply.status.rc = place.failure;
            if (place.failure == CMPI_RC_OK) reply.instances.push_back(place.instance);
        }
        return reply;
    }
};

Terminal takeTerminal(Input& input) {
    static constexpr std::array<CMPIrc, 4> failures{CMPI_RC_ERR_FAILED, CMPI_RC_ERR_METHOD_NOT_AVAILABLE,
                                                    CMPI_RC_ERR_ACCESS_DENIED, CMPI_RC_ERR_NOT_FOUND};
    Terminal terminal;
    const unsigned flags = input.byte();
    terminal.isDown = (flags & 3) == 3;
    terminal.canRestart = (flags & 4) != 0;
    std::set<std::string> names;
    for (unsigned left = input.choice(MOST_SENSORS); left > 0; --left) {
        Terminal::Place place;
        place.sensor = NaiveSensor::made([&input](unsigned count) { return input.choice(count); });
        place.instance = place.sensor.instance();
        if (!names.insert(place.sensor.name).second) continue;
        if (input.choice(8) == 7) place.failure = failures.at(input.choice(failures.size()));
        terminal.places.push_back(std::move(place));
    }
    return terminal;
}

FakeSource sourceOf(Terminal& terminal) {
    FakeSource source;
    source.names = [&terminal](const ObjectPath& /*path*/) { return terminal.names(); };
    source.instances = [&terminal](const ObjectPath& /*path*/) { return terminal.instances(); };
    source.get = [&terminal](const ObjectPath& path) { return terminal.get(path.keys.at(0).value.text); };
    source.restarted = [&terminal] {
        ++terminal.restarts;
        if (terminal.canRestart) terminal.isDown = false;
        return terminal.canRestart;
    };
    return source;
}

void holdRound(const host::Round& round, const Terminal& terminal, bool wasDown) {
    if (wasDown && !terminal.canRestart) {
        require(round.sensors.empty() && round.status.rc == CMPI_RC_ERR_METHOD_NOT_AVAILABLE, "a source that is down");
        return;
    }
    require(round.status.rc == CMPI_RC_OK, "status of a round");
    require(round.sensors.size() == terminal.places.size(), "every sensor is shown");
    bool hasDrive = false;
    for (std::size_t i = 0; i < round.sensors.size(); ++i) {
        const Terminal::Place& place = terminal.places[i];
        const host::Sensor& shown = round.sensors[i];
        hasDrive = hasDrive || host::isNameOfDriveSensor(place.sensor.name);
        require(shown.name == place.sensor.name, "order of the sensors");
        if (place.failure != CMPI_RC_OK) {
            require(shown.failure && shown.failure->rc == place.failure && !shown.reading, "a sensor that fails");
        } else {
            require(place.sensor.differenceFrom(shown).empty(), "what a sensor means");
        }
    }
    require(!hasDrive || terminal.enumerations == 0, "no enumeration where a drive is");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Input input(data, size);
    Terminal terminal = takeTerminal(input);
    FakeSource source = sourceOf(terminal);
    RoundTiming::Clock::time_point now;
    std::chrono::milliseconds setBack{0};
    host::SensorRounds rounds(
        source, "root/cimv2",
        {[&now] { return now; }, [&now](RoundTiming::Clock::duration time) { now += time; },
         [&] { return std::chrono::system_clock::time_point(now.time_since_epoch() - setBack); }});
    for (unsigned left = 3; left > 0; --left) {
        const bool wasDown = terminal.isDown;
        terminal.restarts = 0;
        const host::Round round = rounds.next();
        require(terminal.restarts <= 1, "one restart in a round");
        holdRound(round, terminal, wasDown);
        // Sensors recover and fail only after the second in which the provider would show an old reading.
        now += std::chrono::milliseconds(1100);
        if (input.choice(4) == 3) setBack += std::chrono::milliseconds(input.choice(2000));
        if (!terminal.places.empty())
            terminal.places[input.choice(static_cast<unsigned>(terminal.places.size()))].failure = CMPI_RC_OK;
        terminal.isDown = input.choice(8) == 7;
    }
    return 0;
}
