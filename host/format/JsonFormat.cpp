#include "format/JsonFormat.h"

#include <nlohmann/json.hpp>

#include "broker/Names.h"

namespace host {
namespace {

using Json = nlohmann::ordered_json;
using broker::Instance;
using broker::NamedValue;
using broker::ObjectPath;
using broker::Value;

Json jsonOf(const Instance& instance);
Json jsonOf(const ObjectPath& path);

Json jsonOf(const Value& value) {
    if (value.isNull) return nullptr;
    if (value.isArray()) {
        Json elements = Json::array();
        for (const Value& element : value.elements) elements.push_back(jsonOf(element));
        return elements;
    }
    if (value.isSigned()) return value.signedNumber;
    if (value.isUnsigned() || value.type == CMPI_char16) return value.unsignedNumber;
    switch (value.type) {
        case CMPI_boolean:
            return value.unsignedNumber != 0;
        case CMPI_real32:
        case CMPI_real64:
            return value.real;
        case CMPI_ref:
            return value.path ? jsonOf(*value.path) : Json();
        case CMPI_instance:
            return value.instance ? jsonOf(*value.instance) : Json();
        default:
            return value.text;
    }
}

Json jsonOf(const std::vector<NamedValue>& values) {
    Json object = Json::object();
    for (const NamedValue& each : values) object[each.name] = jsonOf(each.value);
    return object;
}

Json jsonOf(const ObjectPath& path) {
    Json object = Json::object();
    if (!path.host.empty()) object["host"] = path.host;
    object["namespace"] = path.nameSpace;
    object["class"] = path.className;
    object["keys"] = jsonOf(path.keys);
    return object;
}

Json jsonOf(const Instance& instance) {
    Json object = Json::object();
    object["path"] = jsonOf(instance.path);
    object["properties"] = jsonOf(instance.properties);
    return object;
}

Json jsonOf(const broker::Status& status) {
    Json object = Json::object();
    object["rc"] = static_cast<int>(status.rc);
    object["name"] = broker::nameOfStatus(status.rc);
    if (status.message) object["message"] = *status.message;
    return object;
}

template <typename Item>
Json listOf(const std::vector<Item>& items) {
    Json list = Json::array();
    for (const Item& item : items) list.push_back(jsonOf(item));
    return list;
}

}  // namespace

std::string jsonText(const Answer& answer, JsonLayout layout) {
    Json document = Json::object();
    document["command"] = nameOf(answer.command);
    document["namespace"] = answer.nameSpace;
    document["class"] = answer.className;
    document["simulated"] = answer.chip ? Json(answer.chip->isSimulated) : Json();
    document["status"] = jsonOf(answer.reply.status);
    document["paths"] = listOf(answer.reply.paths);
    document["instances"] = listOf(answer.reply.instances);
    const int indent = layout == JsonLayout::Indented ? 2 : -1;
    return document.dump(indent, ' ', true, Json::error_handler_t::replace) + '\n';
}

}  // namespace host
