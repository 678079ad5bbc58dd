#include "source/CimXmlReader.h"

#include <charconv>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <memory>
#include <optional>
#include <pugixml.hpp>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

#include "broker/Names.h"
#include "source/CimXmlValues.h"
#include "text/Utf8.h"

namespace host {
namespace {

using broker::NamedValue;
using broker::ObjectPath;
using broker::Value;
using pugi::xml_node;

// References in the keys of references: far more than any class has, and no danger for the stack.
constexpr int DEEPEST_REFERENCE = 16;

[[noreturn]] void refuse(const std::string& what) {
    throw AnswerError("the answer " + what);
}

bool isNamed(xml_node node, const char* name) {
    return std::strcmp(node.name(), name) == 0;
}

xml_node requiredChild(xml_node parent, const char* name) {
    const xml_node child = parent.child(name);
    if (!child) refuse(std::string("has no ") + name + " element");
    return child;
}

// A reference to U+0000, or to a number that is none in 32 bits, would end the text in which it stands, and what
// follows would be lost unseen.
bool refersToNoCharacter(std::string_view body) {
    for (std::size_t at = body.find("&#"); at != std::string_view::npos; at = body.find("&#", at + 2)) {
        const bool isHex = body.substr(at + 2, 1) == "x";
        const char* begin = body.data() + at + (isHex ? 3 : 2);
        const char* end = body.data() + body.size();
        std::uint32_t number = 0;
        const auto result = std::from_chars(begin, end, number, isHex ? 16 : 10);
        if (result.ptr == begin || result.ptr == end || *result.ptr != ';') continue;
        if (result.ec != std::errc() || number == 0 || number > 0x10ffff) return true;
    }
    return false;
}

void load(pugi::xml_document& document, const std::string& body) {
    if (body.rfind("\xff\xfe", 0) == 0 || body.rfind("\xfe\xff", 0) == 0) refuse("is in UTF-16; only UTF-8 is read");
    if (body.find('\0') != std::string::npos) refuse("holds the byte 0");
    if (refersToNoCharacter(body)) refuse("refers to a character that there is not");
    const unsigned flags = pugi::parse_default | pugi::parse_ws_pcdata | pugi::parse_declaration;
    const pugi::xml_parse_result result = document.load_buffer(body.data(), body.size(), flags, pugi::encoding_utf8);
    if (!result) {
        refuse(std::string("is no whole XML document (at byte ") + std::to_string(result.offset) + " of " +
               std::to_string(body.size()) + ": " + result.description() + ')');
    }
}

void requireUtf8(const pugi::xml_document& document) {
    for (const xml_node node : document.children()) {
        if (node.type() != pugi::node_declaration) continue;
        const pugi::xml_attribute encoding = node.attribute("encoding");
        if (!encoding || broker::sameName(encoding.value(), "utf-8")) continue;
        if (!broker::sameName(encoding.value(), "us-ascii")) {
            refuse(std::string("is in ") + printable(encoding.value()) + "; only UTF-8 is read");
        }
    }
}

class Reader {
  public:
    explicit Reader(const CimXmlRequest& request) : m_request(request) {}

    CimXmlAnswer read(const pugi::xml_document& document) {
        const xml_node message = requiredChild(requiredChild(document, "CIM"), "MESSAGE");
        if (message.attribute("ID").value() != m_request.messageId) {
            refuse("belongs to another request: its message is " + printable(message.attribute("ID").value()) +
                   ", ours is " + m_request.messageId);
        }
        const xml_node response = requiredChild(requiredChild(message, "SIMPLERSP"), "IMETHODRESPONSE");
        if (response.attribute("NAME").value() != m_request.method) {
            refuse("is one to " + printable(response.attribute("NAME").value()) + " instead of " + m_request.method);
        }
        if (const xml_node error = response.child("ERROR")) readError(error);
        for (const xml_node each : response.child("IRETURNVALUE").children()) {
            if (each.type() == pugi::node_element) readReturned(each);
        }
        return std::move(m_answer);
    }

