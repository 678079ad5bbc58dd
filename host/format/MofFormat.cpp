#include "format/MofFormat.h"

#include <array>
#include <cmath>
#include <cstdio>
#include <string_view>

#include "format/ValueText.h"
#include "text/Utf8.h"

namespace host {
namespace {

using broker::Instance;
using broker::NamedValue;
using broker::Value;

// Always four digits: fewer would take in a digit that follows.
std::string hexEscape(std::uint64_t code) {
    std::array<char, 24> text{};
    std::snprintf(text.data(), text.size(), "\\x%04llX", static_cast<unsigned long long>(code));
    return text.data();
}

std::string mofCharacter(const Character& character, std::string_view bytes) {
    if (!character.isUtf8) return hexEscape(character.codePoint);
    switch (character.codePoint) {
        case U'"':
            return "\\\"";
        case U'\\':
            return "\\\\";
        case U'\b':
            return "\\b";
        case U'\t':
            return "\\t";
        case U'\n':
            return "\\n";
        case U'\f':
            return "\\f";
        case U'\r':
            return "\\r";
        default:
            break;
    }
    return isControl(character.codePoint) ? hexEscape(character.codePoint) : std::string(bytes);
}

std::string declaration(const std::string& className, const std::vector<NamedValue>& properties);

std::string mofValue(const Value& value) {
    if (value.isNull) return "NULL";
    if (value.isArray()) {
        std::string text;
        for (const Value& element : value.elements) text += (text.empty() ? "" : ", ") + mofValue(element);
        return '{' + text + '}';
    }
    if (value.isSigned()) return std::to_string(value.signedNumber);
    if (value.isUnsigned()) return std::to_string(value.unsignedNumber);
    switch (value.type) {
        case CMPI_boolean:
            return value.unsignedNumber != 0 ? "TRUE" : "FALSE";
        case CMPI_char16:
            return '\'' + hexEscape(value.unsignedNumber) + '\'';
        case CMPI_real32:
        case CMPI_real64:
            return std::isfinite(value.real) ? realText(value.real) : "NULL";
        case CMPI_ref:
            return value.path ? mofString(pathText(*value.path)) : "NULL";
        case CMPI_instance:
            return value.instance ? mofString(declaration(value.instance->path.className, value.instance->properties))
                                  : "NULL";
        default:
            return mofString(value.text);
    }
}

std::string declaration(const std::string& className, const std::vector<NamedValue>& properties) {
    std::string text = "instance of " + className + " {\n";
    for (const NamedValue& property : properties) {
        text += "    " + property.name + " = " + mofValue(property.value) + ";\n";
    }
    return text + "};\n";
}

}  // namespace

std::string mofString(const std::string& text) {
    std::string result = "\"";
    std::string_view rest = text;
    while (!rest.empty()) {
        const Character next = firstCharacter(rest);
        result += mofCharacter(next, rest.substr(0, next.length));
        rest.remove_prefix(next.length);
    }
    return result + '"';
}

std::string mofText(const Answer& answer) {
    std::string text;
    if (answer.chip) text += "// " + chipNote(*answer.chip) + '\n';
    for (const broker::ObjectPath& path : answer.reply.paths) text += declaration(path.className, path.keys);
    for (const Instance& instance : answer.reply.instances) {
        text += declaration(instance.path.className, instance.properties);
    }
    const broker::Status& status = answer.reply.status;
    if (status.rc != CMPI_RC_OK) text += "// The provider ended with " + statusText(status) + '\n';
    return text;
}

}  // namespace host
