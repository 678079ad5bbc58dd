#include "CimText.h"

#include "broker/Names.h"

namespace {

std::string typeWord(CMPIType type) {
    if (type == CMPI_chars) return "chars";
    if (type == CMPI_charsA) return "chars[]";
    return broker::nameOfType(type);
}

std::string nameIn(const broker::ObjectPath& path) {
    const broker::Value* name = path.findKey("Name");
    return name == nullptr ? "without a name" : "'" + name->text + "'";
}

std::string content(const broker::Value& value) {
    if (value.isNull) return "null";
    if (value.isArray()) {
        std::string list;
        for (const broker::Value& element : value.elements) list += (list.empty() ? "" : ", ") + content(element);
        return "[" + list + "]";
    }
    if (value.isText()) return "'" + value.text + "'";
    if (value.path != nullptr) return nameIn(*value.path);
    if (value.instance != nullptr) return nameIn(value.instance->path);
    if (value.type == CMPI_boolean) return value.unsignedNumber != 0 ? "true" : "false";
    return value.isSigned() ? std::to_string(value.signedNumber) : std::to_string(value.unsignedNumber);
}

}  // namespace

std::string describe(const broker::Value& value) {
    return typeWord(value.type) + " " + content(value);
}

std::string describe(const broker::ObjectPath& path) {
    std::string text = path.host + path.nameSpace + ":" + path.className;
    for (const std::string& key : describe(path.keys)) text += " " + key;
    return text;
}

Strings describe(const std::vector<broker::NamedValue>& values) {
    Strings texts;
    for (const broker::NamedValue& one : values) texts.push_back(one.name + "=" + describe(one.value));
    return texts;
}

Strings describe(const std::vector<broker::RecordedCall>& calls) {
    Strings texts;
    for (const broker::RecordedCall& call : calls) {
        texts.push_back(call.function);
        if (!call.name.empty()) texts.back() += " " + call.name;
        if (!call.value.isNull) texts.back() += (call.name.empty() ? " " : "=") + describe(call.value);
    }
    return texts;
}

Strings propertyNames(const broker::Instance& instance) {
    Strings names;
    for (const broker::NamedValue& property : instance.properties) names.push_back(property.name);
    return names;
}

CMPIrc thrownCode(const std::function<void()>& action) {
    try {
        action();
    } catch (CMPIStatus* status) {
        return status->rc;
    }
    return CMPI_RC_OK;
}
