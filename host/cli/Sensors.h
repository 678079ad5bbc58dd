#ifndef ZELSENSORS_CLI_SENSORS_H
#define ZELSENSORS_CLI_SENSORS_H

#include <optional>
#include <stdexcept>
#include <string>

#include "cli/Options.h"
#include "format/SensorsJson.h"
#include "health/SensorRounds.h"
#include "text/Output.h"

namespace host {

// No sensor has a name; what() says which, and what may have been meant.
class NoSuchName : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

// Asks for the sensors that the options name, and writes those that they want to see, in a table with the note (see
// ChosenSource) and in JSON with the chip library where it is known. Gives the first status other than 0. Throws
// NoSuchName, UsageError for a beginning of several names, and what the source throws.
std::optional<broker::Status> showSensors(const Options& options, Source& source, const std::string& note,
                                          const std::optional<AnsweringChip>& chip, Output& output);

// Leaves those that the options want to see, and sorts them.
void narrow(std::vector<Sensor>& sensors, const SensorOptions& options);

// What `get` asks for: one request where the name is written out. Where no instance has it, the names are asked for,
// and that which the word means (see SensorNames.h). Throws UsageError for a word that means several.
struct NamedReply {
    broker::Reply reply;
    std::string hint;  // what to say besides where the word means nothing
};
NamedReply getNamed(const Request& request, Source& source);

}  // namespace host

#endif
