// The one provider object: the terminal's sensors and event log, and the three read requests on them.
//
// Thread-safety: none of its own. The entry functions let one thread in at a time (drvLock). Only isInitialised() and
// currentProvider() may be called without it.
#ifndef ZELSENSORS_SENSORPROVIDER_H
#define ZELSENSORS_SENSORPROVIDER_H

#include <cmpidt.h>
#include <cmpift.h>

#include <string>
#include <vector>

#include "AdditionalInfo.h"
#include "TQS_NumericSensor.h"
#include "TQS_SystemEventLog.h"
#include "chip.h"

class SensorProvider {
  public:
    SensorProvider();
    // Deletes the chip object and clears drvProvider.
    virtual ~SensorProvider();
    SensorProvider(const SensorProvider&) = delete;
    SensorProvider& operator=(const SensorProvider&) = delete;

    // To be called before the first request. The broker is kept, not owned: it must outlive the provider.
    void setBroker(const CMPIBroker* usedBroker) { broker = usedBroker; }

    // Opens the chip service and builds the inventory. On a failure, which is logged, isInitialised() stays false for
    // good; what building the inventory throws passes to the caller.
    void initialise(const CMPIContext* ctx);
    bool isInitialised() const { return __atomic_load_n(&initialised, __ATOMIC_ACQUIRE); }

    // Each calls CMReturnDone exactly once and throws nothing. Only to be called after isInitialised() has become true.
    CMPIStatus enumInstanceNames(CMPIInstanceMI* mi, const CMPIContext* ctx, const CMPIResult* rslt,
                                 const CMPIObjectPath* ref);
    CMPIStatus enumInstances(CMPIInstanceMI* mi, const CMPIContext* ctx, const CMPIResult* rslt,
                             const CMPIObjectPath* ref, const char** properties);
    CMPIStatus getInstance(CMPIInstanceMI* mi, const CMPIContext* ctx, const CMPIResult* rslt,
                           const CMPIObjectPath* ref, const char** properties);

    // Builds the inventory. 0, or the status of the chip call that failed; the sensors added until then stay.
    sscode initSensorProvider();
    // Refreshes the reading when one is due, and the event log always. Both throw a pointer to a CMPIStatus when the
    // chip fails; what was there before then stays.
    void updateReading(TQS_NumericSensor& sensor);
    void updateLog();

    // 0 for "TQS_NumericSensor", 1 for "TQS_SystemEventLog" (exact), -1 for anything else.
    static int getTqsInstanceClass(const char* className);
    // Whether it is "root/cimv2" in any case.
    static bool isCimV2Namespace(const char* ns);
    // Replaces `out` with the word for a CIM SensorType code.
    static void getSensorTypeString(unsigned short sensorType, std::string& out);

  protected:
    bool initialised = false;  // read without the lock, hence atomically
    const CMPIBroker* broker = nullptr;
    CChip* chip = nullptr;  // owned
    std::vector<TQS_NumericSensor> sensors;
    TQS_SystemEventLog eventLog;
    AdditionalInfo additional;

  private:
    sscode addChipSensor(unsigned int handle);

    bool returnNames(int tqsClass, const CMPIResult* rslt, unsigned& returned);
    bool returnInstances(int tqsClass, const CMPIResult* rslt, unsigned& returned);
    bool returnNamedInstance(int tqsClass, const CMPIResult* rslt, const CMPIObjectPath* ref);
    void returnEventLog(const CMPIResult* rslt);
};

// The one provider there is at a time, or null between its destruction and the next call of the factory. Requests read
// it without the lock: through currentProvider(), and write it with setCurrentProvider(), never directly.
extern SensorProvider* drvProvider;

inline SensorProvider* currentProvider() {
    return __atomic_load_n(&drvProvider, __ATOMIC_ACQUIRE);
}
inline void setCurrentProvider(SensorProvider* provider) {
    __atomic_store_n(&drvProvider, provider, __ATOMIC_RELEASE);
}

#endif
