// What the object manager meets: the load and unload hooks, the factory, and the table of entry functions. Nothing
// thrown leaves any of them.
#include <cmpidt.h>
#include <cmpift.h>
#include <cmpimacs.h>
#include <pthread.h>
#include <unistd.h>

#include <cstdio>
#include <exception>
#include <new>

#include "Quietly.h"
#include "SensorProvider.h"
#include "log.h"

namespace {

pthread_mutex_t drvLock;  // serialises the factory and the read requests; not recursive

}  // namespace

extern "C" {

// These two names, reserved or not, are the ones that the driver's lock has always gone by.
// NOLINTNEXTLINE(bugprone-reserved-identifier)
static void __drv_synch() {
    pthread_mutex_lock(&drvLock);
}

// NOLINTNEXTLINE(bugprone-reserved-identifier)
static void __drv_unsynch() {
    pthread_mutex_unlock(&drvLock);
}

__attribute__((constructor)) static void CONSTRUCTOR() {
    std::fputs("CONSTRUCTOR\n", stderr);
    pthread_mutex_init(&drvLock, nullptr);
}

__attribute__((destructor)) static void DESTRUCTOR() {
    std::fputs("DESTRUCTOR\n", stderr);
    pthread_mutex_destroy(&drvLock);
}

}  // extern "C"

