#include "health/Decimal.h"

namespace host {

std::string scaledDecimal(std::int64_t value, std::int64_t modifier) {
    const std::string sign = value < 0 ? "-" : "";
    const auto bits = static_cast<std::uint64_t>(value);
    std::string digits = std::to_string(value < 0 ? 0 - bits : bits);
    if (modifier > LARGEST_SHIFT || modifier < -LARGEST_SHIFT) {
        return sign + digits + "×10^" + std::to_string(modifier);
    }
    if (modifier >= 0) {
        if (value != 0) digits.append(static_cast<std::size_t>(modifier), '0');
        return sign + digits;
    }
    const auto places = static_cast<std::size_t>(-modifier);
    if (digits.size() <= places) digits.insert(0, places + 1 - digits.size(), '0');
    digits.insert(digits.size() - places, 1, '.');
    return sign + digits;
}

}  // namespace host
