#include "source/CimXmlWriter.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <pugixml.hpp>
#include <sstream>
#include <string_view>
#include <utility>
#include <vector>

#include "broker/Names.h"
#include "text/Utf8.h"

namespace host {
namespace {

using broker::Instance;
using broker::NamedValue;
using broker::ObjectPath;
using broker::Value;
using pugi::xml_node;

const char* fit(const std::string& text) {
    if (isFitForXml(text)) return text.c_str();
    throw UnsendableError("'" + printable(text) + "' cannot be sent: XML has no such characters");
}

void setAttribute(xml_node node, const char* name, const std::string& value) {
    node.append_attribute(name) = fit(value);
}

xml_node addText(xml_node parent, const char* element, const std::string& text) {
    xml_node node = parent.append_child(element);
    node.text() = fit(text);
    return node;
}

void addNamespace(xml_node parent, const std::string& nameSpace) {
    xml_node path = parent.append_child("LOCALNAMESPACEPATH");
    std::string_view rest = nameSpace;
    for (bool isLast = false; !isLast;) {
        const std::size_t end = std::min(rest.find('/'), rest.size());
        isLast = end == rest.size();
        setAttribute(path.append_child("NAMESPACE"), "NAME", std::string(rest.substr(0, end)));
        rest.remove_prefix(isLast ? end : end + 1);
    }
}

// As precise as the number is, without regard to the locale.
std::string realText(double number) {
    std::array<char, 32> buffer{};
    return {buffer.data(), std::to_chars(buffer.data(), buffer.data() + buffer.size(), number).ptr};
}

// The content of a VALUE or KEYVALUE, of any type but references and instances.
std::string contentOf(const Value& value) {
    if (value.isSigned()) return std::to_string(value.signedNumber);
    if (value.isUnsigned()) return std::to_string(value.unsignedNumber);
    switch (value.type) {
        case CMPI_boolean:
            return value.unsignedNumber != 0 ? "TRUE" : "FALSE";
        case CMPI_real32:
        case CMPI_real64:
            return realText(value.real);
        case CMPI_char16:
            return utf8Of(static_cast<char32_t>(value.unsignedNumber));
        default:
            return value.text;
    }
}

const char* valueTypeOf(const Value& value) {
    if (value.type == CMPI_boolean) return "boolean";
    const bool isReal = value.type == CMPI_real32 || value.type == CMPI_real64;
    return isReal || value.isSigned() || value.isUnsigned() ? "numeric" : "string";
}

void addInstanceName(xml_node parent, const ObjectPath& path);

void addReference(xml_node parent, const ObjectPath& path) {
    xml_node local = parent.append_child("VALUE.REFERENCE").append_child("LOCALINSTANCEPATH");
    addNamespace(local, path.nameSpace);
    addInstanceName(local, path);
}

void addInstanceName(xml_node parent, const ObjectPath& path) {
    xml_node name = parent.append_child("INSTANCENAME");
    setAttribute(name, "CLASSNAME", path.className);
    for (const NamedValue& key : path.keys) {
        xml_node binding = name.append_child("KEYBINDING");
        setAttribute(binding, "NAME", key.name);
        if (key.value.path) {
            addReference(binding, *key.value.path);
        } else {
            addText(binding, "KEYVALUE", contentOf(key.value)).append_attribute("VALUETYPE") = valueTypeOf(key.value);
        }
    }
}

void addElements(xml_node property, const std::vector<Value>& elements) {
    xml_node array = property.append_child("VALUE.ARRAY");
    for (const Value& element : elements) {
        if (element.isNull) {
            array.append_child("VALUE.NULL");
        } else {
            addText(array, "VALUE", contentOf(element));
        }
    }
}

void addProperty(xml_node parent, const NamedValue& property) {
    const Value& value = property.value;
    const auto simple = static_cast<CMPIType>(value.type & ~CMPI_ARRAY);
    if (simple == CMPI_instance || (value.isArray() && simple == CMPI_ref)) {
        throw UnsendableError("the property " + printable(property.name) + " cannot be sent: it is " +
                              broker::nameOfType(value.type));
    }
    const char* kind = value.isArray() ? "PROPERTY.ARRAY" : simple == CMPI_ref ? "PROPERTY.REFERENCE" : "PROPERTY";
    xml_node node = parent.append_child(kind);
    setAttribute(node, "NAME", property.name);
    if (simple != CMPI_ref) setAttribute(node, "TYPE", broker::nameOfType(simple));
    if (value.isNull) return;
    if (value.isArray()) {
        addElements(node, value.elements);
    } else if (value.path) {
        addReference(node, *value.path);
    } else {
        addText(node, "VALUE", contentOf(value));
    }
}

void addInstance(xml_node parent, const Instance& instance) {
    xml_node node = parent.append_child("INSTANCE");
    setAttribute(node, "CLASSNAME", instance.path.className);
    for (const NamedValue& property : instance.properties) addProperty(node, property);
}

// A message with one operation; its parameters are added one by one.
class Call {
  public:
    Call(const std::string& messageId, const char* method, const ObjectPath& object)
        : m_request{messageId, method, object, ""} {
        xml_node declaration = m_document.append_child(pugi::node_declaration);
        declaration.append_attribute("version") = "1.0";
        declaration.append_attribute("encoding") = "utf-8";
        xml_node cim = m_document.append_child("CIM");
        cim.append_attribute("CIMVERSION") = "2.0";
        cim.append_attribute("DTDVERSION") = "2.0";
        xml_node message = cim.append_child("MESSAGE");
        setAttribute(message, "ID", messageId);
        message.append_attribute("PROTOCOLVERSION") = "1.0";
        m_call = message.append_child("SIMPLEREQ").append_child("IMETHODCALL");
        m_call.append_attribute("NAME") = method;
        addNamespace(m_call, object.nameSpace);
    }

