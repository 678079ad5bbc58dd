// The rounds of watch as people read them.
#ifndef ZELSENSORS_FORMAT_WATCHFORMAT_H
#define ZELSENSORS_FORMAT_WATCHFORMAT_H

#include <string>
#include <vector>

#include "health/Sensor.h"
#include "source/Answer.h"
#include "text/Output.h"

namespace host {

// A line of a round, and how grave what it shows is.
struct WatchLine {
    std::string text;
    Severity severity = Severity::Normal;
};

// A round as people read it, in that charset: the head (which time and status), then a line for each sensor.
std::vector<WatchLine> watchLines(const Answer& answer, const std::string& head, Charset charset);

// The lines and an empty one, each with a newline.
std::string plainText(const std::vector<WatchLine>& lines);

// The lines as they are drawn over the last round's on a terminal of that size (0: not known): each cut to the width,
// and as many as there is room for, the last saying how many are missing.
std::string drawn(const std::vector<WatchLine>& lines, Output::Size size, bool inColour);

}  // namespace host

#endif
