#include "EventLog.h"

#include <array>
#include <cstddef>
#include <cstdio>
#include <optional>
#include <stdexcept>

namespace {

// Offsets in the structure.
constexpr std::size_t STRUCTURE_LENGTH = 1;
constexpr std::size_t HEADER_START = 6;
constexpr std::size_t DATA_START = 8;
constexpr std::size_t STATUS = 11;
constexpr std::size_t HEADER_FORMAT = 20;
constexpr std::size_t SHORTEST_STRUCTURE = 20;  // of the standard's version 2.0, without a header format

constexpr unsigned STATUS_VALID = 1;
constexpr unsigned STATUS_FULL = 2;

// The one header that the standard has, and offsets in it.
constexpr unsigned TYPE_1_HEADER = 1;
constexpr std::size_t TYPE_1_HEADER_LENGTH = 16;
constexpr std::size_t WINDOW = 5;
constexpr std::size_t INCREMENT = 6;

constexpr unsigned END_OF_LOG = 0xff;
constexpr std::size_t RECORD_START_LENGTH = 8;  // type, length, year, month, day, hour, minute, second

unsigned byteAt(const std::string& bytes, std::size_t offset) {
    return static_cast<unsigned char>(bytes[offset]);
}

std::size_t wordAt(const std::string& bytes, std::size_t offset) {
    return byteAt(bytes, offset) | byteAt(bytes, offset + 1) << 8;
}

// Two decimal digits, one in each half.
std::optional<unsigned> decimal(unsigned byte) {
    if (byte >> 4 > 9 || (byte & 15) > 9) return std::nullopt;
    return (byte >> 4) * 10 + (byte & 15);
}

std::string nameOf(unsigned type) {
    static constexpr std::array<const char*, 0x18> names = {
        nullptr,
        "Single-bit ECC memory error",
        "Multi-bit ECC memory error",
        "Parity memory error",
        "Bus time-out",
        "I/O channel check",
        "Software NMI",
        "POST memory resize",
        "POST error",
        "PCI parity error",
        "PCI system error",
        "CPU failure",
        "EISA fail-safe timer time-out",
        "Correctable memory log disabled",
        "Logging disabled for an event type",
        nullptr,
        "System limit exceeded",
        "Hardware timer expired",
        "System configuration information",
        "Hard disk information",
        "System reconfigured",
        "Uncorrectable CPU-complex error",
        "Log area cleared",
        "System boot",
    };
    if (type < names.size() && names[type] != nullptr) return names[type];
    std::array<char, 24> text{};
    std::snprintf(text.data(), text.size(), type < 0x80 ? "Reserved type 0x%02x" : "OEM type 0x%02x", type);
    return text.data();
}

struct Time {
    unsigned year, month, day, hour, minute, second;
};

unsigned daysOf(unsigned month, unsigned year) {
    static constexpr std::array<unsigned, 12> days = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    const bool isLeap = year % 4 == 0 && (year % 100 != 0 || year % 400 == 0);
    return month == 2 && isLeap ? 29 : days[month - 1];
}

// Empty where it is no time.
std::optional<Time> timeAt(const std::string& area, std::size_t offset) {
    std::array<unsigned, 6> parts{};
    for (std::size_t i = 0; i < parts.size(); ++i) {
        const std::optional<unsigned> part = decimal(byteAt(area, offset + i));
        if (!part) return std::nullopt;
        parts[i] = *part;
    }
    const Time time{parts[0] + (parts[0] >= 80 ? 1900 : 2000), parts[1], parts[2], parts[3], parts[4], parts[5]};
    if (time.month < 1 || time.month > 12 || time.day < 1 || time.day > daysOf(time.month, time.year)) {
        return std::nullopt;
    }
    if (time.hour > 23 || time.minute > 59 || time.second > 59) return std::nullopt;
    return time;
}

std::string lineOf(std::size_t number, const Time& time, unsigned type, const std::string& data) {
    std::array<char, 48> start{};
    std::snprintf(start.data(), start.size(), "%04zu %04u-%02u-%02u %02u:%02u:%02u ", number, time.year, time.month,
                  time.day, time.hour, time.minute, time.second);
    std::string line = start.data() + nameOf(type);
    if (data.empty()) return line;
    line += " (data";
    for (std::size_t i = 0; i < data.size(); ++i) {
        std::array<char, 4> hexadecimal{};
        std::snprintf(hexadecimal.data(), hexadecimal.size(), " %02x", byteAt(data, i));
        line += hexadecimal.data();
    }
    return line + ')';
}

// Appends a line for each record. False where something stands in the log that is no record.
bool takeRecords(const std::string& area, std::size_t offset, std::vector<std::string>& lines) {
    while (offset < area.size() && byteAt(area, offset) != END_OF_LOG) {
        if (area.size() - offset < RECORD_START_LENGTH) return false;
        const std::size_t length = byteAt(area, offset + 1) & 0x7f;  // the top bit: somebody has read it
        if (length < RECORD_START_LENGTH || length > area.size() - offset) return false;
        const std::optional<Time> time = timeAt(area, offset + 2);
        if (!time) return false;
        lines.push_back(lineOf(lines.size() + 1, *time, byteAt(area, offset),
                               area.substr(offset + RECORD_START_LENGTH, length - RECORD_START_LENGTH)));
        offset += length;
    }
    return true;
}

// False where the header cannot be one.
bool takeHeader(const std::string& structure, const std::string& area, CSystemEventLog& log) {
    if (structure.size() <= HEADER_FORMAT || byteAt(structure, STRUCTURE_LENGTH) <= HEADER_FORMAT) return true;
    if (byteAt(structure, HEADER_FORMAT) != TYPE_1_HEADER) return true;
    const std::size_t start = wordAt(structure, HEADER_START);
    if (start + TYPE_1_HEADER_LENGTH > area.size()) return false;
    const std::optional<unsigned> window = decimal(byteAt(area, start + WINDOW));
    if (!window) return false;
    log.multipleEventTimeWindow = static_cast<unsigned char>(*window);
    log.multipleEventCountIncrement = static_cast<unsigned char>(byteAt(area, start + INCREMENT));
    return true;
}

}  // namespace

CSystemEventLog decodeEventLog(const std::string& structure, const std::string& area) {
    CSystemEventLog log{};
    if (structure.size() < SHORTEST_STRUCTURE) return log;
    const unsigned status = byteAt(structure, STATUS);
    const std::size_t start = wordAt(structure, DATA_START);
    const bool isHeaderSound = takeHeader(structure, area, log);
    const bool areRecordsSound = start <= area.size() && takeRecords(area, start, log.lines);
    log.logFull = (status & STATUS_FULL) != 0 ? 1 : 0;
    log.logValid = (status & STATUS_VALID) != 0 && isHeaderSound && areRecordsSound ? 1 : 0;
    return log;
}
