#include "source/Request.h"

namespace host {

const char* nameOf(Command command) {
    switch (command) {
        case Command::Sensors:
            return "sensors";
        case Command::Check:
            return "check";
        case Command::Names:
            return "names";
        case Command::Instances:
            return "instances";
        case Command::Get:
            return "get";
        case Command::Log:
            return "log";
        case Command::Watch:
            return "watch";
        case Command::Metrics:
            return "metrics";
        case Command::Create:
            return "create";
        case Command::Modify:
            return "modify";
        case Command::Delete:
            return "delete";
        case Command::Query:
            return "query";
        case Command::Verify:
            return "verify";
        case Command::Doctor:
            return "doctor";
        case Command::Record:
            return "record";
        case Command::Diff:
            return "diff";
    }
    return "";
}

}  // namespace host
