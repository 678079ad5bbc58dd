#include "health/Units.h"

#include <array>

namespace host {
namespace {

// In the order of CIM_NumericSensor.BaseUnits.
constexpr std::array BASE_UNITS{
    "",     "",      "°C",    "°F",     "K",      "V",   "A",   "W",     "J",     "C",     "VA",      "nt",
    "lm",   "lx",    "cd",    "kPa",    "psi",    "N",   "CFM", "rpm",   "Hz",    "s",     "min",     "h",
    "days", "weeks", "mil",   "in",     "ft",     "in³", "ft³", "m",     "cm³",   "m³",    "l",       "fl oz",
    "rad",  "sr",    "rev",   "cycles", "g",      "oz",  "lb",  "ft·lb", "oz·in", "gauss", "gilbert", "H",
    "F",    "Ω",     "S",     "mol",    "Bq",     "ppm", "dB",  "dB(A)", "dB(C)", "Gy",    "Sv",      "K (color)",
    "bits", "bytes", "words", "dwords", "qwords", "%",   "Pa",
};

// In the order of CIM_NumericSensor.RateUnits.
constexpr std::array RATE_UNITS{"", "/µs", "/ms", "/s", "/min", "/h", "/day", "/week", "/month", "/year"};

template <std::size_t size>
bool isListed(const std::array<const char*, size>&, std::int64_t code) {
    return code >= 0 && code < static_cast<std::int64_t>(size);
}

}  // namespace

std::string unitText(std::int64_t baseUnits, std::int64_t rateUnits) {
    std::string text = isListed(BASE_UNITS, baseUnits) ? BASE_UNITS.at(static_cast<std::size_t>(baseUnits))
                                                       : "unit " + std::to_string(baseUnits);
    text += isListed(RATE_UNITS, rateUnits) ? RATE_UNITS.at(static_cast<std::size_t>(rateUnits))
                                            : "/rate " + std::to_string(rateUnits);
    return text;
}

}  // namespace host
