#include "broker/Calls.h"
#include "broker/Rendering.h"
#include "broker/Tables.h"
#include "broker/Values.h"

namespace broker {
namespace {

constexpr const char* PATH_TABLE = TABLE_OF<PathObject>;

CMPIString* getText(const CMPIObjectPath* self, const char* function, std::string ObjectPath::*part, CMPIStatus* rc) {
    const auto* path = held<PathObject>(self);
    return perform(path, {PATH_TABLE, function}, {}, rc,
                   [&](CMPIrc&) { return path->state.make<StringObject>(path->content.path.*part); });
}

CMPIString* getNameSpace(const CMPIObjectPath* self, CMPIStatus* rc) {
    return getText(self, "getNameSpace", &ObjectPath::nameSpace, rc);
}
CMPIString* getHostname(const CMPIObjectPath* self, CMPIStatus* rc) {
    return getText(self, "getHostname", &ObjectPath::host, rc);
}
CMPIString* getClassName(const CMPIObjectPath* self, CMPIStatus* rc) {
    return getText(self, "getClassName", &ObjectPath::className, rc);
}

CMPIStatus setText(const CMPIObjectPath* self, const char* function, std::string ObjectPath::*part, const char* text) {
    auto* path = held<PathObject>(self);
    return performStatus(path, {PATH_TABLE, function}, textArgument(text), [&] {
        if (text == nullptr) return CMPI_RC_ERR_INVALID_PARAMETER;
        path->content.path.*part = text;
        return CMPI_RC_OK;
    });
}

// Editions of <cmpift.h> differ in whether an object that is changed is const; the templates suit both.
template <typename Path>
CMPIStatus setNameSpace(Path* self, const char* text) {
    return setText(self, "setNameSpace", &ObjectPath::nameSpace, text);
}
template <typename Path>
CMPIStatus setHostname(Path* self, const char* text) {
    return setText(self, "setHostname", &ObjectPath::host, text);
}
template <typename Path>
CMPIStatus setClassName(Path* self, const char* text) {
    return setText(self, "setClassName", &ObjectPath::className, text);
}

CMPIrc addKeyTo(PathObject& path, const char* name, const CMPIValue* value, CMPIType type) {
    if (name == nullptr || value == nullptr) return CMPI_RC_ERR_INVALID_PARAMETER;
    if ((type & CMPI_ARRAY) != 0 || type == CMPI_instance) return CMPI_RC_ERR_INVALID_DATA_TYPE;
    Value key;
    const CMPIrc rc = toModel(path.state, value, type, key);
    if (rc != CMPI_RC_OK) return rc;
    if (key.isNull) return CMPI_RC_ERR_INVALID_PARAMETER;
    put(path.content.path.keys, name, std::move(key));
    return CMPI_RC_OK;
}

template <typename Path>
CMPIStatus addKey(Path* self, const char* name, const CMPIValue* value, CMPIType type) {
    auto* path = held<PathObject>(self);
    return performStatus(path, {PATH_TABLE, "addKey"}, {name, value, type},
                         [&] { return addKeyTo(*path, name, value, type); });
}

ValueOptions valueOptionsOf(const PathObject& path) {
    const BrokerOptions& options = path.state.options;
    return {path.content.keepsTypes || options.charsStayChars, !path.content.keepsTypes && options.integerKeysAsSint64,
            CMPI_keyValue};
}

CMPIData getKey(const CMPIObjectPath* self, const char* name, CMPIStatus* status) {
    const auto* path = held<PathObject>(self);
    return perform(path, {PATH_TABLE, "getKey"}, {name}, status, [&](CMPIrc& rc) {
        return dataNamed(path->state, findValue(path->content.path.keys, name), valueOptionsOf(*path), rc);
    });
}

CMPIData getKeyAt(const CMPIObjectPath* self, CMPICount index, CMPIString** name, CMPIStatus* status) {
    const auto* path = held<PathObject>(self);
    return perform(path, {PATH_TABLE, "getKeyAt"}, {}, status, [&](CMPIrc& rc) {
        return dataAt(path->state, path->content.path.keys, index, name, valueOptionsOf(*path), rc);
    });
}

CMPICount getKeyCount(const CMPIObjectPath* self, CMPIStatus* status) {
    const auto* path = held<PathObject>(self);
    return perform(path, {PATH_TABLE, "getKeyCount"}, {}, status,
                   [&](CMPIrc&) { return static_cast<CMPICount>(path->content.path.keys.size()); });
}

CMPIStatus copyNameSpace(const CMPIObjectPath* self, const CMPIObjectPath* from, const char* function, bool withHost) {
    auto* path = held<PathObject>(self);
    return performStatus(path, {PATH_TABLE, function}, {}, [&] {
        if (from == nullptr || !path->state.hasMade(from)) return CMPI_RC_ERR_INVALID_HANDLE;
        const ObjectPath& source = held<PathObject>(from)->content.path;
        path->content.path.nameSpace = source.nameSpace;
        path->content.path.className = source.className;
        if (withHost) path->content.path.host = source.host;
        return CMPI_RC_OK;
    });
}

template <typename Path>
CMPIStatus setNameSpaceFromObjectPath(Path* self, const CMPIObjectPath* from) {
    return copyNameSpace(self, from, "setNameSpaceFromObjectPath", false);
}
template <typename Path>
CMPIStatus setHostAndNameSpaceFromObjectPath(Path* self, const CMPIObjectPath* from) {
    return copyNameSpace(self, from, "setHostAndNameSpaceFromObjectPath", true);
}

// This broker has no schema, so no qualifiers.
CMPIData noQualifier(const CMPIObjectPath* self, const char* function, const char* qualifier, CMPIStatus* status) {
    return perform(held<PathObject>(self), {PATH_TABLE, function}, {qualifier}, status, [](CMPIrc& rc) {
        rc = CMPI_RC_ERR_NOT_SUPPORTED;
        return missingData();
    });
}
CMPIData getClassQualifier(const CMPIObjectPath* self, const char* qualifier, CMPIStatus* rc) {
    return noQualifier(self, "getClassQualifier", qualifier, rc);
}
CMPIData getPropertyQualifier(const CMPIObjectPath* self, const char*, const char* qualifier, CMPIStatus* rc) {
    return noQualifier(self, "getPropertyQualifier", qualifier, rc);
}
CMPIData getMethodQualifier(const CMPIObjectPath* self, const char*, const char* qualifier, CMPIStatus* rc) {
    return noQualifier(self, "getMethodQualifier", qualifier, rc);
}
CMPIData getParameterQualifier(const CMPIObjectPath* self, const char*, const char*, const char* qualifier,
                               CMPIStatus* rc) {
    return noQualifier(self, "getParameterQualifier", qualifier, rc);
}

CMPIString* pathToString(const CMPIObjectPath* self, CMPIStatus* status) {
    const auto* path = held<PathObject>(self);
    return perform(path, {PATH_TABLE, "toString"}, {}, status,
                   [&](CMPIrc&) { return path->state.make<StringObject>(rendered(path->content.path)); });
}

}  // namespace

void fillTable(CMPIObjectPathFT& table, const BrokerOptions& options) {
    table.ftVersion = options.tableVersion;
    table.release = releaseObject<PathObject>;
    table.clone = cloneObject<PathObject>;
    table.setNameSpace = setNameSpace;
    table.getNameSpace = getNameSpace;
    table.setHostname = setHostname;
    table.getHostname = getHostname;
    table.setClassName = setClassName;
    table.getClassName = getClassName;
    table.addKey = addKey;
    table.getKey = getKey;
    table.getKeyAt = getKeyAt;
    table.getKeyCount = getKeyCount;
    table.setNameSpaceFromObjectPath = setNameSpaceFromObjectPath;
    table.setHostAndNameSpaceFromObjectPath = setHostAndNameSpaceFromObjectPath;
    table.getClassQualifier = getClassQualifier;
    table.getPropertyQualifier = getPropertyQualifier;
    table.getMethodQualifier = getMethodQualifier;
    table.getParameterQualifier = getParameterQualifier;
    table.toString = pathToString;
}

}  // namespace broker
