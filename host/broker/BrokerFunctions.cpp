// The broker's own table: attaching threads, and calls to other providers, of which this broker has none.
#include "broker/Calls.h"
#include "broker/Tables.h"
#include "broker/Values.h"

namespace broker {
namespace {

constexpr const char* BROKER_TABLE = "broker";

CMPIContext* prepareAttachThread(const CMPIBroker* mb, const CMPIContext* context) {
    Broker::State* state = stateOf(mb);
    return perform(state, {BROKER_TABLE, "prepareAttachThread"}, {}, nullptr, [&](CMPIrc&) -> CMPIContext* {
        if (context == nullptr || !state->hasMade(context)) return nullptr;
        return state->prepareThread(*held<ContextObject>(context));
    });
}

CMPIStatus attachThread(const CMPIBroker* mb, const CMPIContext* context) {
    Broker::State* state = stateOf(mb);
    return performStatus(state, {BROKER_TABLE, "attachThread"}, {}, [&] { return state->attachThread(context); });
}

CMPIStatus detachThread(const CMPIBroker* mb, const CMPIContext* context) {
    Broker::State* state = stateOf(mb);
    return performStatus(state, {BROKER_TABLE, "detachThread"}, {}, [&] { return state->detachThread(context); });
}

template <typename Answer>
Answer refused(const CMPIBroker* mb, const char* function, CMPIStatus* status, const char* name = nullptr) {
    return perform(stateOf(mb), {BROKER_TABLE, function}, {name}, status, [](CMPIrc& rc) {
        rc = CMPI_RC_ERR_NOT_SUPPORTED;
        return Answer();
    });
}

CMPIStatus refusedStatus(const CMPIBroker* mb, const char* function, const char* name = nullptr) {
    return performStatus(stateOf(mb), {BROKER_TABLE, function}, {name}, [] { return CMPI_RC_ERR_NOT_SUPPORTED; });
}

CMPIStatus deliverIndication(const CMPIBroker* mb, const CMPIContext*, const char*, const CMPIInstance*) {
    return refusedStatus(mb, "deliverIndication");
}
CMPIEnumeration* enumerateInstanceNames(const CMPIBroker* mb, const CMPIContext*, const CMPIObjectPath*,
                                        CMPIStatus* rc) {
    return refused<CMPIEnumeration*>(mb, "enumerateInstanceNames", rc);
}
CMPIInstance* getInstance(const CMPIBroker* mb, const CMPIContext*, const CMPIObjectPath*, const char**,
                          CMPIStatus* rc) {
    return refused<CMPIInstance*>(mb, "getInstance", rc);
}
CMPIObjectPath* createInstance(const CMPIBroker* mb, const CMPIContext*, const CMPIObjectPath*, const CMPIInstance*,
                               CMPIStatus* rc) {
    return refused<CMPIObjectPath*>(mb, "createInstance", rc);
}
CMPIStatus modifyInstance(const CMPIBroker* mb, const CMPIContext*, const CMPIObjectPath*, const CMPIInstance*,
                          const char**) {
    return refusedStatus(mb, "modifyInstance");
}
CMPIStatus deleteInstance(const CMPIBroker* mb, const CMPIContext*, const CMPIObjectPath*) {
    return refusedStatus(mb, "deleteInstance");
}
CMPIEnumeration* execQuery(const CMPIBroker* mb, const CMPIContext*, const CMPIObjectPath*, const char*, const char*,
                           CMPIStatus* rc) {
    return refused<CMPIEnumeration*>(mb, "execQuery", rc);
}
CMPIEnumeration* enumerateInstances(const CMPIBroker* mb, const CMPIContext*, const CMPIObjectPath*, const char**,
                                    CMPIStatus* rc) {
    return refused<CMPIEnumeration*>(mb, "enumerateInstances", rc);
}
CMPIEnumeration* associators(const CMPIBroker* mb, const CMPIContext*, const CMPIObjectPath*, const char*, const char*,
                             const char*, const char*, const char**, CMPIStatus* rc) {
    return refused<CMPIEnumeration*>(mb, "associators", rc);
}
CMPIEnumeration* associatorNames(const CMPIBroker* mb, const CMPIContext*, const CMPIObjectPath*, const char*,
                                 const char*, const char*, const char*, CMPIStatus* rc) {
    return refused<CMPIEnumeration*>(mb, "associatorNames", rc);
}
CMPIEnumeration* references(const CMPIBroker* mb, const CMPIContext*, const CMPIObjectPath*, const char*, const char*,
                            const char**, CMPIStatus* rc) {
    return refused<CMPIEnumeration*>(mb, "references", rc);
}
CMPIEnumeration* referenceNames(const CMPIBroker* mb, const CMPIContext*, const CMPIObjectPath*, const char*,
                                const char*, CMPIStatus* rc) {
    return refused<CMPIEnumeration*>(mb, "referenceNames", rc);
}
CMPIData invokeMethod(const CMPIBroker* mb, const CMPIContext*, const CMPIObjectPath*, const char* method,
                      const CMPIArgs*, CMPIArgs*, CMPIStatus* rc) {
    return refused<CMPIData>(mb, "invokeMethod", rc, method);
}
CMPIStatus setProperty(const CMPIBroker* mb, const CMPIContext*, const CMPIObjectPath*, const char* name,
                       const CMPIValue*, CMPIType) {
    return refusedStatus(mb, "setProperty", name);
}
CMPIData getProperty(const CMPIBroker* mb, const CMPIContext*, const CMPIObjectPath*, const char* name,
                     CMPIStatus* rc) {
    return refused<CMPIData>(mb, "getProperty", rc, name);
}

}  // namespace

void fillBrokerTable(CMPIBrokerFT& table, const BrokerOptions& options) {
    table.brokerCapabilities = CMPI_MB_BasicRead;
    table.brokerVersion = options.brokerVersion;
    table.brokerName = options.name.c_str();
    table.prepareAttachThread = prepareAttachThread;
    table.attachThread = attachThread;
    table.detachThread = detachThread;
    table.deliverIndication = deliverIndication;
    table.enumerateInstanceNames = enumerateInstanceNames;
    table.getInstance = getInstance;
    table.createInstance = createInstance;
    table.modifyInstance = modifyInstance;
    table.deleteInstance = deleteInstance;
    table.execQuery = execQuery;
    table.enumerateInstances = enumerateInstances;
    table.associators = associators;
    table.associatorNames = associatorNames;
    table.references = references;
    table.referenceNames = referenceNames;
    table.invokeMethod = invokeMethod;
    table.setProperty = setProperty;
    table.getProperty = getProperty;
}

}  // namespace broker