namespace {

// Holds drvLock from here to the end of the scope.
class DrvLockHolder {
  public:
    DrvLockHolder() { __drv_synch(); }
    ~DrvLockHolder() { __drv_unsynch(); }
    DrvLockHolder(const DrvLockHolder&) = delete;
    DrvLockHolder& operator=(const DrvLockHolder&) = delete;
};

// What the log and the traces show of the provider. The record that the object manager hands to each entry is not
// looked at: its handle stays after a cleanup, drvProvider does not.
const void* providerAddress() {
    return currentProvider();
}

// Runs a read request under the lock, or refuses it while there is no provider that works.
template <typename Request>
CMPIStatus serve(const char* notInitialised, Request request) noexcept {
    SensorProvider* provider = currentProvider();
    if (provider == nullptr || !provider->isInitialised()) {
        quietly([notInitialised] { LogQuick(LOG_ERROR, notInitialised); });
        return {CMPI_RC_ERR_METHOD_NOT_AVAILABLE, nullptr};
    }
    const DrvLockHolder lock;
    return request(*provider);
}

CMPIStatus refuse(const char* line) noexcept {
    std::puts(line);
    return {CMPI_RC_ERR_NOT_SUPPORTED, nullptr};
}

CMPIStatus drvInstanceCleanup(CMPIInstanceMI* /*mi*/, const CMPIContext* /*ctx*/, CMPIBoolean terminating) {
    std::fprintf(stderr, "drvInstanceCleanup - provider=%p, terminating=%x\n", providerAddress(), terminating);
    quietly([terminating] {
        Log(LOG_DEBUG, "drvInstanceCleanup - provider=%p, terminating=%x", providerAddress(), terminating);
    });
    delete currentProvider();  // its destructor clears drvProvider
    return {CMPI_RC_OK, nullptr};
}

CMPIStatus drvEnumInstanceNames(CMPIInstanceMI* mi, const CMPIContext* ctx, const CMPIResult* rslt,
                                const CMPIObjectPath* ref) {
    std::fprintf(stderr, "drvEnumInstanceNames - provider=%p\n", providerAddress());
    quietly([] { Log(LOG_DEBUG, "drvEnumInstanceNames - provider=%p", providerAddress()); });
    return serve("drvEnumInstanceNames - provider not initialised - is the kernel driver loaded?",
                 [=](SensorProvider& provider) { return provider.enumInstanceNames(mi, ctx, rslt, ref); });
}

CMPIStatus drvEnumInstances(CMPIInstanceMI* mi, const CMPIContext* ctx, const CMPIResult* rslt,
                            const CMPIObjectPath* ref, const char** properties) {
    quietly([] { Log(LOG_DEBUG, "drvEnumInstances - provider=%p", providerAddress()); });
    return serve("drvEnumInstances - provider not initialised - is the kernel driver loaded?",
                 [=](SensorProvider& provider) { return provider.enumInstances(mi, ctx, rslt, ref, properties); });
}

CMPIStatus drvGetInstance(CMPIInstanceMI* mi, const CMPIContext* ctx, const CMPIResult* rslt, const CMPIObjectPath* ref,
                          const char** properties) {
    quietly([] { Log(LOG_DEBUG, "drvGetInstance - provider=%p", providerAddress()); });
    // The text names the other entry; whoever searches logs for it finds it here too.
    return serve("drvEnumInstanceNames - provider not initialised - is the kernel driver loaded?",
                 [=](SensorProvider& provider) { return provider.getInstance(mi, ctx, rslt, ref, properties); });
}

CMPIStatus drvCreateInstance(CMPIInstanceMI* /*mi*/, const CMPIContext* /*ctx*/, const CMPIResult* /*rslt*/,
                             const CMPIObjectPath* /*ref*/, const CMPIInstance* /*instance*/) {
    return refuse("drvCreateInstance - Unsupported");
}

CMPIStatus drvModifyInstance(CMPIInstanceMI* /*mi*/, const CMPIContext* /*ctx*/, const CMPIResult* /*rslt*/,
                             const CMPIObjectPath* /*ref*/, const CMPIInstance* /*instance*/,
                             const char** /*properties*/) {
    return refuse("drvModifyInstance - Unsupported");
}

CMPIStatus drvDeleteInstance(CMPIInstanceMI* /*mi*/, const CMPIContext* /*ctx*/, const CMPIResult* /*rslt*/,
                             const CMPIObjectPath* /*ref*/) {
    return refuse("drvDeleteInstance - Unsupported");
}

CMPIStatus drvExecQuery(CMPIInstanceMI* /*mi*/, const CMPIContext* /*ctx*/, const CMPIResult* /*rslt*/,
                        const CMPIObjectPath* /*ref*/, const char* /*query*/, const char* /*language*/) {
    return refuse("drvExecQuery - Unsupported");
}

const CMPIInstanceMIFT drvInstanceMIFT = {
    100,
    100,
    "instanceSensorProvider",
    drvInstanceCleanup,
    drvEnumInstanceNames,
    drvEnumInstances,
    drvGetInstance,
    drvCreateInstance,
    drvModifyInstance,
    drvDeleteInstance,
    drvExecQuery,
};

// One generation of the published headers points to the table without const. Nothing writes through the pointer.
CMPIInstanceMI drvInstanceMI = {nullptr, const_cast<CMPIInstanceMIFT*>(&drvInstanceMIFT)};

void announce(const CMPIBroker* broker) {
    const void* address = broker;
    const int version = broker->eft->ftVersion;
    quietly([] {
        Log(LOG_INFO, "Quorvel POS Sensor Drivers for Linux %s, %s", "TARNL Version 3.10.15",
            "Built Tue Sep  5 22:35:48 2023");
    });
    std::fprintf(stderr, "SensorProvider_Create_InstanceMI, broker=%p, version=%i\n", address, version);
    std::fprintf(stderr, "SensorProvider_Create_InstanceMI - pid=%i\n", getpid());
    quietly([address, version] {
        Log(LOG_DEBUG, "SensorProvider_Create_InstanceMI, broker=%p, version=%i", address, version);
    });
}

void makeProvider(const CMPIBroker* broker, const CMPIContext* ctx) {
    if (currentProvider() != nullptr) return;
    SensorProvider* provider = new (std::nothrow) SensorProvider;
    setCurrentProvider(provider);
    if (provider == nullptr) {
        LogQuick(LOG_ERROR, "SensorProvider_Create_InstanceMI - Provider malloc failed");
        return;
    }
    provider->setBroker(broker);
    drvInstanceMI.hdl = provider;
    provider->initialise(ctx);
}

}  // namespace

// One object manager calls it once for every registered class, from different threads: the first call makes the
// provider, each gives the same record. It succeeds even when the provider could not be initialised; the requests then
// say so.
extern "C" __attribute__((visibility("default"))) CMPIInstanceMI* SensorProvider_Create_InstanceMI(
    const CMPIBroker* broker, const CMPIContext* ctx, CMPIStatus* rc) {
    {
        const DrvLockHolder lock;
        try {
            announce(broker);
            makeProvider(broker, ctx);
        } catch (const std::exception& thrown) {
            quietly([&thrown] { Log(LOG_ERROR, "SensorProvider_Create_InstanceMI - exception: %s", thrown.what()); });
        } catch (...) {
            quietly([] { LogQuick(LOG_ERROR, "SensorProvider_Create_InstanceMI -  Unknown Exception"); });
        }
    }
    if (rc != nullptr) rc->rc = CMPI_RC_OK;
    return &drvInstanceMI;
}
