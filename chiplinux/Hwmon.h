// The measurements of the machine's sensor chips, found and read through libsensors.
#ifndef ZELSENSORS_CHIPLINUX_HWMON_H
#define ZELSENSORS_CHIPLINUX_HWMON_H

#include <sys/types.h>

#include <array>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "LibSensors.h"
#include "Mapping.h"
#include "Names.h"

// Where the files of a chip are: the real path, and not that of libsensors, /sys/class/hwmon/hwmonN. The kernel numbers
// those anew as drivers come and go, and one may lead to another chip at any time. What is on a bus is found under its
// real path alone.
struct Directory {
    std::string realPath;
    // What is on no bus has no place: another driver's chip can come to the same real path. Only the number of its node
    // tells it from the one before.
    bool isOnBus = false;
    dev_t device = 0;
    ino_t node = 0;

    bool isThere() const;
};

// Where a measurement is read. Void after the next search.
struct Source {
    const sensors_chip_name* chip = nullptr;
    int reading = 0;
    std::optional<int> fault;  // a flag of the driver: 1 while the reading means nothing
    Directory directory;
};

struct Measurement {
    Key key;
    std::string label;  // any bytes
    Quantity quantity = Quantity::Temperature;
    std::array<std::optional<int>, 7> limits;  // by the order of the members of Limits
    Source source;

    std::string device() const { return deviceOf(source.directory.realPath); }
};

class Hwmon {
  public:
    // Finds what there is now, in the order of the keys, and of the chips' real paths where keys are equal. A status of
    // Status.h; the list is then empty, and the next search begins from nothing. No other call may go on meanwhile.
    // Throws std::bad_alloc.
    sscode search(std::vector<Measurement>& found);
    // The same, and tells what else there is; also after a failure, as far as it came.
    sscode survey(std::vector<Measurement>& found, Survey& survey);

    // Empty where the reading fails, means nothing by the driver's flag, or is not that of the chip that was found. Any
    // number of threads at once.
    std::optional<double> read(const Source& source) const;
    Limits readLimits(const Measurement& measurement) const;

    // Why there is no reading; empty where there is one.
    std::string whyUnread(const Source& source) const;

    // Whether memory ran out in a read since the last search.
    bool wasShort() const { return m_sensors->wasShort(); }

  private:
    sscode search(std::vector<Measurement>& found, Survey* survey);
    std::optional<double> value(const Source& source, int subfeature) const;
    bool isMarkedFaulty(const Source& source) const;

    std::unique_ptr<LibSensors> m_sensors;
};

#endif
