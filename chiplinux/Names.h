// Names and handles that a sensor keeps from boot to boot, whatever the order in which drivers come. Pure: asks no
// system.
#ifndef ZELSENSORS_CHIPLINUX_NAMES_H
#define ZELSENSORS_CHIPLINUX_NAMES_H

#include <string>
#include <vector>

// A bus as a chip's place on it is told.
enum class Bus {
    Adapter,     // i2c: the adapter's name and the address
    Address,     // pci, isa: the address
    Device,      // acpi, virtual, hid: the device's own name
    Controller,  // spi, mdio, scsi: the controller, whose channels the kernel numbers anew, and the address
};

// Where a chip is, without any number that the kernel gives anew at each boot. `devicePath` is the real path of the
// chip's device (see deviceOf). Numbers are decimal, for places to be sorted by them.
std::string placeOf(Bus bus, int address, const std::string& adapter, const std::string& devicePath);

// The device of a chip whose files are in `realPath`: that without the kernel's "hwmon/hwmonN" at its end.
std::string deviceOf(const std::string& realPath);

// Which measurement of the machine a sensor is. Two may be equal: two chips without a place of their own.
struct Key {
    std::string prefix;   // the driver's name for the chip
    std::string place;    // see placeOf
    std::string feature;  // temp1, in0 ...
};
bool operator==(const Key& left, const Key& right);

// Negative, zero or positive; numbers inside are compared as numbers, so that in2 comes before in10.
int compareNaturally(const std::string& left, const std::string& right);
bool comesBefore(const Key& left, const Key& right);

// One handle for each key, in their order, which should be a sorted one: where two keys have the same, the later one
// takes the next free number. All have the highest bit set, and so stay clear of the handles of drives.
std::vector<unsigned> handlesFor(const std::vector<Key>& keys);

struct Labelled {
    std::string prefix;
    std::string feature;
    std::string label;  // any bytes
};

// What the sensors are called: their labels, with the prefix before one that is the bare feature's name, or that
// another sensor has too. Always printable UTF-8: a question mark stands for each byte that is not.
std::vector<std::string> namesFor(const std::vector<Labelled>& sensors);

#endif
