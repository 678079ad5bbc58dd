// Answers as MOF, the text form of CIM.
#ifndef ZELSENSORS_FORMAT_MOFFORMAT_H
#define ZELSENSORS_FORMAT_MOFFORMAT_H

#include <string>

#include "source/Answer.h"

namespace host {

// The chip library as a comment, where it is known; an instance declaration for each instance, and for each path one
// that has the keys alone; an error as a comment at the end.
std::string mofText(const Answer& answer);

// "..." with MOF's escapes: control characters, and bytes that are not valid UTF-8, as four hexadecimal digits after
// \x.
std::string mofString(const std::string& text);

}  // namespace host

#endif
