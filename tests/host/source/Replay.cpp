#include "Replay.h"

#include <pugixml.hpp>
#include <sstream>
#include <stdexcept>

#include "RecordedExchanges.h"

namespace {

using pugi::xml_node;

std::string keyIn(xml_node parent) {
    return parent.select_node(".//KEYVALUE").node().text().get();
}

std::string operationOf(const std::string& method, const std::string& className, const std::string& key) {
    const bool isLog = className == host::EVENT_LOG_CLASS;
    if (method == "EnumerateInstanceNames") return isLog ? "log-names" : "names";
    if (method == "EnumerateInstances") return isLog ? "log" : "instances";
    if (method != "GetInstance") throw std::runtime_error("nothing is recorded of " + method);
    if (isLog) return "log-get";
    return key == "No Such Sensor" ? "get-unknown" : "get";
}

// The recorded `get` with the instance of that key instead of its own.
std::string singleInstance(const std::string& manager, const std::string& scenario, const std::string& key) {
    pugi::xml_document all;
    all.load_string(Recorded{manager, scenario, "instances"}.body().c_str(), pugi::parse_full);
    pugi::xml_document single;
    single.load_string(Recorded{manager, scenario, "get"}.body().c_str(), pugi::parse_full);
    xml_node returned = single.select_node("//IRETURNVALUE").node();
    for (const pugi::xpath_node& each : all.select_nodes("//VALUE.NAMEDINSTANCE")) {
        if (keyIn(each.node().child("INSTANCENAME")) != key) continue;
        returned.remove_children();
        returned.append_copy(each.node().child("INSTANCE"));
        std::ostringstream text;
        single.save(text, "", pugi::format_raw);
        return text.str();
    }
    return Recorded{manager, scenario, "get-unknown"}.body();
}

}  // namespace

std::string replayedBody(const std::string& manager, const std::string& scenario, const std::string& requestBody) {
    pugi::xml_document request;
    request.load_string(requestBody.c_str(), pugi::parse_full);
    const std::string id = request.select_node("//MESSAGE").node().attribute("ID").value();
    const std::string method = request.select_node("//IMETHODCALL").node().attribute("NAME").value();
    const xml_node name = request.select_node("//CLASSNAME").node();
    const std::string className = name ? name.attribute("NAME").value()
                                       : request.select_node("//INSTANCENAME").node().attribute("CLASSNAME").value();
    const std::string key = keyIn(request);
    const std::string operation = operationOf(method, className, key);
    std::string body =
        operation == "get" ? singleInstance(manager, scenario, key) : Recorded{manager, scenario, operation}.body();
    const std::string recordedId = std::string("MESSAGE ID=\"") + FIRST_MESSAGE_ID + '"';
    return body.replace(body.find(recordedId), recordedId.size(), "MESSAGE ID=\"" + id + '"');
}

RawServer::Behaviour replaying(const std::string& manager, const std::string& scenario) {
    return [manager, scenario](Connection& connection) {
        for (;;) {
            const std::string request = connection.readRequest();
            if (request.empty()) return;
            const std::string body = request.substr(request.find("\r\n\r\n") + 4);
            connection.write(httpAnswer(replayedBody(manager, scenario, body)));
        }
    };
}
