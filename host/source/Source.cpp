#include "source/Source.h"

namespace host {

Source::~Source() = default;

broker::Reply ask(Source& source, const Request& request) {
    const broker::ObjectPath classPath{"", request.nameSpace, request.className, {}};
    broker::ObjectPath path = classPath;
    path.keys.push_back({"Name", broker::Value::ofText(request.instanceName)});
    switch (request.command) {
        case Command::Names:
            return source.enumerateInstanceNames(classPath);
        case Command::Instances:
        case Command::Log:
            return source.enumerateInstances(classPath);
        case Command::Get:
            return source.getInstance(path);
        case Command::Create:
            return source.createInstance(classPath, {path, path.keys});
        case Command::Modify:
            return source.modifyInstance(path, {path, path.keys});
        case Command::Delete:
            return source.deleteInstance(path);
        case Command::Query:
            return source.execQuery(classPath, request.query, request.queryLanguage);
        case Command::Verify:
        case Command::Sensors:
        case Command::Check:
        case Command::Watch:
        case Command::Metrics:
        case Command::Doctor:
        case Command::Record:
        case Command::Diff:
            break;  // many requests
    }
    return {};
}

}  // namespace host
