// What the chip library answers: handles, descriptions with any bytes in their texts, readings, statuses, event logs,
// on every model, with drives beside it and a clock that jumps. The input is a terminal and a list of requests on it.
// Each answer must be, instance by instance and property by property, what a plain model of the terminal gives; exactly
// one done ends it, and nothing is left behind.
#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "Chip.h"
#include "ConfigurationFiles.h"
#include "Drives.h"
#include "Input.h"
#include "Property.h"
#include "ProviderUnderTest.h"
#include "Streams.h"

namespace {

using broker::Instance;
using broker::NamedValue;
using broker::ObjectPath;
using broker::Reply;
using broker::Value;
using Operation = ProviderUnderTest::Operation;

constexpr unsigned MOST_REQUESTS = 8;
constexpr unsigned MOST_REQUESTS_ON_MANY_SENSORS = 2;  // they take long
constexpr std::int64_t UPDATE_INTERVAL = 1000;         // milliseconds

std::string hexadecimal(std::uint32_t number) {
    std::string digits;
    for (int shift = 28; shift >= 0; shift -= 4) digits += "0123456789abcdef"[number >> shift & 0xF];
    return digits;
}

std::string typeWord(unsigned type) {
    static constexpr std::array words = {"Unknown", "Other",  "Temperature", "Voltage",  "Current",        "Tachometer",
                                         "Counter", "Switch", "Lock",        "Humidity", "SmokeDetection", "Presence"};
    return type < words.size() ? words[type] : "Unknown";
}

// The characters before the first NUL, which is all that a C string has.
Value chars(const std::string& text) {
    return Value::ofText(text.c_str(), CMPI_chars);
}

// One sensor as it must be published.
struct ModelSensor {
    unsigned handle = 0;
    bool isDrive = false;
    std::string name;
    std::string caption;
    std::string description;
    std::string deviceId;
    CSensorInformation information{};
    int reading = 0;
    std::int64_t lastRead = 0;

