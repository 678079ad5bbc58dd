#include <algorithm>

#include "broker/Calls.h"
#include "broker/Names.h"
#include "broker/Tables.h"
#include "broker/Values.h"

namespace broker {
namespace {

constexpr const char* INSTANCE_TABLE = TABLE_OF<InstanceObject>;

ValueOptions valueOptionsOf(const InstanceObject& instance) {
    return {instance.content.keepsTypes || instance.state.options.charsStayChars, false, CMPI_goodValue};
}

CMPIData getProperty(const CMPIInstance* self, const char* name, CMPIStatus* status) {
    const auto* instance = held<InstanceObject>(self);
    return perform(instance, {INSTANCE_TABLE, "getProperty"}, {name}, status, [&](CMPIrc& rc) {
        return dataNamed(instance->state, findValue(instance->content.instance.properties, name),
                         valueOptionsOf(*instance), rc);
    });
}

CMPIData getPropertyAt(const CMPIInstance* self, CMPICount index, CMPIString** name, CMPIStatus* status) {
    const auto* instance = held<InstanceObject>(self);
    return perform(instance, {INSTANCE_TABLE, "getPropertyAt"}, {}, status, [&](CMPIrc& rc) {
        return dataAt(instance->state, instance->content.instance.properties, index, name, valueOptionsOf(*instance),
                      rc);
    });
}

CMPICount getPropertyCount(const CMPIInstance* self, CMPIStatus* status) {
    const auto* instance = held<InstanceObject>(self);
    return perform(instance, {INSTANCE_TABLE, "getPropertyCount"}, {}, status,
                   [&](CMPIrc&) { return static_cast<CMPICount>(instance->content.instance.properties.size()); });
}

bool isWanted(const InstanceContent& content, std::string_view name) {
    return !content.filter || std::any_of(content.filter->begin(), content.filter->end(),
                                          [&](const std::string& wanted) { return sameName(wanted, name); });
}

CMPIrc setPropertyOf(InstanceObject& instance, const char* name, const CMPIValue* value, CMPIType type) {
    if (name == nullptr) return CMPI_RC_ERR_INVALID_PARAMETER;
    Value property;
    const CMPIrc rc = toModel(instance.state, value, type, property);
    if (rc == CMPI_RC_OK && isWanted(instance.content, name)) {
        put(instance.content.instance.properties, name, std::move(property));
    }
    return rc;
}

CMPIStatus setProperty(const CMPIInstance* self, const char* name, const CMPIValue* value, CMPIType type) {
    auto* instance = held<InstanceObject>(self);
    return performStatus(instance, {INSTANCE_TABLE, "setProperty"}, {name, value, type},
                         [&] { return setPropertyOf(*instance, name, value, type); });
}

CMPIStatus setPropertyWithOrigin(const CMPIInstance* self, const char* name, const CMPIValue* value, CMPIType type,
                                 const char*) {
    auto* instance = held<InstanceObject>(self);
    return performStatus(instance, {INSTANCE_TABLE, "setPropertyWithOrigin"}, {name, value, type},
                         [&] { return setPropertyOf(*instance, name, value, type); });
}

CMPIObjectPath* getObjectPath(const CMPIInstance* self, CMPIStatus* status) {
    const auto* instance = held<InstanceObject>(self);
    return perform(instance, {INSTANCE_TABLE, "getObjectPath"}, {}, status, [&](CMPIrc&) {
        const InstanceContent& content = instance->content;
        return instance->state.make<PathObject>(PathContent{content.instance.path, content.keepsTypes});
    });
}

void appendNames(std::vector<std::string>& list, const char* const* names) {
    for (; names != nullptr && *names != nullptr; ++names) list.emplace_back(*names);
}

// Keys stay, be they listed or part of the path.
CMPIrc filterProperties(InstanceContent& content, const char* const* properties, const char* const* keys) {
    if (properties == nullptr) {
        content.filter.reset();
        return CMPI_RC_OK;
    }
    std::vector<std::string> wanted;
    appendNames(wanted, properties);
    appendNames(wanted, keys);
    for (const NamedValue& key : content.instance.path.keys) wanted.push_back(key.name);
    content.filter = std::move(wanted);
    auto& present = content.instance.properties;
    present.erase(std::remove_if(present.begin(), present.end(),
                                 [&](const NamedValue& property) { return !isWanted(content, property.name); }),
                  present.end());
    return CMPI_RC_OK;
}

// Editions of <cmpift.h> differ in whether the instance is const here; the templates suit both.
template <typename Self>
CMPIStatus setPropertyFilter(Self* self, const char** properties, const char** keys) {
    auto* instance = held<InstanceObject>(self);
    return performStatus(instance, {INSTANCE_TABLE, "setPropertyFilter"}, {},
                         [&] { return filterProperties(instance->content, properties, keys); });
}

template <typename Self>
CMPIStatus setObjectPath(Self* self, const CMPIObjectPath* path) {
    auto* instance = held<InstanceObject>(self);
    return performStatus(instance, {INSTANCE_TABLE, "setObjectPath"}, {}, [&] {
        if (path == nullptr || !instance->state.hasMade(path)) return CMPI_RC_ERR_INVALID_HANDLE;
        instance->content.instance.path = held<PathObject>(path)->content.path;
        return CMPI_RC_OK;
    });
}

}  // namespace

void fillTable(CMPIInstanceFT& table, const BrokerOptions& options) {
    table.ftVersion = options.tableVersion;
    table.release = releaseObject<InstanceObject>;
    table.clone = cloneObject<InstanceObject>;
    table.getProperty = getProperty;
    table.getPropertyAt = getPropertyAt;
    table.getPropertyCount = getPropertyCount;
    table.setProperty = setProperty;
    table.getObjectPath = getObjectPath;
    table.setPropertyFilter = setPropertyFilter;
    table.setObjectPath = setObjectPath;
    if (options.hasLevel200Slots) table.setPropertyWithOrigin = setPropertyWithOrigin;
}

}  // namespace broker
