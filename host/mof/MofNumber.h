// MOF's notations of a number. Pure functions, thread-safe.
#ifndef ZELSENSORS_MOF_MOFNUMBER_H
#define ZELSENSORS_MOF_MOFNUMBER_H

#include <optional>
#include <string_view>

#include "mof/Schema.h"

namespace mof {

// 0 to 9, in any locale.
bool isDigit(char c);

// A number as MOF writes it: 12, -12, 0x1F, 017, 101b, 1.5, -.5e+3. Nothing where it is no number, or an integer of
// more than 64 bits, or a real beyond what a double holds.
std::optional<Literal> numberIn(std::string_view text);

}  // namespace mof

#endif
