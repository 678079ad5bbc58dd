// What is asked of a provider.
#ifndef ZELSENSORS_SOURCE_REQUEST_H
#define ZELSENSORS_SOURCE_REQUEST_H

#include <string>

namespace host {

enum class Command {
    Sensors,
    Check,
    Names,
    Instances,
    Get,
    Log,
    Watch,
    Metrics,
    Create,
    Modify,
    Delete,
    Query,
    Verify,
    Doctor,
    Record,
    Diff
};

// The command's word on the command line.
const char* nameOf(Command command);

constexpr const char* SENSOR_CLASS = "TQS_NumericSensor";
constexpr const char* EVENT_LOG_CLASS = "TQS_SystemEventLog";

struct Request {
    Command command = Command::Instances;
    std::string nameSpace = "root/cimv2";
    std::string className = SENSOR_CLASS;
    std::string instanceName;  // the key "Name", of get, create, modify and delete
    std::string query;
    std::string queryLanguage = "WQL";
};

}  // namespace host

#endif