    xml_node parameter(const char* name) {
        xml_node node = m_call.append_child("IPARAMVALUE");
        node.append_attribute("NAME") = name;
        return node;
    }
    void addValue(const char* name, const std::string& value) { addText(parameter(name), "VALUE", value); }
    void addClassName() {
        setAttribute(parameter("ClassName").append_child("CLASSNAME"), "NAME", m_request.object.className);
    }

    CimXmlRequest finished() {
        std::ostringstream text;
        m_document.save(text, "", pugi::format_raw, pugi::encoding_utf8);
        // A plain carriage return would be read as a line feed; in attributes it is escaped already.
        for (const char c : text.str()) {
            if (c == '\r') {
                m_request.body += "&#13;";
            } else {
                m_request.body += c;
            }
        }
        return std::move(m_request);
    }

  private:
    CimXmlRequest m_request;
    pugi::xml_document m_document;
    xml_node m_call;
};

}  // namespace

CimXmlRequest enumerateInstanceNamesXml(const std::string& messageId, const ObjectPath& classPath) {
    Call call(messageId, "EnumerateInstanceNames", classPath);
    call.addClassName();
    return call.finished();
}

CimXmlRequest enumerateInstancesXml(const std::string& messageId, const ObjectPath& classPath) {
    Call call(messageId, "EnumerateInstances", classPath);
    call.addValue("LocalOnly", "FALSE");
    call.addValue("DeepInheritance", "TRUE");
    call.addValue("IncludeQualifiers", "FALSE");
    call.addValue("IncludeClassOrigin", "FALSE");
    call.addClassName();
    return call.finished();
}

CimXmlRequest getInstanceXml(const std::string& messageId, const ObjectPath& path) {
    Call call(messageId, "GetInstance", path);
    call.addValue("LocalOnly", "FALSE");
    addInstanceName(call.parameter("InstanceName"), path);
    return call.finished();
}

CimXmlRequest createInstanceXml(const std::string& messageId, const ObjectPath& classPath, const Instance& instance) {
    Call call(messageId, "CreateInstance", classPath);
    addInstance(call.parameter("NewInstance"), instance);
    return call.finished();
}

CimXmlRequest modifyInstanceXml(const std::string& messageId, const ObjectPath& path, const Instance& instance) {
    Call call(messageId, "ModifyInstance", path);
    xml_node named = call.parameter("ModifiedInstance").append_child("VALUE.NAMEDINSTANCE");
    addInstanceName(named, path);
    addInstance(named, instance);
    return call.finished();
}

CimXmlRequest deleteInstanceXml(const std::string& messageId, const ObjectPath& path) {
    Call call(messageId, "DeleteInstance", path);
    addInstanceName(call.parameter("InstanceName"), path);
    return call.finished();
}

CimXmlRequest execQueryXml(const std::string& messageId, const ObjectPath& classPath, const std::string& query,
                           const std::string& language) {
    Call call(messageId, "ExecQuery", classPath);
    call.addValue("QueryLanguage", language);
    call.addValue("Query", query);
    return call.finished();
}

}  // namespace host
