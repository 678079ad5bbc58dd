// The simulator's reader of scenario files. The input is the file. It is either accepted, and then makes a terminal
// that answers as the file's own lists say, or refused with lines of the form "file:line: what is wrong, expected
// what", whose line is one of the file's, in the file's order.
#include <ScenarioFile.h>
#include <Terminal.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <set>
#include <sstream>
#include <string>

#include "Property.h"

namespace {

// The scenario's file: nameless, in memory.
class ScenarioInMemory {
  public:
    ScenarioInMemory() : m_descriptor(memfd_create("scenario", MFD_CLOEXEC)) {
        require(m_descriptor >= 0, "a file in memory can be made");
        m_path = "/proc/self/fd/" + std::to_string(m_descriptor);
        setenv("ZELCHIP_SCENARIO", m_path.c_str(), 1);
    }

    void write(const std::string& contents) const {
        require(ftruncate(m_descriptor, 0) == 0, "the file is emptied");
        const ssize_t written = pwrite(m_descriptor, contents.data(), contents.size(), 0);
        require(written == static_cast<ssize_t>(contents.size()), "the file is written");
    }
    const std::string& path() const { return m_path; }

  private:
    int m_descriptor;
    std::string m_path;
};

const ScenarioInMemory& scenarioFile() {
    static const ScenarioInMemory file;
    return file;
}

bool isControl(char c) {
    return static_cast<unsigned char>(c) < 0x20 || c == 0x7f;
}

// Gives the number of the line.
long checkMessage(const std::string& message, const std::string& contents) {
    const std::string start = scenarioFile().path() + ":";
    require(message.rfind(start, 0) == 0, "a message begins with the file's name");
    const std::size_t digits = message.find_first_not_of("0123456789", start.size());
    require(digits != std::string::npos && digits > start.size() && digits - start.size() < 9,
            "the file's name is followed by a line's number");
    require(message.compare(digits, 2, ": ") == 0, "a colon follows the line's number");
    const long line = std::stol(message.substr(start.size(), digits - start.size()));
    const long lines = 1 + std::count(contents.begin(), contents.end(), '\n');
    if (line < 1 || line > lines)
        fail("line " + std::to_string(line) + " of " + std::to_string(lines) + ": " + message);
    require(message.find(", expected ") != std::string::npos, "a message says what was expected");
    require(std::none_of(message.begin(), message.end(), isControl), "a message is one line");
    return line;
}

void checkMessages(const std::string& messages, const std::string& contents) {
    long last = 0;
    std::istringstream lines(messages);
    for (std::string message; std::getline(lines, message);) {
        const long line = checkMessage(message, contents);
        require(line >= last, "the messages come in the order of the lines");
        last = line;
    }
    require(last > 0, "a refusal has a message");
}

void checkSensor(Terminal& terminal, const SimulatedSensor& sensor) {
    require(sensor.movement.values != nullptr && !sensor.movement.values->empty(), "a sensor has values");
    CSensorInformation information{};
    require(terminal.information(sensor.handle, information) == 0, "a sensor is described");
    requireSame(information.name, sensor.information.name, "a sensor's label");
    const std::vector<int>& values = *sensor.movement.values;
    for (int call = 0; call < 3; ++call) {
        CSensorReading reading{0, READING_PRESET};
        require(terminal.read(sensor.handle, reading) == 0, "a sensor is read");
        require(std::find(values.begin(), values.end(), reading.value) != values.end(),
                "a reading is one of its values");
    }
}

void checkScenario(Scenario scenario) {
    std::set<unsigned> handles;
    for (const SimulatedSensor& sensor : scenario.sensors) {
        require(handles.insert(sensor.handle).second, "each handle is there once");
    }
    scenario.faults.clear();  // they may wait for minutes
    Terminal terminal(scenario);
    require(terminal.initialise() == 0, "a terminal without faults is initialised");
    CSensorHandleList listed;
    require(terminal.enumerate(listed) == 0 && listed.size() == scenario.sensors.size(), "every sensor is listed");
    // Of many sensors, some.
    const std::size_t step = 1 + scenario.sensors.size() / 50;
    for (std::size_t i = 0; i < scenario.sensors.size(); i += step) checkSensor(terminal, scenario.sensors[i]);
    CSystemEventLog log{};
    require(terminal.eventLog(log) == 0 && log.lines == scenario.eventLog.lines, "the event log is as written");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string contents(data, data + size);
    scenarioFile().write(contents);
    try {
        checkScenario(loadScenario());
    } catch (const ScenarioError& error) {
        checkMessages(error.what(), contents);
    }
    return 0;
}
