#ifndef ZELSENSORS_FORMAT_COLOUR_H
#define ZELSENSORS_FORMAT_COLOUR_H

#include <string>

#include "health/Sensor.h"

namespace host {

// The text in the colour of what it shows, as a terminal takes it: yellow past a non-critical threshold, red past the
// others, magenta without a reading; as it is for what is well.
std::string coloured(const std::string& text, Severity severity, bool hasReading = true);

}  // namespace host

#endif
