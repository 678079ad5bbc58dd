// Why a machine may have no sensors, or fewer than it could: what it runs in, and drivers that nobody has loaded.
#ifndef ZELSENSORS_CHIPLINUX_SURROUNDINGS_H
#define ZELSENSORS_CHIPLINUX_SURROUNDINGS_H

#include <string>
#include <vector>

#include "Diagnosis.h"

// Of a machine on which libsensors finds no chip.
std::vector<Finding> whyNoChip();

// The drivers that this machine could do with, by its processor and its disks. `prefixes` are the drivers' names for
// the chips that were found.
std::vector<Finding> missingDrivers(const std::vector<std::string>& prefixes);

#endif