    bool isDue(std::int64_t now) {
        if (now - lastRead < UPDATE_INTERVAL) return false;
        lastRead = now;
        return true;
    }
};

ObjectPath pathOf(const std::string& className, const std::string& name) {
    return {"", "root/cimv2", className, {{"Name", chars(name)}}};
}

Instance instanceOf(const ModelSensor& sensor) {
    const CSensorInformation& info = sensor.information;
    Instance instance;
    instance.path = pathOf("TQS_NumericSensor", sensor.name);
    const auto add = [&](const char* name, Value value) { instance.properties.push_back({name, std::move(value)}); };
    const auto addSigned = [&](const char* name, int number) {
        if (number != NOT_AVAILABLE) add(name, Value::ofSigned(number));
    };
    const auto addUnsigned = [&](const char* name, int number) {
        if (number != NOT_AVAILABLE) add(name, Value::ofUnsigned(static_cast<unsigned>(number)));
    };
    addSigned("Accuracy", info.accuracy);
    add("BaseUnits", Value::ofUnsigned(info.baseUnits, CMPI_uint16));
    add("Caption", chars(sensor.caption));
    add("CreationClassName", chars("TQS_NumericSensor"));
    add("CurrentReading", Value::ofSigned(sensor.reading));
    add("Description", chars(sensor.description));
    add("DeviceID", chars(sensor.deviceId));
    addUnsigned("Hysteresis", info.hysteresis);
    add("IsLinear", Value::ofBoolean(info.isLinear));
    addSigned("LowerThresholdCritical", info.lowerThresholdCritical);
    addSigned("LowerThresholdFatal", info.lowerThresholdFatal);
    addSigned("LowerThresholdNonCritical", info.lowerThresholdNonCritical);
    addSigned("MaxReadable", info.maxReadable);
    addSigned("MinReadable", info.minReadable);
    add("Name", chars(sensor.name));
    addSigned("NominalReading", info.nominalReading);
    add("OtherSensorTypeDescription", chars(info.otherSensorTypeDescription));
    add("RateUnits", Value::ofUnsigned(info.rateUnits, CMPI_uint16));
    addUnsigned("Resolution", info.resolution);
    add("SensorType", Value::ofUnsigned(info.sensorType, CMPI_uint16));
    add("SystemCreationClassName", chars("Computer System"));
    add("SystemName", chars("Quorvel POS Sensor Drivers and System Event Log"));
    add("UnitModifier", Value::ofSigned(info.unitModifier));
    addSigned("UpperThresholdCritical", info.upperThresholdCritical);
    addSigned("UpperThresholdFatal", info.upperThresholdFatal);
    addSigned("UpperThresholdNonCritical", info.upperThresholdNonCritical);
    return instance;
}

constexpr char LOG_NAME[] = "Quorvel POS System Event Log";

Instance instanceOf(const CSystemEventLog& log) {
    Instance instance;
    instance.path = pathOf("TQS_SystemEventLog", LOG_NAME);
    const auto add = [&](const char* name, Value value) { instance.properties.push_back({name, std::move(value)}); };
    add("Caption", chars(LOG_NAME));
    add("CreationClassName", chars("TQS_SystemEventLog"));
    add("Description", chars("The Quorvel POS System Event Log is a motherboard level storage device that contains a "
                             "record of critical system events such as POST errors, disk check errors, etc."));
    add("DeviceID", chars(LOG_NAME));
    add("LogFull", Value::ofBoolean(log.logFull != 0));
    std::vector<Value> lines;
    for (const std::string& line : log.lines) lines.push_back(chars(line));
    if (!lines.empty()) add("LogLines", Value::ofArray(lines, CMPI_chars));
    add("LogMultipleEventCountIncrement", Value::ofUnsigned(log.multipleEventCountIncrement, CMPI_uint8));
    add("LogMultipleEventTimeWindow", Value::ofUnsigned(log.multipleEventTimeWindow, CMPI_uint8));
    add("LogValid", Value::ofBoolean(log.logValid != 0));
    add("Name", chars(LOG_NAME));
    add("SystemCreationClassName", chars("Computer System"));
    add("SystemName", chars("Quorvel POS Sensor Drivers and System Event Log"));
    return instance;
}

int takeNumber(Input& input) {
    switch (input.choice(4)) {
        case 0:
            return NOT_AVAILABLE;
        case 1:
            return static_cast<std::int16_t>(input.number16());
        default:
            return static_cast<int>(input.number32());
    }
}

CSensorInformation takeInformation(Input& input) {
    CSensorInformation information{};
    information.name = input.choice(8) == 7 ? input.longText() : input.text();
    information.sensorType = input.choice(4) == 3 ? input.number16() : static_cast<unsigned short>(input.choice(14));
    information.isLinear = input.flag();
    information.otherSensorTypeDescription = input.text();
    information.baseUnits = input.number16();
    information.rateUnits = input.byte();
    for (int CSensorInformation::*member :
         {&CSensorInformation::accuracy, &CSensorInformation::hysteresis, &CSensorInformation::lowerThresholdCritical,
          &CSensorInformation::lowerThresholdFatal, &CSensorInformation::lowerThresholdNonCritical,
          &CSensorInformation::maxReadable, &CSensorInformation::minReadable, &CSensorInformation::nominalReading,
          &CSensorInformation::resolution, &CSensorInformation::unitModifier,
          &CSensorInformation::upperThresholdCritical, &CSensorInformation::upperThresholdFatal,
          &CSensorInformation::upperThresholdNonCritical}) {
        information.*member = takeNumber(input);
    }
    return information;
}

CSystemEventLog takeEventLog(Input& input) {
    CSystemEventLog log{};
    log.logFull = input.byte();
    log.logValid = input.byte();
    log.multipleEventCountIncrement = input.byte();
    log.multipleEventTimeWindow = input.byte();
    const unsigned different = input.choice(5);
    std::vector<std::string> lines;
    for (unsigned i = 0; i < different; ++i) lines.push_back(input.text());
    unsigned rounds = input.byte();
    rounds = rounds < 250 ? rounds % 3 : rounds * 2;
    for (unsigned i = 0; i < rounds; ++i) log.lines.insert(log.lines.end(), lines.begin(), lines.end());
    return log;
}

// The terminal that the input describes, and what it must look like from outside.
class Terminal {
  public:
    explicit Terminal(Input& input) : m_input(input) {
        chip::Answers& answers = chip::answers();
        answers = {};
        const unsigned bits = input.byte();
        answers.isGrebel = (bits & 1) != 0;
        answers.isZan = (bits & 2) != 0;
        m_hasSwitch = (bits & 4) != 0;
        if ((bits & 0xF0) == 0xF0) answers.initialise = input.number32();
        if ((bits & 0xF8) == 0x98) answers.enumerate = input.number32();
        configuration::setSensorFile(m_hasSwitch ? std::optional<std::string>("NvmeReadings=1\n") : std::nullopt);
        takeDrives(input.choice(4));
        takeSensors();
        answers.eventLog = takeEventLog(input);
        answers.information = [this](unsigned handle, CSensorInformation& information) {
            return describe(handle, information);
        };
        answers.read = [this](unsigned handle, int& value) { return read(handle, value); };
        chip::takeReads();
        chip::setClock(m_now);
    }
    Terminal(const Terminal&) = delete;
    Terminal& operator=(const Terminal&) = delete;

