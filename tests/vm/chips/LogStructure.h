// The firmware's event log, as the system management BIOS standard describes it: the structure of type 15 that says
// where the log is, and the header before its records.
#ifndef ZELSENSORS_TESTS_LOGSTRUCTURE_H
#define ZELSENSORS_TESTS_LOGSTRUCTURE_H

#include <string>

struct LogPlace {
    unsigned areaLength;
    unsigned headerStart;
    unsigned dataStart;
    unsigned method;   // of access: 0 by ports for the index and the data, 3 in memory
    unsigned address;  // of the ports, that of the index first, or in memory
    bool isFull;
};

std::string bytesOf(const std::string& hexadecimal);  // of "01 ff"
std::string structureOf(const LogPlace& place);

#endif