  private:
    void readError(xml_node error) {
        const std::string_view code = error.attribute("CODE").value();
        int number = 0;
        const auto result = std::from_chars(code.data(), code.data() + code.size(), number);
        if (result.ec != std::errc() || result.ptr != code.data() + code.size() || number <= 0) {
            refuse("has an ERROR whose code is '" + printable(code) + "'");
        }
        broker::Status& status = m_answer.reply.status;
        status.rc = static_cast<CMPIrc>(number);
        if (const pugi::xml_attribute text = error.attribute("DESCRIPTION")) status.message = noted(text.value());
    }

    // What each operation returns.
    bool isExpected(xml_node returned) const {
        const std::string& method = m_request.method;
        if (method == "EnumerateInstanceNames" || method == "CreateInstance") return isNamed(returned, "INSTANCENAME");
        if (method == "EnumerateInstances") return isNamed(returned, "VALUE.NAMEDINSTANCE");
        if (method == "GetInstance") return isNamed(returned, "INSTANCE");
        if (method != "ExecQuery") return false;
        return isNamed(returned, "VALUE.OBJECTWITHPATH") || isNamed(returned, "VALUE.OBJECTWITHLOCALPATH") ||
               isNamed(returned, "VALUE.OBJECT");
    }

    void readReturned(xml_node returned) {
        if (!isExpected(returned)) refuse("to " + m_request.method + " holds a " + printable(returned.name()));
        broker::Reply& reply = m_answer.reply;
        if (isNamed(returned, "INSTANCENAME")) {
            reply.paths.push_back(instanceName(returned));
        } else if (isNamed(returned, "INSTANCE")) {
            reply.instances.push_back({m_request.object, properties(returned)});
        } else {
            const xml_node instance = requiredChild(returned, "INSTANCE");
            reply.instances.push_back({pathBeside(instance), properties(instance)});
        }
    }

    ObjectPath pathBeside(xml_node instance) {
        for (const xml_node each : instance.parent().children()) {
            if (each.type() == pugi::node_element && each != instance) return path(each);
        }
        return {"", m_request.object.nameSpace, noted(instance.attribute("CLASSNAME").value()), {}};
    }

    // INSTANCENAME, alone or in LOCALINSTANCEPATH or INSTANCEPATH.
    ObjectPath path(xml_node node) {
        if (isNamed(node, "INSTANCENAME")) return instanceName(node);
        if (!isNamed(node, "LOCALINSTANCEPATH") && !isNamed(node, "INSTANCEPATH")) {
            refuse("has a " + printable(node.name()) + " where the path of an instance belongs");
        }
        ObjectPath result = instanceName(requiredChild(node, "INSTANCENAME"));
        const xml_node place = node.child("NAMESPACEPATH");
        if (place) result.host = content(requiredChild(place, "HOST"));
        result.nameSpace.clear();
        for (const xml_node each : requiredChild(place ? place : node, "LOCALNAMESPACEPATH").children("NAMESPACE")) {
            result.nameSpace += (result.nameSpace.empty() ? "" : "/") + noted(each.attribute("NAME").value());
        }
        return result;
    }

    ObjectPath instanceName(xml_node node) {
        ObjectPath result{"", m_request.object.nameSpace, noted(node.attribute("CLASSNAME").value()), {}};
        for (const xml_node each : node.children()) {
            if (each.type() != pugi::node_element) continue;
            if (!isNamed(each, "KEYBINDING")) refuse("has a key without a name");
            result.keys.push_back({noted(each.attribute("NAME").value()), keyOf(each)});
        }
        return result;
    }

    Value keyOf(xml_node binding) {
        if (const xml_node referred = binding.child("VALUE.REFERENCE")) return reference(referred);
        const xml_node node = requiredChild(binding, "KEYVALUE");
        const std::string text = content(node);
        const std::string_view kind = node.attribute("VALUETYPE").value();
        std::optional<Value> value;
        if (const std::optional<CMPIType> type = cimTypeNamed(node.attribute("TYPE").value())) {
            value = cimValueIn(text, *type);
        } else if (kind == "numeric") {
            value = cimNumberIn(text);
        } else {
            value = cimValueIn(text, kind == "boolean" ? CMPI_boolean : CMPI_string);
        }
        if (!value) refuseValue("key", binding, text);
        return *value;
    }