    bool hasManySensors() const { return m_sensors.size() > 64; }

    // What the start must have come to; to be called once, after it.
    void start() {
        m_isInitialised = addChipSensors();
        if (m_isInitialised && chip::answers().isGrebel && m_hasSwitch) addDrives();
    }

    void passTime() {
        m_now += static_cast<std::int16_t>(m_input.number16());
        chip::setClock(m_now);
    }

    void checkRequest(ProviderUnderTest& provider) {
        const unsigned kind = m_input.byte();
        const bool isLog = (kind & 1) != 0;
        const auto operation = static_cast<Operation>((kind >> 1) % 3);
        chip::answers().eventLogStatus = (kind & 0xE0) == 0xE0 ? m_input.number32() : 0;
        m_goodReads = (kind & 0x10) == 0 ? m_input.byte() : 0xFFFFFFFF;
        m_failure = 0xE0000000 | m_input.byte();
        ObjectPath path = {"", "Root/CIMv2", isLog ? "TQS_SystemEventLog" : "TQS_NumericSensor", {}};
        if (operation == Operation::Get) path.keys.push_back({"Name", Value::ofText(chooseName(isLog))});
        const Reply reply = provider.ask(operation, path);
        const std::vector<chip::Read> reads = chip::takeReads();
        if (!m_isInitialised) {
            requireSame(reply.status.rc, 16, "the status before initialisation");
            requireSame(reply.doneCalls, 0, "the number of dones before initialisation");
            require(reply.paths.empty() && reply.instances.empty() && reads.empty(), "nothing before initialisation");
            return;
        }
        requireSame(reply.doneCalls, 1, "the number of dones");
        if (isLog) {
            checkLogReply(reply, operation, path);
        } else {
            checkSensorReply(reply, operation, path, reads);
        }
    }

  private:
    struct Description {
        CSensorInformation information;
        sscode status = 0;
    };

    void takeDrives(unsigned count) {
        drives::Drives machine;
        for (unsigned i = 0; i < count; ++i) {
            drives::Drive& drive = machine[i];
            drive.isListed = true;
            drive.under.result = m_input.byte();
            drive.over.result = m_input.number16();
            drive.healthPage[1] = m_input.byte();
            drive.healthPage[2] = m_input.byte();
        }
        drives::set(machine, 0);
    }

    void takeSensors() {
        const unsigned different = m_input.choice(5);
        for (unsigned i = 0; i < different; ++i) m_descriptions.push_back({takeInformation(m_input), 0});
        if (different > 0 && m_input.choice(16) == 15) m_descriptions.back().status = m_input.number32();
        unsigned count = m_input.byte();
        count = count < 255 ? count % 8 : m_input.number16() % 1024;
        const unsigned first = m_input.number32();
        const unsigned step = m_input.byte();  // 0: all the same
        if (m_descriptions.empty()) return;
        for (unsigned i = 0; i < count; ++i) chip::answers().handles.push_back(first + i * step);
        if (m_input.choice(16) == 15) m_goodReads = m_input.byte();
        m_failure = 0xC0000000 | m_input.byte();
    }

    const Description& descriptionOf(unsigned handle) const { return m_descriptions[handle % m_descriptions.size()]; }

