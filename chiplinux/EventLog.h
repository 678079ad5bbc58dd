// The firmware's event log as the system management BIOS standard lays it out: structure type 15 and the area of
// records that it describes. Pure: asks no system. Neither input is trusted, since the area is often whatever memory
// holds.
#ifndef ZELSENSORS_CHIPLINUX_EVENTLOG_H
#define ZELSENSORS_CHIPLINUX_EVENTLOG_H

#include <string>

#include "chip.h"

// `structure` is the type 15 structure with its header, `area` the bytes from the area's start on. Records are taken
// as long as they can be records. The log is valid if the structure says so and every record to the log's end can be
// one. A line is the record's number from 1 on, its time, its type's name and its data in hexadecimal. The increment
// and the window, in minutes, are 0 where the structure describes no header of records.
CSystemEventLog decodeEventLog(const std::string& structure, const std::string& area);

#endif
