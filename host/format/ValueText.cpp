#include "format/ValueText.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdio>

#include "text/Utf8.h"

namespace host {
namespace {

using broker::ObjectPath;
using broker::Value;

std::string quoted(const std::string& text) {
    std::string result = "\"";
    for (const char c : text) {
        if (c == '"' || c == '\\') result += '\\';
        result += c;
    }
    return result + '"';
}

std::string keyText(const Value& value) {
    if (value.isSigned() && !value.isNull) return std::to_string(value.signedNumber);
    if (value.isUnsigned() && !value.isNull) return std::to_string(value.unsignedNumber);
    if (value.type == CMPI_boolean && !value.isNull) return value.unsignedNumber != 0 ? "TRUE" : "FALSE";
    if (value.type == CMPI_ref && value.path) return quoted(pathText(*value.path));
    return quoted(value.text);
}

std::string arrayText(const Value& value) {
    std::string text;
    for (const Value& element : value.elements) {
        if (!text.empty()) text += ", ";
        text += valueText(element);
    }
    return '{' + text + '}';
}

std::string characterText(const Value& value) {
    std::array<char, 16> text{};
    std::snprintf(text.data(), text.size(), "U+%04llx", static_cast<unsigned long long>(value.unsignedNumber));
    return text.data();
}

}  // namespace

std::string realText(double number) {
    std::array<char, 32> buffer{};
    const auto result = std::to_chars(buffer.data(), buffer.data() + buffer.size(), number);
    std::string text(buffer.data(), result.ptr);
    if (!std::isfinite(number) || text.find('.') != std::string::npos) return text;
    return text.insert(std::min(text.find('e'), text.size()), ".0");
}

std::string pathText(const ObjectPath& path) {
    std::string text = path.host.empty() ? "" : "//" + path.host + '/';
    text += path.nameSpace + ':' + path.className;
    char separator = '.';
    for (const broker::NamedValue& key : path.keys) {
        text += separator + key.name + '=' + keyText(key.value);
        separator = ',';
    }
    return text;
}

std::string valueText(const Value& value) {
    if (value.isNull) return "null";
    if (value.isArray()) return arrayText(value);
    if (value.isSigned()) return std::to_string(value.signedNumber);
    if (value.isUnsigned()) return std::to_string(value.unsignedNumber);
    switch (value.type) {
        case CMPI_boolean:
            return value.unsignedNumber != 0 ? "true" : "false";
        case CMPI_char16:
            return characterText(value);
        case CMPI_real32:
        case CMPI_real64:
            return realText(value.real);
        case CMPI_ref:
            return value.path ? printable(pathText(*value.path)) : "null";
        case CMPI_instance:
            return value.instance ? printable(pathText(value.instance->path)) : "null";
        default:
            return printable(value.text);
    }
}

}  // namespace host
