// Keeps the tests off the machine's /etc/tarn, /var/log/tarn and /dev: the process sees directories of its own there.
//
// The test programs of the project link `test_support`, whose main() enters the namespace before any test runs.
// /etc/tarn and /var/log/tarn are empty directories in memory then, also where the machine has none; the rest of /etc
// is the machine's and the rest of /var/log is hidden. Of /dev only null, zero, full, random, urandom, tty, ptmx, pts,
// an empty shm and the links to the standard streams are there. Where the system forbids it, the tests that need it are
// skipped with the reason.
#ifndef ZELSENSORS_TESTS_SANDBOX_H
#define ZELSENSORS_TESTS_SANDBOX_H

#include <string>

namespace sandbox {

// Why there is no private namespace; empty when there is one.
const std::string& whyUnavailable();

// Empties the three directories (what setUp of every test does).
void reset();

// Each writes the whole file, replacing it. Throws std::runtime_error on failure.
void writeLogConfiguration(const std::string& contents);     // /etc/tarn/log.conf
void writeSensorConfiguration(const std::string& contents);  // /etc/tarn/sensor.conf

// Hides the machine's sensors and its firmware too: /sys/class, /sys/devices and /sys/firmware are empty directories in
// memory from now on, which a test fills as it likes and reset() empties, and libsensors has no settings. /sys itself
// stays the kernel's, as libsensors asks. Before the first thread.
void hideHardware();
void writeLibsensorsConfiguration(const std::string& contents);  // /etc/sensors3.conf; throws std::runtime_error

// The default log file's contents; empty when there is none.
std::string readLog();

}  // namespace sandbox

// At the start of a test, or in SetUp.
#define REQUIRE_SANDBOX()                                                                  \
    do {                                                                                   \
        if (!sandbox::whyUnavailable().empty()) GTEST_SKIP() << sandbox::whyUnavailable(); \
        sandbox::reset();                                                                  \
    } while (false)

#endif
