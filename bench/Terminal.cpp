#include "Terminal.h"

#include <cstdlib>
#include <fstream>
#include <set>
#include <string>

namespace {

// As those of chipsim/scenarios/thousand-sensors.toml, but for the reading.
constexpr char SENSOR[] = R"(
[[sensor]]
handle = 0x1000
name = "Probe {}"
sensor-type = "temperature"
base-units = "degrees-c"
unit-modifier = -1
accuracy = 2
resolution = 1
hysteresis = 10
min-readable = -400
max-readable = 1250
nominal-reading = 400
lower-threshold-non-critical = 50
lower-threshold-critical = 0
upper-threshold-non-critical = 650
upper-threshold-critical = 750
upper-threshold-fatal = 850
reading = 400
)";

}  // namespace

void playTerminal(int sensors) {
    const std::string path = "/etc/tarn/" + std::to_string(sensors) + "-sensors.toml";  // in the private directory
    static std::set<int> written;
    if (written.insert(sensors).second) std::ofstream(path) << SENSOR << "count = " << sensors << "\n";
    setenv("ZELCHIP_SCENARIO", path.c_str(), 1);
}
