#include "broker/Calls.h"
#include "broker/Tables.h"
#include "broker/Values.h"

namespace broker {
namespace {

constexpr const char* RESULT_TABLE = TABLE_OF<ResultObject>;

CMPIStatus returnData(const CMPIResult* self, const CMPIValue* value, CMPIType type) {
    auto* result = held<ResultObject>(self);
    return performStatus(result, {RESULT_TABLE, "returnData"}, {nullptr, value, type}, [&] {
        Value data;
        const CMPIrc rc = toModel(result->state, value, type, data);
        if (rc == CMPI_RC_OK) result->content->data.push_back(std::move(data));
        return rc;
    });
}

CMPIStatus returnInstance(const CMPIResult* self, const CMPIInstance* instance) {
    auto* result = held<ResultObject>(self);
    CMPIValue argument{};
    argument.inst = const_cast<CMPIInstance*>(instance);
    return performStatus(result, {RESULT_TABLE, "returnInstance"}, {nullptr, &argument, CMPI_instance}, [&] {
        if (instance == nullptr || !result->state.hasMade(instance)) return CMPI_RC_ERR_INVALID_HANDLE;
        result->content->instances.push_back(held<InstanceObject>(instance)->content.instance);
        return CMPI_RC_OK;
    });
}

CMPIStatus returnObjectPath(const CMPIResult* self, const CMPIObjectPath* path) {
    auto* result = held<ResultObject>(self);
    CMPIValue argument{};
    argument.ref = const_cast<CMPIObjectPath*>(path);
    return performStatus(result, {RESULT_TABLE, "returnObjectPath"}, {nullptr, &argument, CMPI_ref}, [&] {
        if (path == nullptr || !result->state.hasMade(path)) return CMPI_RC_ERR_INVALID_HANDLE;
        result->content->paths.push_back(held<PathObject>(path)->content.path);
        return CMPI_RC_OK;
    });
}

CMPIStatus returnDone(const CMPIResult* self) {
    auto* result = held<ResultObject>(self);
    return performStatus(result, {RESULT_TABLE, "returnDone"}, {}, [&] {
        ++result->content->doneCalls;
        return CMPI_RC_OK;
    });
}

CMPIStatus returnError(const CMPIResult* self, const CMPIError*) {
    return performStatus(held<ResultObject>(self), {RESULT_TABLE, "returnError"}, {},
                         [] { return CMPI_RC_ERR_NOT_SUPPORTED; });
}

}  // namespace

void fillTable(CMPIResultFT& table, const BrokerOptions& options) {
    table.ftVersion = options.tableVersion;
    table.release = releaseObject<ResultObject>;
    table.clone = cloneObject<ResultObject>;
    table.returnData = returnData;
    table.returnInstance = returnInstance;
    table.returnObjectPath = returnObjectPath;
    table.returnDone = returnDone;
    if (options.hasLevel200Slots) table.returnError = returnError;
}

}  // namespace broker
