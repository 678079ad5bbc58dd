#include "Floor.h"

#include <cmpimacs.h>

#include <cstdio>
#include <cstring>
#include <stdexcept>

#include "Terminal.h"

namespace {

constexpr int UPDATE_INTERVAL = 1000;  // milliseconds

Floor& floorOf(CMPIInstanceMI* mi) {
    return *static_cast<Floor*>(const_cast<void*>(mi->hdl));
}

}  // namespace

Floor::Floor(const CMPIBroker* usedBroker, const std::vector<broker::Instance>& answered) : m_broker(usedBroker) {
    if (m_chip.Initialise() != 0) throw std::runtime_error("the simulated chip cannot be initialised");
    takeSensors(answered);
    m_table.ftVersion = 100;
    m_table.miVersion = 100;
    m_table.miName = "instanceFloor";
    m_table.enumerateInstanceNames = [](CMPIInstanceMI* mi, const CMPIContext*, const CMPIResult* result,
                                        const CMPIObjectPath* ref) { return floorOf(mi).names(result, ref); };
    m_table.enumerateInstances = [](CMPIInstanceMI* mi, const CMPIContext*, const CMPIResult* result,
                                    const CMPIObjectPath* ref,
                                    const char**) { return floorOf(mi).instances(result, ref); };
    m_table.getInstance = [](CMPIInstanceMI* mi, const CMPIContext*, const CMPIResult* result,
                             const CMPIObjectPath* ref, const char**) { return floorOf(mi).instance(result, ref); };
    m_mi.hdl = this;
    m_mi.ft = &m_table;
}

// The names first, so that they lie close together, as a walk over all of them likes it.
void Floor::takeSensors(const std::vector<broker::Instance>& answered) {
    timeval now{};
    gettimeofday(&now, nullptr);
    m_sensors.reserve(answered.size());
    unsigned handle = FIRST_HANDLE;
    for (const broker::Instance& one : answered) {
        m_sensors.push_back({handle++, one.path.findKey("Name")->text, now, {}, 0});
    }
    for (std::size_t i = 0; i < answered.size(); ++i) {
        Sensor& sensor = m_sensors[i];
        for (const broker::NamedValue& property : answered[i].properties) {
            if (property.name == "CurrentReading") sensor.readingPosition = sensor.properties.size();
            sensor.properties.push_back(makeProperty(property));
        }
    }
}

Floor::Property Floor::makeProperty(const broker::NamedValue& answered) {
    const char* name = m_propertyNames.insert(answered.name).first->c_str();
    Property property{name, answered.value.type, answered.value.text, {}};
    if (property.type == CMPI_sint32) {
        property.number.sint32 = static_cast<CMPISint32>(answered.value.signedNumber);
    } else {
        property.number.uint64 = answered.value.unsignedNumber;  // the smaller ones are its low bytes
    }
    return property;
}

CMPIObjectPath* Floor::makePath(const Sensor& sensor) const {
    CMPIStatus status{};
    CMPIObjectPath* path = CMNewObjectPath(m_broker, "root/cimv2", "TQS_NumericSensor", &status);
    CMAddKey(path, "Name", reinterpret_cast<const CMPIValue*>(sensor.name.c_str()), CMPI_chars);
    return path;
}

CMPIInstance* Floor::makeInstance(const Sensor& sensor) const {
    CMPIStatus status{};
    CMPIInstance* instance = CMNewInstance(m_broker, makePath(sensor), &status);
    for (const Property& property : sensor.properties) {
        const CMPIValue* value =
            property.type == CMPI_chars ? reinterpret_cast<const CMPIValue*>(property.text.c_str()) : &property.number;
        CMSetProperty(instance, property.name, value, property.type);
    }
    return instance;
}

void Floor::refresh(Sensor& sensor) {
    timeval now{};
    gettimeofday(&now, nullptr);
    const timeval& last = sensor.lastRead;
    std::fprintf(stderr, "now=%d:%dus, prev=%d:%dus\n", static_cast<int>(now.tv_sec), static_cast<int>(now.tv_usec),
                 static_cast<int>(last.tv_sec), static_cast<int>(last.tv_usec));
    const int age = static_cast<int>((now.tv_sec - last.tv_sec) * 1000 + (now.tv_usec - last.tv_usec) / 1000);
    if (age < UPDATE_INTERVAL) {
        std::fprintf(stderr, "no need to read - diff is %d, update interval is %d\n", age, UPDATE_INTERVAL);
        return;
    }
    sensor.lastRead = now;
    std::fprintf(stderr, "read sensor - diff was %d, update interval is %d\n", age, UPDATE_INTERVAL);
    CSensorReading reading{0, READING_PRESET};
    m_chip.ReadSensor(sensor.handle, reading);
    sensor.properties[sensor.readingPosition].number.sint32 = reading.value;
}

CMPIStatus Floor::names(const CMPIResult* result, const CMPIObjectPath* ref) {
    std::fprintf(stderr, "drvEnumInstanceNames - provider=%p\n", static_cast<void*>(this));
    CMGetNameSpace(ref, nullptr);
    CMGetClassName(ref, nullptr);
    for (const Sensor& sensor : m_sensors) CMReturnObjectPath(result, makePath(sensor));
    CMReturnDone(result);
    return {CMPI_RC_OK, nullptr};
}

CMPIStatus Floor::instances(const CMPIResult* result, const CMPIObjectPath* ref) {
    CMGetNameSpace(ref, nullptr);
    CMGetClassName(ref, nullptr);
    for (Sensor& sensor : m_sensors) {
        refresh(sensor);
        CMReturnInstance(result, makeInstance(sensor));
    }
    CMReturnDone(result);
    return {CMPI_RC_OK, nullptr};
}

CMPIStatus Floor::instance(const CMPIResult* result, const CMPIObjectPath* ref) {
    CMGetNameSpace(ref, nullptr);
    CMGetClassName(ref, nullptr);
    for (Sensor& sensor : m_sensors) {
        CMPIStatus status{};
        const CMPIData key = CMGetKey(ref, "Name", &status);
        const char* name = key.type == CMPI_string ? CMGetCharPtr(key.value.string) : key.value.chars;
        if (std::strcmp(name, sensor.name.c_str()) != 0) continue;
        refresh(sensor);
        CMReturnInstance(result, makeInstance(sensor));
        break;
    }
    CMReturnDone(result);
    return {CMPI_RC_OK, nullptr};
}
