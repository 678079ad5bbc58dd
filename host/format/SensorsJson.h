// The model's sensors as programs read them.
#ifndef ZELSENSORS_FORMAT_SENSORSJSON_H
#define ZELSENSORS_FORMAT_SENSORSJSON_H

#include <ctime>
#include <optional>
#include <string>

#include "health/SensorRounds.h"
#include "health/Terminals.h"
#include "source/Answer.h"

namespace host {

// What docs/json.md says of `sensors`; none for the chip where it is not known. `time` is when the round was asked.
std::string sensorsJson(const Round& round, const std::string& nameSpace, std::time_t time,
                        const std::optional<AnsweringChip>& chip);

// The same of `watch`, in one line.
std::string watchJson(const Round& round, const std::string& nameSpace, std::time_t time,
                      const std::optional<AnsweringChip>& chip);

// A line for each sensor, and before them one with the names of the columns where it is wanted: RFC 4180, but lines end
// in a line feed.
std::string sensorsCsv(const std::vector<Sensor>& sensors, bool hasHeader);

// The same of many terminals; docs/json.md says what is in it.
std::string terminalsJson(const std::vector<Terminal>& terminals, const std::string& nameSpace, std::time_t time);

// As sensorsCsv(), with the server in the first column. One without a sensor has a line that has the reason alone.
std::string terminalsCsv(const std::vector<Terminal>& terminals, bool hasHeader);

// "ok", "non-critical", "critical" or "fatal".
const char* severityWord(Severity severity);

}  // namespace host

#endif
