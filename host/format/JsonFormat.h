// Answers as programs read them.
#ifndef ZELSENSORS_FORMAT_JSONFORMAT_H
#define ZELSENSORS_FORMAT_JSONFORMAT_H

#include <string>

#include "source/Answer.h"

namespace host {

enum class JsonLayout { Indented, OneLine };

// One JSON object with a newline at its end, of one shape for every command that asks for paths or instances:
//   {"command": text, "namespace": text, "class": text,
//    "simulated": boolean,        whether the chip library is a simulated one; null where that is not known
//    "status": {"rc": number, "name": text, "message": text},        message only where there is one
//    "paths": [{"namespace": text, "class": text, "keys": {name: value}}],      and "host" where there is one
//    "instances": [{"path": as above, "properties": {name: value}}]}
// Both lists are always there. Numbers are numbers, whatever their CIM type; a character is its code; dates and texts
// are texts; a reference is a path, an embedded instance an instance; null is null. A property that the provider did
// not set is absent. Bytes that are not valid UTF-8 become U+FFFD. All is ASCII: other characters are escaped.
std::string jsonText(const Answer& answer, JsonLayout layout);

}  // namespace host

#endif
