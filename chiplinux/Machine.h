// The sensors behind one CChip: those of the machine that could be read when it was initialised.
//
// The list and the handles stay. What a handle stands for is found again when the kernel has numbered its chips anew;
// until then, and while a chip is gone, its sensors have no value, and no other chip's.
#ifndef ZELSENSORS_CHIPLINUX_MACHINE_H
#define ZELSENSORS_CHIPLINUX_MACHINE_H

#include <deque>
#include <optional>
#include <shared_mutex>
#include <string>
#include <unordered_map>
#include <vector>

#include "Hwmon.h"
#include "LastReading.h"

// Thread-safe once it is initialised. Every operation may throw std::bad_alloc.
class Machine {
  public:
    // Each answers as the operation of CChip, and leaves the caller's record as it was when it fails.
    sscode initialise();
    sscode enumerate(CSensorHandleList& handles) const;
    sscode information(unsigned handle, CSensorInformation& information) const;
    // Fails only for a handle that was never given out. A sensor that cannot be read has its last value for ten
    // seconds, and is NOT_AVAILABLE then.
    sscode read(unsigned handle, CSensorReading& reading);

  private:
    struct Sensor {
        unsigned handle = 0;
        Key key;
        bool isKeyUnique = true;  // among all measurements when this one was published
        std::string device;
        Quantity quantity = Quantity::Temperature;
        CSensorInformation information{};
        std::optional<Source> source;  // where it is read; empty while it is lost
        Directory lastDirectory;       // of its last source
        LastReading lastReading;
    };

    void publish(const std::vector<Measurement>& found);
    // What the sensor shows now, which it keeps as its last reading. Empty where that cannot be had.
    std::optional<int> readOnce(Sensor& sensor);
    // The same, where it was found last; and whether it is still there. With the guard held.
    std::optional<int> readBound(Sensor& sensor) const;
    static bool isThere(const Sensor& sensor);
    void recover(const Sensor& sensor);
    void searchAnew();
    void bindAll(const std::vector<Measurement>& found);

    mutable std::shared_mutex m_guard;  // exclusive: a search; shared: reading, with sources that hold meanwhile
    Hwmon m_hwmon;
    Nanoseconds m_lastSearch{0};
    std::deque<Sensor> m_sensors;
    std::unordered_map<unsigned, Sensor*> m_byHandle;
};

#endif
