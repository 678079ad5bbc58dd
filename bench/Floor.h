// The least that a provider of the numeric sensors can do: the broker calls of the real one with the same values, the
// chip's readings when they are due, the lines that must go to standard error, and nothing else.
#ifndef ZELSENSORS_BENCH_FLOOR_H
#define ZELSENSORS_BENCH_FLOOR_H

#include <cmpift.h>
#include <sys/time.h>

#include <cstddef>
#include <set>
#include <string>
#include <vector>

#include "broker/Model.h"
#include "chip.h"

class Floor {
  public:
    // Takes the sensors from what the real provider answered. The terminal must be the one that is played now.
    Floor(const CMPIBroker* usedBroker, const std::vector<broker::Instance>& answered);
    Floor(const Floor&) = delete;
    Floor& operator=(const Floor&) = delete;

    // Only the three read requests are there. Valid as long as this object.
    CMPIInstanceMI* mi() { return &m_mi; }

  private:
    struct Property {
        const char* name;  // one for all sensors
        CMPIType type;
        std::string text;  // of CMPI_chars
        CMPIValue number;  // of all others
    };
    struct Sensor {
        unsigned handle;
        std::string name;
        timeval lastRead;
        std::vector<Property> properties;
        std::size_t readingPosition;  // of "CurrentReading" among them
    };

    void takeSensors(const std::vector<broker::Instance>& answered);
    Property makeProperty(const broker::NamedValue& answered);
    CMPIObjectPath* makePath(const Sensor& sensor) const;
    CMPIInstance* makeInstance(const Sensor& sensor) const;
    void refresh(Sensor& sensor);
    CMPIStatus names(const CMPIResult* result, const CMPIObjectPath* ref);
    CMPIStatus instances(const CMPIResult* result, const CMPIObjectPath* ref);
    CMPIStatus instance(const CMPIResult* result, const CMPIObjectPath* ref);

    const CMPIBroker* m_broker;
    CChip m_chip;
    std::set<std::string> m_propertyNames;
    std::vector<Sensor> m_sensors;
    CMPIInstanceMIFT m_table{};
    CMPIInstanceMI m_mi{};
};

#endif
