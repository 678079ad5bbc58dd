#include "CimText.h"

#include "broker/Names.h"

namespace {

std::string typeWord(CMPIType type) {
    if (type == CMPI_chars) return "chars";
    if (type == CMPI_charsA) return "chars[]";
    return broker::nameOfType(type);
}

std::string content(const broker::Value& value) {
    if (value.isNull) return "null";
    if (value.isArray()) {
        std::string list;
        for (const broker::Value& element : value.elements) list += (list.empty() ? "" : ", ") + content(element);
        return "[" + list + "]";
    }
    if (value.isText()) return "'" + value.text + "'";
    if (value.type == CMPI_boolean) return value.unsignedNumber != 0 ? "true" : "false";
    return value.isSigned() ? std::to_string(value.signedNumber) : std::to_string(value.unsignedNumber);
}

}  // namespace

std::string describe(const broker::Value& value) {
    return typeWord(value.type) + " " + content(value);
}

std::string describe(const broker::ObjectPath& path) {
    std::string text = path.host + path.nameSpace + ":" + path.className;
    for (const broker::NamedValue& key : path.keys) text += " " + key.name + "=" + describe(key.value);
    return text;
}

std::vector<std::string> describeProperties(const broker::Instance& instance) {
    std::vector<std::string> lines;
    for (const broker::NamedValue& property : instance.properties) {
        lines.push_back(property.name + ": " + describe(property.value));
    }
    return lines;
}

std::vector<std::string> propertyNames(const broker::Instance& instance) {
    std::vector<std::string> names;
    for (const broker::NamedValue& property : instance.properties) names.push_back(property.name);
    return names;
}

std::vector<std::string> describeCalls(const std::vector<broker::RecordedCall>& calls) {
    std::vector<std::string> lines;
    for (const broker::RecordedCall& call : calls) {
        lines.push_back(call.name.empty() ? call.function : call.function + " " + call.name);
    }
    return lines;
}

CMPIrc raisedCode(const std::function<void()>& action) {
    try {
        action();
    } catch (CMPIStatus* status) {
        return status->rc;
    }
    return CMPI_RC_OK;
}
