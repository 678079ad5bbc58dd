#include "RecordedExchanges.h"

#include <algorithm>
#include <filesystem>
#include <map>
#include <stdexcept>

#include "FileContents.h"

namespace {

namespace fs = std::filesystem;

using host::Command;
using host::Request;

std::string afterHeader(const std::string& message) {
    const std::size_t end = message.find("\r\n\r\n");
    if (end == std::string::npos) throw std::runtime_error("no HTTP header");
    return message.substr(end + 4);
}

std::string sensorOf(const std::string& scenario) {
    static const std::map<std::string, std::string> sensors{{"healthy", "CPU Temperature(00000010)"},
                                                            {"nodriver", "CPU Temperature(00000010)"},
                                                            {"fail", "Board Temperature(00000011)"},
                                                            {"odd", R"(Kühler "links" <1> & \ \n(00000011))"}};
    return sensors.at(scenario.substr(0, scenario.find('-')));
}

template <typename Entry>
void sortByPlace(std::vector<Entry>& entries) {
    std::sort(entries.begin(), entries.end(), [](const Entry& left, const Entry& right) {
        return left.scenario + '/' + left.operation < right.scenario + '/' + right.operation;
    });
}

}  // namespace

std::string Recorded::answer() const {
    const std::string contents = contentsOf(fs::path(CIM_XML) / manager / scenario / (operation + ".answer"));
    if (contents.empty()) throw std::runtime_error("nothing is recorded of " + manager + ' ' + operation);
    return contents;
}

std::string Recorded::body() const {
    return afterHeader(answer());
}

std::vector<Recorded> recordedOf(const std::string& manager, const std::string& scenario) {
    std::vector<Recorded> all;
    for (const auto& file : fs::directory_iterator(fs::path(CIM_XML) / manager / scenario)) {
        all.push_back({manager, scenario, file.path().stem()});
    }
    sortByPlace(all);
    return all;
}

std::vector<Recorded> allRecorded() {
    std::vector<Recorded> all;
    for (const char* manager : {"sfcb", "openpegasus"}) {
        for (const auto& scenario : fs::directory_iterator(fs::path(CIM_XML) / manager)) {
            const std::vector<Recorded> more = recordedOf(manager, scenario.path().filename());
            all.insert(all.end(), more.begin(), more.end());
        }
    }
    return all;
}

std::vector<RecordedRequest> allRecordedRequests() {
    std::vector<RecordedRequest> all;
    for (const auto& file : fs::recursive_directory_iterator(fs::path(CIM_XML) / "requests")) {
        if (!file.is_regular_file()) continue;
        const std::string contents = contentsOf(file.path());
        const std::string body = afterHeader(contents);
        all.push_back({file.path().parent_path().filename(), file.path().stem(),
                       contents.substr(0, contents.size() - body.size()), body});
    }
    sortByPlace(all);
    return all;
}

Request requestOf(const std::string& scenario, const std::string& operation) {
    Request request;
    request.query = "SELECT * FROM TQS_NumericSensor";
    static const std::map<std::string, Command> commands{
        {"names", Command::Names},       {"instances", Command::Instances}, {"get", Command::Get},
        {"get-unknown", Command::Get},   {"get-empty-name", Command::Get},  {"log-names", Command::Names},
        {"log", Command::Log},           {"log-get", Command::Get},         {"wrong-namespace", Command::Names},
        {"wrong-class", Command::Names}, {"create", Command::Create},       {"modify", Command::Modify},
        {"delete", Command::Delete},     {"query", Command::Query}};
    request.command = commands.at(operation);
    if (operation.rfind("log", 0) == 0) request.className = host::EVENT_LOG_CLASS;
    if (operation == "wrong-class") request.className = "TQS_Nothing";
    if (operation == "wrong-namespace") request.nameSpace = "root/nowhere";
    if (operation == "get" || operation == "modify" || operation == "delete") request.instanceName = sensorOf(scenario);
    if (operation == "get-unknown") request.instanceName = "No Such Sensor";
    if (operation == "log-get") request.instanceName = "Quorvel POS System Event Log";
    if (operation == "create") request.instanceName = "New";
    return request;
}

host::CimXmlRequest writtenRequest(const Request& request) {
    const broker::ObjectPath classPath{"", request.nameSpace, request.className, {}};
    broker::ObjectPath path = classPath;
    path.keys.push_back({"Name", broker::Value::ofText(request.instanceName)});
    switch (request.command) {
        case Command::Names:
            return host::enumerateInstanceNamesXml(FIRST_MESSAGE_ID, classPath);
        case Command::Get:
            return host::getInstanceXml(FIRST_MESSAGE_ID, path);
        case Command::Create:
            return host::createInstanceXml(FIRST_MESSAGE_ID, classPath, {path, path.keys});
        case Command::Modify:
            return host::modifyInstanceXml(FIRST_MESSAGE_ID, path, {path, path.keys});
        case Command::Delete:
            return host::deleteInstanceXml(FIRST_MESSAGE_ID, path);
        case Command::Query:
            return host::execQueryXml(FIRST_MESSAGE_ID, classPath, request.query, request.queryLanguage);
        default:
            return host::enumerateInstancesXml(FIRST_MESSAGE_ID, classPath);
    }
}