    Value reference(xml_node node) {
        if (++m_referenceDepth > DEEPEST_REFERENCE) refuse("nests references too deeply");
        Value value = Value::null(CMPI_ref);
        for (const xml_node each : node.children()) {
            if (each.type() != pugi::node_element) continue;
            value.isNull = false;
            value.path = std::make_shared<const ObjectPath>(path(each));
        }
        --m_referenceDepth;
        return value;
    }

    std::vector<NamedValue> properties(xml_node instance) {
        std::vector<NamedValue> result;
        const auto children = instance.children();
        result.reserve(static_cast<std::size_t>(std::distance(children.begin(), children.end())));
        for (const xml_node each : children) {
            if (each.type() != pugi::node_element || isNamed(each, "QUALIFIER")) continue;
            result.push_back({noted(each.attribute("NAME").value()), propertyOf(each)});
        }
        return result;
    }

    Value propertyOf(xml_node node) {
        if (isNamed(node, "PROPERTY.REFERENCE")) {
            const xml_node referred = node.child("VALUE.REFERENCE");
            return referred ? reference(referred) : Value::null(CMPI_ref);
        }
        const bool isArray = isNamed(node, "PROPERTY.ARRAY");
        if (!isArray && !isNamed(node, "PROPERTY")) refuse("has a " + printable(node.name()) + " in an instance");
        const std::optional<CMPIType> type = cimTypeNamed(node.attribute("TYPE").value());
        if (!type) {
            refuse("has a property " + printable(node.attribute("NAME").value()) + " of the type '" +
                   printable(node.attribute("TYPE").value()) + "'");
        }
        if (isArray) return arrayOf(node, *type);
        const xml_node value = node.child("VALUE");
        return value ? valueOf(node, content(value), *type) : Value::null(*type);
    }

    Value arrayOf(xml_node property, CMPIType type) {
        const xml_node array = property.child("VALUE.ARRAY");
        if (!array) return Value::null(static_cast<CMPIType>(type | CMPI_ARRAY));
        std::vector<Value> elements;
        for (const xml_node each : array.children()) {
            if (isNamed(each, "VALUE.NULL")) elements.push_back(Value::null(type));
            if (isNamed(each, "VALUE")) elements.push_back(valueOf(property, content(each), type));
        }
        return Value::ofArray(std::move(elements), type);
    }

    static Value valueOf(xml_node property, const std::string& text, CMPIType type) {
        std::optional<Value> value = cimValueIn(text, type);
        if (!value) refuseValue("property", property, text);
        return *value;
    }

    [[noreturn]] static void refuseValue(const char* kind, xml_node node, const std::string& text) {
        const std::string type =
            isNamed(node, "KEYBINDING") ? "" : std::string(" for ") + node.attribute("TYPE").value();
        refuse(std::string("has the value '") + printable(text) + '\'' + printable(type) + " in the " + kind + ' ' +
               printable(node.attribute("NAME").value()));
    }

    std::string content(xml_node node) {
        std::string text;
        for (const xml_node each : node.children()) {
            if (each.type() == pugi::node_pcdata || each.type() == pugi::node_cdata) text += each.value();
        }
        return noted(std::move(text));
    }

    std::string noted(std::string text) {
        if (!isFitForXml(text)) m_answer.hasUnfitText = true;
        return text;
    }

    const CimXmlRequest& m_request;
    CimXmlAnswer m_answer;
    int m_referenceDepth = 0;
};

}  // namespace

CimXmlAnswer readCimXml(const std::string& body, const CimXmlRequest& request) {
    pugi::xml_document document;
    load(document, body);
    requireUtf8(document);
    return Reader(request).read(document);
}

}  // namespace host
