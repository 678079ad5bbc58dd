// Plays the steps of a group in the guest: an object manager with the provider loaded, on the guest's own clock, which
// jumps where everybody waits.
//
//     chip_session FILE OUTPUT
//
// OUTPUT takes what it reports. The steps, besides those of GuestSteps:
//
//     start          loads and makes the provider
//     stop           has the provider clean up, and unloads it
//     readings       a second later, enumerates the instances; shows each sensor's name and reading
//     changes        the same, with only the sensors whose readings are others than the last time
//     read NAME      a second later, gets one instance and shows its reading
//     log            gets the event log and shows its lines and properties
//     requests COUNT FILE
//                    so many rounds, a second apart, of an enumeration, one instance and, now and then, the event log.
//                    Before each third round FILE's next line is played, VALUE PATH: writes the value there. Shows all
//                    readings that each sensor had.
//     descriptors    shows how many file descriptors are open
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <map>
#include <memory>
#include <set>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "CimText.h"
#include "GuestSteps.h"
#include "OpenDescriptors.h"
#include "broker/Broker.h"
#include "broker/ProviderLibrary.h"

namespace {

constexpr char SENSOR_CLASS[] = "TQS_NumericSensor";
constexpr char LOG_CLASS[] = "TQS_SystemEventLog";
constexpr char LOG_NAME[] = "Quorvel POS System Event Log";

broker::ObjectPath pathOf(const std::string& className) {
    broker::ObjectPath path;
    path.nameSpace = "root/cimv2";
    path.className = className;
    return path;
}

broker::ObjectPath pathOf(const std::string& className, const std::string& name) {
    broker::ObjectPath path = pathOf(className);
    path.keys.push_back({"Name", broker::Value::ofText(name)});
    return path;
}

std::string textOf(const broker::Value* value) {
    if (value == nullptr) return "none";
    return value->isText() ? value->text : std::to_string(value->signedNumber);
}

// A loaded provider, as long as an object manager has it.
struct Manager {
    broker::Broker broker;
    broker::ProviderLibrary library{"/lib/libzelsensors.so.0"};
    broker::InstanceProvider provider{library, "SensorProvider", broker};
};

// One write at a time to the kernel's files, in a file's order and again from its start. What the kernel refuses is
// left: a chip may be there already, or no longer.
class Disturbance {
  public:
    explicit Disturbance(const std::string& file) {
        std::ifstream lines(file);
        for (std::string line; std::getline(lines, line);) m_lines.push_back(line);
        if (m_lines.empty()) throw std::runtime_error(file + ": no lines");
    }

    void next() {
        const std::string& line = m_lines[m_next++ % m_lines.size()];
        const std::size_t path = line.rfind(' ') + 1;
        std::ofstream(line.substr(path)) << line.substr(0, path - 1) << std::flush;
    }

  private:
    std::vector<std::string> m_lines;
    std::size_t m_next = 0;
};

using Readings = std::vector<std::pair<std::string, std::string>>;  // name and reading, in the provider's order

class Session {
  public:
    explicit Session(const char* output) : m_steps(output, steps()) {}

    void play(const char* file) { m_steps.play(file); }

  private:
    broker::InstanceProvider& provider() const {
        if (m_manager == nullptr) throw std::runtime_error("no provider; a start is missing");
        return m_manager->provider;
    }

    // The provider reads a sensor anew when a second has passed.
    static void aSecondLater() { usleep(1050000); }

    Readings enumerate() {
        const broker::Reply reply = provider().enumerateInstances(pathOf(SENSOR_CLASS));
        if (reply.status.rc != CMPI_RC_OK) m_output << "status " << reply.status.rc << '\n';
        Readings readings;
        for (const broker::Instance& instance : reply.instances)
            readings.emplace_back(textOf(instance.findProperty("Name")),
                                  textOf(instance.findProperty("CurrentReading")));
        return readings;
    }

    void showReadings(bool onlyChanges) {
        aSecondLater();
        const Readings readings = enumerate();
        for (const auto& reading : readings) {
            if (onlyChanges && std::find(m_last.begin(), m_last.end(), reading) != m_last.end()) continue;
            m_output << reading.first << ": " << reading.second << '\n';
        }
        m_last = readings;
    }

    std::string read(const std::string& name) {
        const broker::Reply reply = provider().getInstance(pathOf(SENSOR_CLASS, name));
        if (reply.status.rc != CMPI_RC_OK || reply.instances.size() != 1)
            return "status " + std::to_string(reply.status.rc);
        return textOf(reply.instances[0].findProperty("CurrentReading"));
    }

    void showReading(const std::string& name) {
        aSecondLater();
        m_output << name << ": " << read(name) << '\n';
    }

    void showLog() {
        const broker::Reply reply = provider().getInstance(pathOf(LOG_CLASS, LOG_NAME));
        if (reply.status.rc != CMPI_RC_OK || reply.instances.size() != 1) {
            m_output << "status " << reply.status.rc << '\n';
            return;
        }
        const broker::Instance& log = reply.instances[0];
        const broker::Value* lines = log.findProperty("LogLines");
        if (lines != nullptr)
            for (const broker::Value& line : lines->elements) m_output << line.text << '\n';
        for (const char* property :
             {"LogValid", "LogFull", "LogMultipleEventCountIncrement", "LogMultipleEventTimeWindow"})
            m_output << property << ' ' << describe(*log.findProperty(property)) << '\n';
    }

    void request(const std::string& argument) {
        std::istringstream words(argument);
        unsigned count = 0;
        std::string file;
        words >> count >> file;
        Disturbance disturbance(file);
        std::map<std::string, std::set<std::string>> seen;
        for (unsigned i = 0; i < count; ++i) {
            aSecondLater();
            if (i % 3 == 0) disturbance.next();
            const Readings readings = enumerate();
            for (const auto& [name, reading] : readings) seen[name].insert(reading);
            const std::string& one = readings.at(i % readings.size()).first;
            seen[one].insert(read(one));
            if (i % 16 == 0) provider().getInstance(pathOf(LOG_CLASS, LOG_NAME));
        }
        for (const auto& [name, readings] : seen) {
            m_output << name << ':';
            for (const std::string& reading : readings) m_output << ' ' << reading;
            m_output << '\n';
        }
    }

    std::map<std::string, GuestSteps::Step> steps() {
        using Argument = const std::string&;
        return {
            {"start", [this](Argument) { m_manager = std::make_unique<Manager>(); }},
            {"stop", [this](Argument) { m_manager.reset(); }},
            {"readings", [this](Argument) { showReadings(false); }},
            {"changes", [this](Argument) { showReadings(true); }},
            {"read", [this](Argument name) { showReading(name); }},
            {"log", [this](Argument) { showLog(); }},
            {"requests", [this](Argument argument) { request(argument); }},
            {"descriptors", [this](Argument) { m_output << openDescriptors() << '\n'; }},
        };
    }

    GuestSteps m_steps;
    std::ostream& m_output = m_steps.output();
    std::unique_ptr<Manager> m_manager;
    Readings m_last;
};

}  // namespace

int main(int count, char** arguments) {
    if (count != 3) return EXIT_FAILURE;
    try {
        Session(arguments[2]).play(arguments[1]);
    } catch (const std::exception& error) {
        std::cerr << error.what() << '\n';
        return EXIT_FAILURE;
    }
    return EXIT_SUCCESS;
}
