// Types and values as DSP0201 writes them.
#ifndef ZELSENSORS_SOURCE_CIMXMLVALUES_H
#define ZELSENSORS_SOURCE_CIMXMLVALUES_H

#include <optional>
#include <string>
#include <string_view>

#include "broker/Model.h"

namespace host {

// The type of a TYPE attribute, such as "uint8"; nothing for a word that is none, and for references.
std::optional<CMPIType> cimTypeNamed(std::string_view name);

// The value that the text of a VALUE element means; nothing where it is none of that type. A text is taken as it is,
// the others without the blanks around them.
std::optional<broker::Value> cimValueIn(const std::string& text, CMPIType type);

// A number of a key, whose type is not declared: sint64 below zero, uint64, or real64.
std::optional<broker::Value> cimNumberIn(const std::string& text);

}  // namespace host

#endif
