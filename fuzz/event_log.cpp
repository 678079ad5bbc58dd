// The decoder of the firmware's event log. The input is the structure, with its length before it, and the area. What
// the decoder makes of them must be what a second, naive reading of the standard gives.
#include <EventLog.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <ctime>
#include <string>
#include <vector>

#include "Input.h"
#include "Property.h"

namespace {

std::string twoHexadecimal(unsigned byte) {
    static constexpr char digits[] = "0123456789abcdef";
    return {digits[byte / 16], digits[byte % 16]};
}

std::string typeName(unsigned type) {
    static const std::vector<std::string> names = {"",
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
                                                   "",
                                                   "System limit exceeded",
                                                   "Hardware timer expired",
                                                   "System configuration information",
                                                   "Hard disk information",
                                                   "System reconfigured",
                                                   "Uncorrectable CPU-complex error",
                                                   "Log area cleared",
                                                   "System boot"};
    if (type < names.size() && !names[type].empty()) return names[type];
    return (type >= 128 ? "OEM type 0x" : "Reserved type 0x") + twoHexadecimal(type);
}

// The six bytes as digits, which the C library's calendar must know as a time of its own. Empty where it does not.
std::string timeText(const std::string& bytes) {
    std::string digits;
    for (const char c : bytes) digits += twoHexadecimal(static_cast<unsigned char>(c));
    if (digits.find_first_not_of("0123456789") != std::string::npos) return "";
    digits = (digits[0] >= '8' ? "19" : "20") + digits;
    std::tm time{};
    std::sscanf(digits.c_str(), "%4d%2d%2d%2d%2d%2d", &time.tm_year, &time.tm_mon, &time.tm_mday, &time.tm_hour,
                &time.tm_min, &time.tm_sec);
    time.tm_year -= 1900;
    time.tm_mon -= 1;
    const std::tm asked = time;
    timegm(&time);
    const bool isSame = time.tm_year == asked.tm_year && time.tm_mon == asked.tm_mon && time.tm_mday == asked.tm_mday &&
                        time.tm_hour == asked.tm_hour && time.tm_min == asked.tm_min && time.tm_sec == asked.tm_sec;
    if (!isSame) return "";
    return digits.substr(0, 4) + '-' + digits.substr(4, 2) + '-' + digits.substr(6, 2) + ' ' + digits.substr(8, 2) +
           ':' + digits.substr(10, 2) + ':' + digits.substr(12, 2);
}

// Takes one record off the front; false where there is none.
bool takeRecord(std::string& rest, CSystemEventLog& log) {
    if (rest.size() < 8) return false;
    const std::size_t length = static_cast<unsigned char>(rest[1]) % 128;
    if (length < 8 || length > rest.size()) return false;
    const std::string time = timeText(rest.substr(2, 6));
    if (time.empty()) return false;
    std::string number = std::to_string(log.lines.size() + 1);
    if (number.size() < 4) number.insert(0, 4 - number.size(), '0');
    std::string line = number + ' ' + time + ' ' + typeName(static_cast<unsigned char>(rest[0]));
    if (length > 8) line += " (data";
    for (std::size_t i = 8; i < length; ++i) line += ' ' + twoHexadecimal(static_cast<unsigned char>(rest[i]));
    if (length > 8) line += ')';
    log.lines.push_back(line);
    rest.erase(0, length);
    return true;
}

CSystemEventLog naive(const std::string& structure, const std::string& area) {
    CSystemEventLog log{};
    if (structure.size() < 20) return log;
    const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(structure[i]); };
    bool isSound = true;
    if (structure.size() > 20 && byte(1) > 20 && byte(20) == 1) {
        const std::size_t start = byte(6) + 256U * byte(7);
        const std::string header = start < area.size() ? area.substr(start, 16) : "";
        const std::string window = header.size() < 16 ? "x" : twoHexadecimal(static_cast<unsigned char>(header[5]));
        isSound = window.find_first_not_of("0123456789") == std::string::npos;
        if (isSound) {
            log.multipleEventTimeWindow = static_cast<unsigned char>(std::stoi(window));
            log.multipleEventCountIncrement = static_cast<unsigned char>(header[6]);
        }
    }
    const std::size_t start = byte(8) + 256U * byte(9);
    std::string rest = start <= area.size() ? area.substr(start) : "x";
    while (!rest.empty() && rest[0] != '\xff' && takeRecord(rest, log)) continue;
    isSound = isSound && (rest.empty() || rest[0] == '\xff');
    log.logFull = byte(11) & 2 ? 1 : 0;
    log.logValid = isSound && (byte(11) & 1) != 0 ? 1 : 0;
    return log;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Input input(data, size);
    const std::string structure = input.text();
    std::string area;
    while (!input.isEmpty()) area += static_cast<char>(input.byte());
    const CSystemEventLog actual = decodeEventLog(structure, area);
    const CSystemEventLog expected = naive(structure, area);
    requireSame(static_cast<long long>(actual.lines.size()), static_cast<long long>(expected.lines.size()),
                "the lines");
    for (std::size_t i = 0; i < actual.lines.size(); ++i) requireSame(actual.lines[i], expected.lines[i], "a line");
    requireSame(actual.logValid, expected.logValid, "valid");
    requireSame(actual.logFull, expected.logFull, "full");
    requireSame(actual.multipleEventTimeWindow, expected.multipleEventTimeWindow, "the window");
    requireSame(actual.multipleEventCountIncrement, expected.multipleEventCountIncrement, "the increment");
    return 0;
}
