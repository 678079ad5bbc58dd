#include "MadeManager.h"

#include <stdexcept>

#include "RawServer.h"

namespace {

// What stands between the two, the first time.
std::string between(const std::string& text, const std::string& begin, const std::string& end) {
    const std::size_t at = text.find(begin);
    if (at == std::string::npos) return "";
    const std::size_t from = at + begin.size();
    return text.substr(from, text.find(end, from) - from);
}

std::string methodIn(const std::string& body) {
    return between(body, "IMETHODCALL NAME=\"", "\"");
}

std::string keyIn(const std::string& body) {
    return between(between(body, "<KEYVALUE", "/KEYVALUE>"), ">", "<");
}

std::string property(const std::string& name, const std::string& type, const std::string& value) {
    return "<PROPERTY NAME=\"" + name + "\" TYPE=\"" + type + "\"><VALUE>" + value + "</VALUE></PROPERTY>";
}

std::string pathXml(const MadeSensor& sensor) {
    return "<INSTANCENAME CLASSNAME=\"TQS_NumericSensor\"><KEYBINDING NAME=\"Name\"><KEYVALUE VALUETYPE=\"string\">" +
           sensor.name + "</KEYVALUE></KEYBINDING></INSTANCENAME>";
}

std::string instanceXml(const MadeSensor& sensor, int reading) {
    const bool isDrive = sensor.name.rfind("SSD", 0) == 0;
    return "<INSTANCE CLASSNAME=\"TQS_NumericSensor\">" + property("Name", "string", sensor.name) +
           property("DeviceID", "string", isDrive ? sensor.name.substr(3, 1) : "00000010") +
           property("SensorType", "uint16", isDrive ? "0" : "2") + property("BaseUnits", "uint16", "2") +
           property("CurrentReading", "sint32", std::to_string(reading)) +
           property("UpperThresholdCritical", "sint32", "60") + "</INSTANCE>";
}

std::string response(const std::string& body, const std::string& content) {
    return httpAnswer(
        "<?xml version=\"1.0\" encoding=\"utf-8\"?><CIM CIMVERSION=\"2.0\" DTDVERSION=\"2.0\"><MESSAGE "
        "ID=\"" +
        between(body, "MESSAGE ID=\"", "\"") + "\" PROTOCOLVERSION=\"1.0\"><SIMPLERSP><IMETHODRESPONSE NAME=\"" +
        methodIn(body) + "\">" + content + "</IMETHODRESPONSE></SIMPLERSP></MESSAGE></CIM>");
}

std::string error(int code) {
    return "<ERROR CODE=\"" + std::to_string(code) + "\" DESCRIPTION=\"made up\"/>";
}

}  // namespace

std::string MadeManager::answer(const std::string& requestBody) const {
    const std::string method = methodIn(requestBody);
    std::string content;
    for (const MadeSensor& sensor : sensors) {
        if (method == "EnumerateInstanceNames") content += pathXml(sensor);
        if (method == "EnumerateInstances") {
            if (sensor.fails) return response(requestBody, error(1));
            content += "<VALUE.NAMEDINSTANCE>" + pathXml(sensor) +
                       instanceXml(sensor, sensor.enumerated.value_or(sensor.reading)) + "</VALUE.NAMEDINSTANCE>";
        }
        if (method == "GetInstance" && sensor.name == keyIn(requestBody)) {
            if (sensor.fails) return response(requestBody, error(1));
            content = instanceXml(sensor, sensor.reading);
        }
    }
    return response(requestBody, "<IRETURNVALUE>" + content + "</IRETURNVALUE>");
}

std::string requestNamed(const std::string& requestBody) {
    const std::string key = keyIn(requestBody);
    return methodIn(requestBody) + (key.empty() ? "" : ' ' + key);
}
