// The host's reader of answers from object managers. The input is the number of the operation and the HTTP body. It is
// either refused with one printable sentence, or read: then the lists hold what the operation returns, every value fits
// its type, and the same comes out of a second reading, behind a comment and before blanks. What was read can be asked
// for: the path is written, and XML reads it back as it was; or it is one that XML cannot carry, which was noted.
#include <broker/Names.h>
#include <source/CimXmlReader.h>
#include <source/CimXmlWriter.h>
#include <text/Utf8.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <pugixml.hpp>
#include <string>

#include "Property.h"

namespace {

using broker::Instance;
using broker::NamedValue;
using broker::ObjectPath;
using broker::Value;
using host::CimXmlAnswer;
using host::CimXmlRequest;

constexpr std::array<const char*, 7> METHODS{
    "EnumerateInstanceNames", "EnumerateInstances", "GetInstance", "CreateInstance",
    "ModifyInstance",         "DeleteInstance",     "ExecQuery"};

// Nothing where it is refused; the sentence has been checked.
std::optional<CimXmlAnswer> read(const std::string& body, const CimXmlRequest& request) {
    try {
        return host::readCimXml(body, request);
    } catch (const host::AnswerError& error) {
        const std::string text = error.what();
        require(text.rfind("the answer ", 0) == 0, "a refusal is a sentence about the answer");
        requireSame(host::printable(text), text, "a refusal fit for a terminal");
        return std::nullopt;
    }
}

void checkValue(const Value& value, bool mayBeArray) {
    if (value.isNull) return;
    if (value.isArray()) {
        require(mayBeArray, "an array holds no arrays");
        for (const Value& element : value.elements) {
            requireSame(element.type, value.type & ~CMPI_ARRAY, "the type of an element");
            checkValue(element, false);
        }
        return;
    }
    const std::string type = broker::nameOfType(value.type);
    const auto bits = type.size() > 4 ? std::strtoul(type.c_str() + 4, nullptr, 10) : 64;
    if (value.isUnsigned() && bits < 64) require(value.unsignedNumber >> bits == 0, "an unsigned number fits its type");
    if (value.isSigned() && bits < 64) {
        const std::int64_t limit = std::int64_t{1} << (bits - 1);
        require(value.signedNumber >= -limit && value.signedNumber < limit, "a signed number fits its type");
    }
    if (value.type == CMPI_boolean) require(value.unsignedNumber <= 1, "a boolean is one of two");
    if (value.type == CMPI_ref) require(value.path != nullptr, "a reference has a path");
    if (value.type == CMPI_dateTime) requireSame(static_cast<long long>(value.text.size()), 25, "a date's length");
}

void checkReply(const broker::Reply& reply, const std::string& method) {
    const bool returnsPaths = method == "EnumerateInstanceNames" || method == "CreateInstance";
    const bool returnsInstances = method == "EnumerateInstances" || method == "GetInstance" || method == "ExecQuery";
    require(returnsPaths || reply.paths.empty(), "paths come from operations that return them");
    require(returnsInstances || reply.instances.empty(), "instances come from operations that return them");
    for (const ObjectPath& path : reply.paths) {
        for (const NamedValue& key : path.keys) checkValue(key.value, false);
    }
    for (const Instance& instance : reply.instances) {
        for (const NamedValue& property : instance.properties) checkValue(property.value, true);
    }
}

void requireAlike(const CimXmlAnswer& one, const CimXmlAnswer& other) {
    require(one.reply.paths == other.reply.paths && one.reply.instances == other.reply.instances, "the same lists");
    requireSame(one.reply.status.rc, other.reply.status.rc, "the same status");
    require(one.reply.status.message == other.reply.status.message, "the same message");
    require(one.hasUnfitText == other.hasUnfitText, "the same note of unfit texts");
}

// NaN is not equal to itself, and from texts alone it comes.
bool holdsReal(const std::string& body) {
    return body.find("real") != std::string::npos || body.find("numeric") != std::string::npos;
}

void checkRequestFor(const ObjectPath& path, bool mayBeUnfit) {
    for (const NamedValue& key : path.keys) {
        if (key.value.type != CMPI_string || key.value.isNull) return;
    }
    std::string body;
    try {
        body = host::getInstanceXml("1", path).body;
    } catch (const host::UnsendableError& error) {
        require(mayBeUnfit, "what cannot be sent was noted as unfit");
        requireSame(host::printable(error.what()), error.what(), "a refusal fit for a terminal");
        return;
    }
    pugi::xml_document document;
    require(document.load_buffer(body.data(), body.size(), pugi::parse_default | pugi::parse_ws_pcdata),
            "a request is XML");
    std::size_t at = 0;
    for (const pugi::xpath_node& each : document.select_nodes("//KEYBINDING")) {
        requireSame(each.node().attribute("NAME").value(), path.keys.at(at).name, "a key's name");
        requireSame(each.node().child("KEYVALUE").text().get(), path.keys.at(at).value.text, "a key's text");
        ++at;
    }
    requireSame(static_cast<long long>(at), static_cast<long long>(path.keys.size()), "the number of keys");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) return 0;
    const std::string method = METHODS.at(data[0] % METHODS.size());
    const std::string body(data + 1, data + size);
    const CimXmlRequest request{"1001", method, {"", "root/cimv2", "TQS_NumericSensor", {}}, ""};
    const std::optional<CimXmlAnswer> answer = read(body, request);
    if (!answer) return 0;
    checkReply(answer->reply, method);
    if (!holdsReal(body)) requireAlike(*answer, *read(body, request));
    const std::optional<CimXmlAnswer> longer = read(body + "<!-- <CIM> -->\n \t", request);
    require(longer.has_value(), "a comment and blanks behind the end are accepted");
    if (!holdsReal(body)) requireAlike(*answer, *longer);
    for (const ObjectPath& path : answer->reply.paths) checkRequestFor(path, answer->hasUnfitText);
    const CimXmlRequest other{"1002", method, request.object, ""};
    require(!read(body, other).has_value(), "the answer to another message is refused");
    return 0;
}
