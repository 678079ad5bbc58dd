// What the command line asks for.
#ifndef ZELSENSORS_CLI_OPTIONS_H
#define ZELSENSORS_CLI_OPTIONS_H

#include <string>
#include <vector>

namespace host {

enum class Command { Names, Instances, Get, Log, Watch, Create, Modify, Delete, Query, Verify };
enum class Format { Table, Json, Mof };

constexpr const char* kSensorClass = "TQS_NumericSensor";
constexpr const char* kEventLogClass = "TQS_SystemEventLog";

struct Options {
    Command command = Command::Instances;
    std::string className = kSensorClass;
    std::string instanceName;  // the key "Name", of get, create, modify and delete
    std::string query;
    std::string queryLanguage = "WQL";
    double interval = 2;              // seconds between the rounds of watch
    unsigned rounds = 0;              // of watch; 0: until it is interrupted
    std::vector<std::string> schema;  // of verify: MOF files in the order of reading; empty: the own tree's

    std::string provider;  // the library; empty: the one of the program's own tree
    std::string providerName = "SensorProvider";
    std::string chip;      // a file or folder, or "system"; empty: the default
    std::string scenario;  // a name or a file; empty: what the environment says
    std::string nameSpace = "root/cimv2";
    Format format = Format::Table;
    std::string providerOutput;  // a file, or "-"; empty: only the lines of a start that fails are shown
};

// The command's word on the command line.
const char* nameOf(Command command);

}  // namespace host

#endif
