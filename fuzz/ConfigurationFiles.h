// The two configuration files as the fuzzer wants them: in a program that links this, fopen of their paths gives what
// was set here, and anything else is opened as usual. Nothing of the machine is read or written.
#ifndef ZELSENSORS_FUZZ_CONFIGURATIONFILES_H
#define ZELSENSORS_FUZZ_CONFIGURATIONFILES_H

#include <optional>
#include <string>

namespace configuration {

// Without a value, the file does not exist.
void setLogFile(std::optional<std::string> contents);     // /etc/tarn/log.conf
void setSensorFile(std::optional<std::string> contents);  // /etc/tarn/sensor.conf

// How many streams on them are open, and how often one was opened since the start.
unsigned openStreams();
unsigned openings();

}  // namespace configuration

#endif
