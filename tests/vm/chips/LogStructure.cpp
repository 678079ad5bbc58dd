#include "LogStructure.h"

#include <sstream>

namespace {

std::string littleEndian(unsigned number, unsigned length) {
    std::string bytes;
    for (unsigned i = 0; i < length; ++i) bytes += static_cast<char>(number >> 8 * i & 0xff);
    return bytes;
}

}  // namespace

std::string bytesOf(const std::string& hexadecimal) {
    std::istringstream words(hexadecimal);
    std::string bytes;
    for (unsigned byte = 0; words >> std::hex >> byte;) bytes += static_cast<char>(byte);
    return bytes;
}

std::string structureOf(const LogPlace& place) {
    constexpr unsigned type = 15;
    constexpr unsigned handle = 0x1500;
    constexpr unsigned valid = 1;
    constexpr unsigned full = 2;
    constexpr unsigned headerFormat = 1;
    const std::string descriptors = bytesOf("08 04 17 00");  // of a POST error's data; of a system boot's
    const std::string rest = littleEndian(place.areaLength, 2) + littleEndian(place.headerStart, 2) +
                             littleEndian(place.dataStart, 2) + littleEndian(place.method, 1) +
                             littleEndian(place.isFull ? valid | full : valid, 1) + littleEndian(0, 4) +
                             littleEndian(place.address, 4) + littleEndian(headerFormat, 1) + littleEndian(2, 1) +
                             littleEndian(2, 1) + descriptors;
    return littleEndian(type, 1) + littleEndian(static_cast<unsigned>(rest.size()) + 4, 1) + littleEndian(handle, 2) +
           rest + std::string(2, '\0');
}
