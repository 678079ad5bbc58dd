// The functions of contexts and of arguments: both are lists of named values.
#include "broker/Calls.h"
#include "broker/Tables.h"
#include "broker/Values.h"

namespace broker {
namespace {

template <typename T, typename Cmpi>
CMPIData getEntry(const Cmpi* self, const char* function, const char* name, CMPIStatus* status) {
    const auto* list = held<T>(self);
    return perform(list, {TABLE_OF<T>, function}, {name}, status, [&](CMPIrc& rc) {
        return dataNamed(list->state, findValue(list->content, name),
                         {list->state.options.charsStayChars, false, CMPI_goodValue}, rc);
    });
}

template <typename T, typename Cmpi>
CMPIData getEntryAt(const Cmpi* self, const char* function, CMPICount index, CMPIString** name, CMPIStatus* status) {
    const auto* list = held<T>(self);
    return perform(list, {TABLE_OF<T>, function}, {}, status, [&](CMPIrc& rc) {
        return dataAt(list->state, list->content, index, name,
                      {list->state.options.charsStayChars, false, CMPI_goodValue}, rc);
    });
}

template <typename T, typename Cmpi>
CMPICount getEntryCount(const Cmpi* self, const char* function, CMPIStatus* status) {
    const auto* list = held<T>(self);
    return perform(list, {TABLE_OF<T>, function}, {}, status,
                   [&](CMPIrc&) { return static_cast<CMPICount>(list->content.size()); });
}

template <typename T, typename Cmpi>
CMPIStatus addEntry(const Cmpi* self, const char* function, const char* name, const CMPIValue* value, CMPIType type) {
    auto* list = held<T>(self);
    return performStatus(list, {TABLE_OF<T>, function}, {name, value, type}, [&] {
        if (name == nullptr) return CMPI_RC_ERR_INVALID_PARAMETER;
        Value entry;
        const CMPIrc rc = toModel(list->state, value, type, entry);
        if (rc == CMPI_RC_OK) put(list->content, name, std::move(entry));
        return rc;
    });
}

CMPIData getContextEntry(const CMPIContext* self, const char* name, CMPIStatus* rc) {
    return getEntry<ContextObject>(self, "getEntry", name, rc);
}
CMPIData getContextEntryAt(const CMPIContext* self, CMPICount index, CMPIString** name, CMPIStatus* rc) {
    return getEntryAt<ContextObject>(self, "getEntryAt", index, name, rc);
}
CMPICount getContextEntryCount(const CMPIContext* self, CMPIStatus* rc) {
    return getEntryCount<ContextObject>(self, "getEntryCount", rc);
}
CMPIStatus addContextEntry(const CMPIContext* self, const char* name, const CMPIValue* value, CMPIType type) {
    return addEntry<ContextObject>(self, "addEntry", name, value, type);
}

CMPIData getArg(const CMPIArgs* self, const char* name, CMPIStatus* rc) {
    return getEntry<ArgsObject>(self, "getArg", name, rc);
}
CMPIData getArgAt(const CMPIArgs* self, CMPICount index, CMPIString** name, CMPIStatus* rc) {
    return getEntryAt<ArgsObject>(self, "getArgAt", index, name, rc);
}
CMPICount getArgCount(const CMPIArgs* self, CMPIStatus* rc) {
    return getEntryCount<ArgsObject>(self, "getArgCount", rc);
}
CMPIStatus addArg(const CMPIArgs* self, const char* name, const CMPIValue* value, CMPIType type) {
    return addEntry<ArgsObject>(self, "addArg", name, value, type);
}

}  // namespace

void fillTable(CMPIContextFT& table, const BrokerOptions& options) {
    table.ftVersion = options.tableVersion;
    table.release = releaseObject<ContextObject>;
    table.clone = cloneObject<ContextObject>;
    table.getEntry = getContextEntry;
    table.getEntryAt = getContextEntryAt;
    table.getEntryCount = getContextEntryCount;
    table.addEntry = addContextEntry;
}

void fillTable(CMPIArgsFT& table, const BrokerOptions& options) {
    table.ftVersion = options.tableVersion;
    table.release = releaseObject<ArgsObject>;
    table.clone = cloneObject<ArgsObject>;
    table.addArg = addArg;
    table.getArg = getArg;
    table.getArgAt = getArgAt;
    table.getArgCount = getArgCount;
}

}  // namespace broker