    sscode describe(unsigned handle, CSensorInformation& information) const {
        information = descriptionOf(handle).information;
        return descriptionOf(handle).status;
    }

    sscode read(unsigned handle, int& value) {
        if (m_goodReads == 0) return m_failure;
        --m_goodReads;
        value = readingOf(handle, ++m_readings);
        return 0;
    }

    static int readingOf(unsigned handle, unsigned reading) { return static_cast<int>(handle * 2654435761U + reading); }

    // False where the chip has let the start down.
    bool addChipSensors() {
        const std::vector<chip::Read> reads = chip::takeReads();
        std::size_t next = 0;
        bool isGood = chip::answers().initialise == 0 && chip::answers().enumerate == 0;
        for (std::size_t i = 0; isGood && i < chip::answers().handles.size(); ++i) {
            const unsigned handle = chip::answers().handles[i];
            isGood = descriptionOf(handle).status == 0;
            if (!isGood) break;
            require(next < reads.size() && reads[next].handle == handle, "a sensor is read at the start");
            isGood = reads[next].status == 0;
            if (isGood) addChipSensor(handle, reads[next].value);
            ++next;
        }
        require(next == reads.size(), "each sensor is read once at the start, up to the first failure");
        return isGood;
    }

    void addChipSensor(unsigned handle, int reading) {
        ModelSensor sensor;
        sensor.handle = handle;
        sensor.information = descriptionOf(handle).information;
        const std::string type = typeWord(sensor.information.sensorType);
        sensor.name = sensor.information.name + "(" + hexadecimal(handle) + ")";
        sensor.description = sensor.name + ": " + type + " sensor";
        sensor.caption = type + "(" + hexadecimal(handle) + ")";
        sensor.deviceId = hexadecimal(handle);
        sensor.reading = reading;
        sensor.lastRead = m_now;
        m_sensors.push_back(sensor);
    }

    void addDrives() {
        for (unsigned i = 0; i < drives::now().size() && drives::now()[i].isListed; ++i) {
            ModelSensor sensor;
            sensor.handle = i;
            sensor.isDrive = true;
            sensor.name = "SSD" + std::to_string(i + 1) + " Temperature(" + hexadecimal(i + 1) + ")";
            sensor.description = sensor.name + ": Temperature sensor";
            sensor.caption = "Temperature ";
            sensor.deviceId = std::to_string(i + 1);
            sensor.information.lowerThresholdCritical = static_cast<int>(drives::now()[i].under.result) - 273;
            sensor.information.upperThresholdCritical = static_cast<int>(drives::now()[i].over.result) - 273;
            sensor.reading = driveReading(i);
            sensor.lastRead = m_now;
            m_sensors.push_back(sensor);
        }
    }

    static int driveReading(unsigned i) {
        const auto& page = drives::now()[i].healthPage;
        return static_cast<int>((page[1] + 256U * page[2] + 65536 - 273) % 65536);
    }

    std::string chooseName(bool isLog) {
        const unsigned choice = m_input.byte();
        if (choice >= 0xF8) return m_input.text();
        if (isLog) return LOG_NAME;
        return m_sensors.empty() ? "CPU(00000000)" : m_sensors[choice % m_sensors.size()].name.c_str();
    }

    void checkLogReply(const Reply& reply, Operation operation, const ObjectPath& path) const {
        if (operation == Operation::Names) {
            requireSame(reply.status.rc, 0, "the status");
            require(reply.instances.empty() && reply.paths.size() == 1, "one path is returned");
            require(reply.paths[0] == pathOf("TQS_SystemEventLog", LOG_NAME), "the log's path");
            return;
        }
        const bool isAskedFor =
            operation == Operation::Instances || path.keys[0].value.text.c_str() == std::string(LOG_NAME);
        const bool isGood = isAskedFor && chip::answers().eventLogStatus == 0;
        requireSame(reply.status.rc, isGood ? 0 : 1, "the status");
        require(reply.paths.empty() && reply.instances.size() == (isGood ? 1U : 0U), "the number of instances");
        if (isGood) require(reply.instances[0] == instanceOf(chip::answers().eventLog), "the log's instance");
    }

