// The names of CIM: how they compare, and CMPI's numbers in words.
#ifndef ZELSENSORS_BROKER_NAMES_H
#define ZELSENSORS_BROKER_NAMES_H

#include <cmpidt.h>

#include <string>
#include <string_view>

namespace broker {

// Whether two names are the same to CIM, which ignores the case of ASCII letters.
bool sameName(std::string_view left, std::string_view right);
// With ASCII letters in lower case.
char lowered(char c);
std::string lowered(std::string_view text);

// "CMPI_RC_ERR_FAILED" for 1; "CMPI_RC_<number>" for a number that CMPI does not name.
std::string nameOfStatus(int rc);
// CIM's word for a type as MOF writes it: "sint32", "string", "uint8[]"; chars counts as string. "type<number>" for a
// code that has no word there.
std::string nameOfType(CMPIType type);

}  // namespace broker

#endif
