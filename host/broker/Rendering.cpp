#include "broker/Rendering.h"

#include <sstream>

namespace broker {
namespace {

std::string quoted(const std::string& text) {
    std::string result = "\"";
    for (const char c : text) {
        if (c == '"' || c == '\\') result += '\\';
        result += c;
    }
    return result + '"';
}

std::string renderedElements(const std::vector<Value>& elements) {
    std::string result;
    for (const Value& element : elements) result += (result.empty() ? "" : ", ") + rendered(element);
    return "{" + result + "}";
}

std::string renderedReal(double number) {
    std::ostringstream text;
    text << number;
    return text.str();
}

}  // namespace

std::string rendered(const Value& value) {
    if (value.isNull) return "NULL";
    if (value.isArray()) return renderedElements(value.elements);
    if (value.isText() || value.type == CMPI_dateTime) return quoted(value.text);
    if (value.isSigned()) return std::to_string(value.signedNumber);
    if (value.type == CMPI_boolean) return value.unsignedNumber != 0 ? "TRUE" : "FALSE";
    if (value.type == CMPI_real32 || value.type == CMPI_real64) return renderedReal(value.real);
    if (value.path) return quoted(rendered(*value.path));
    if (value.instance) return rendered(*value.instance);
    return std::to_string(value.unsignedNumber);
}

std::string rendered(const ObjectPath& path) {
    std::string result = (path.host.empty() ? "" : "//" + path.host + "/") + path.nameSpace + ":" + path.className;
    char separator = '.';
    for (const NamedValue& key : path.keys) {
        result += separator + key.name + "=" + rendered(key.value);
        separator = ',';
    }
    return result;
}

std::string rendered(const Instance& instance) {
    std::string result = "instance of " + instance.path.className + " {";
    for (const NamedValue& property : instance.properties) {
        result += " " + property.name + " = " + rendered(property.value) + ";";
    }
    return result + " }";
}

}  // namespace broker