    void checkSensorReply(const Reply& reply, Operation operation, const ObjectPath& path,
                          const std::vector<chip::Read>& reads) {
        m_reads = &reads;
        m_nextRead = 0;
        switch (operation) {
            case Operation::Names:
                checkNames(reply);
                break;
            case Operation::Instances:
                checkInstances(reply);
                break;
            case Operation::Get:
                checkInstance(reply, path.keys[0].value.text.c_str());
                break;
        }
        require(m_nextRead == reads.size(), "no sensor is read in vain");
    }

    void checkNames(const Reply& reply) const {
        requireSame(reply.status.rc, m_sensors.empty() ? 1 : 0, "the status");
        require(reply.instances.empty() && reply.paths.size() == m_sensors.size(), "every sensor's name is returned");
        for (std::size_t i = 0; i < m_sensors.size(); ++i) {
            require(reply.paths[i] == pathOf("TQS_NumericSensor", m_sensors[i].name), "a sensor's path");
        }
    }

    void checkInstances(const Reply& reply) {
        std::size_t good = 0;
        while (good < m_sensors.size() && refreshThroughChip(m_sensors[good])) ++good;
        const bool isWhole = good == m_sensors.size() && good > 0;
        requireSame(reply.status.rc, isWhole ? 0 : 1, "the status");
        require(reply.paths.empty(), "no path is returned");
        requireSame(static_cast<long long>(reply.instances.size()), static_cast<long long>(good),
                    "the number of instances");
        for (std::size_t i = 0; i < good; ++i) {
            require(reply.instances[i] == instanceOf(m_sensors[i]), "a sensor's instance");
        }
    }

    void checkInstance(const Reply& reply, const std::string& name) {
        ModelSensor* found = nullptr;
        for (ModelSensor& sensor : m_sensors) {
            if (found == nullptr && name == sensor.name.c_str()) found = &sensor;
        }
        bool isGood = found != nullptr;
        if (isGood && found->isDrive) {
            if (found->isDue(m_now)) found->reading = driveReading(found->handle);
        } else if (isGood) {
            isGood = refreshThroughChip(*found);
        }
        requireSame(reply.status.rc, isGood ? 0 : 1, "the status");
        require(reply.paths.empty() && reply.instances.size() == (isGood ? 1U : 0U), "the number of instances");
        if (isGood) require(reply.instances[0] == instanceOf(*found), "the sensor's instance");
    }

    // False where the chip refused.
    bool refreshThroughChip(ModelSensor& sensor) {
        if (!sensor.isDue(m_now)) return true;
        require(m_nextRead < m_reads->size(), "a sensor that is due is read");
        const chip::Read& read = (*m_reads)[m_nextRead++];
        require(read.handle == sensor.handle, "the right sensor is read");
        if (read.status != 0) return false;
        sensor.reading = read.value;
        return true;
    }

    Input& m_input;
    bool m_hasSwitch = false;
    bool m_isInitialised = false;
    std::int64_t m_now = 1700000000000;  // milliseconds since 1970
    std::vector<Description> m_descriptions;
    std::vector<ModelSensor> m_sensors;
    unsigned m_goodReads = 0xFFFFFFFF;  // until they fail
    sscode m_failure = 1;
    unsigned m_readings = 0;
    const std::vector<chip::Read>* m_reads = nullptr;
    std::size_t m_nextRead = 0;
};

}  // namespace

extern "C" int LLVMFuzzerInitialize(int* /*argc*/, char*** /*argv*/) {
    // Standard error is captured, so that this logs to memory.
    configuration::setLogFile("Level=4\nIsConsole=1\n");
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Input input(data, size);
    CapturedStreams streams;
    Terminal terminal(input);
    broker::Broker broker;
    {
        ProviderUnderTest provider(broker);
        terminal.start();
        const unsigned requests = terminal.hasManySensors() ? MOST_REQUESTS_ON_MANY_SENSORS : MOST_REQUESTS;
        for (unsigned i = 0; i < requests && !input.isEmpty(); ++i) {
            terminal.passTime();
            terminal.checkRequest(provider);
        }
    }
    requireSame(chip::objects(), 0, "the number of chip objects left after the cleanup");
    requireSame(drives::openDescriptors(), 0, "the number of open descriptors");
    requireSame(configuration::openStreams(), 0, "the number of open streams");
    return 0;
}
