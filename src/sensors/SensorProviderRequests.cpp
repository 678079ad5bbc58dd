// The three read requests.
#include <cmpimacs.h>

#include <cstring>

#include "CimModel.h"
#include "Quietly.h"
#include "SensorProvider.h"
#include "log.h"

namespace {

constexpr int NUMERIC_SENSOR = 0;
constexpr int SYSTEM_EVENT_LOG = 1;
constexpr int NO_CLASS = -1;

// One of the three kinds of request: what it logs, and what becomes of a list that a failure cuts short. What takes
// arguments is a function, so that the compiler holds each format against them.
struct RequestKind {
    void (*logOpening)(const char* className, const char* ns);
    void (*logStatus)(int code, const char* message);
    const char* unknownException;
    const char* noneFound;
    bool keepsPartialList;  // an enumeration: what was returned before a failure stands
};

const RequestKind NAMES = {
    [](const char* className, const char* ns) {
        Log(LOG_DEBUG, "SensorProvider::enumInstanceNames - Reference object path: class = %s, namespace = %s\n",
            className, ns);
    },
    [](int code, const char* message) {
        Log(LOG_ERROR, "SensorProvider::enumerateInstanceNames - CMPIStatus %i, %s", code, message);
    },
    "SensorProvider::enumerateInstanceNames -  Unknown Exception",
    "SensorProvider::enumerateInstanceNames - No instances found",
    true,
};
const RequestKind INSTANCES = {
    [](const char* className, const char* ns) {
        Log(LOG_DEBUG, "SensorProvider::enumInstances - Reference object path: class = %s, namespace = %s\n", className,
            ns);
    },
    [](int code, const char* message) {
        Log(LOG_ERROR, "SensorProvider::enumerateInstances - CMPIStatus %i, %s", code, message);
    },
    "SensorProvider::enumerateInstances -  Unknown Exception",
    "SensorProvider::enumerateInstances - No instances found",
    true,
};
const RequestKind ONE_INSTANCE = {
    [](const char* className, const char* ns) {
        Log(LOG_DEBUG, "SensorProvider::getInstance - Object path: class = %s, namespace = %s", className, ns);
    },
    [](int code, const char* message) {
        Log(LOG_ERROR, "SensorProvider::getInstance - CMPIStatus %i, %s", code, message);
    },
    "SensorProvider::getInstance -  Unknown Exception",
    "SensorProvider::getInstance - No instance found",
    false,
};

// The characters of a broker's string, which the brokers in use keep in its handle field. Never null.
const char* textOf(const CMPIString* string) {
    if (string == nullptr || string->hdl == nullptr) throwFailure();
    return static_cast<const char*>(string->hdl);
}

// The value of the key "Name", fetched from the broker; valid as long as the reference. Never null.
const char* nameKeyOf(const CMPIObjectPath* ref) {
    CMPIStatus status = {CMPI_RC_OK, nullptr};
    const CMPIData key = CMGetKey(ref, "Name", &status);
    if (status.rc != CMPI_RC_OK) throwStatus(status);
    // A value whose state says null or bad must not be touched.
    if ((key.state & (CMPI_nullValue | CMPI_badValue)) != 0) throwFailure();

    const char* name = nullptr;
    if (key.type == CMPI_string && key.value.string != nullptr) {
        name = CMGetCharPtr(key.value.string);
    } else if (key.type == CMPI_chars) {
        name = key.value.chars;
    }
    if (name == nullptr) throwFailure();
    Log(LOG_DEBUG, "SensorProvider::getInstance - Object path: instance name = '%s'", name);
    return name;
}

// Logs the request and answers the class that it asks for. Where the request cannot be served, `status` says why.
int openRequest(const RequestKind& kind, const CMPIObjectPath* ref, CMPIStatus& status) {
    // A broker may write to the record without asking. A text that it gives counts, whatever it says there.
    CMPIStatus ignored = {CMPI_RC_OK, nullptr};
    const char* ns = textOf(CMGetNameSpace(ref, &ignored));
    const char* className = textOf(CMGetClassName(ref, &ignored));
    kind.logOpening(className, ns);
    if (!SensorProvider::isCimV2Namespace(ns)) {
        status.rc = CMPI_RC_ERR_INVALID_NAMESPACE;
        return NO_CLASS;
    }
    const int tqsClass = SensorProvider::getTqsInstanceClass(className);
    if (tqsClass == NO_CLASS) status.rc = CMPI_RC_ERR_INVALID_CLASS;
    return tqsClass;
}

// Ends every request, once; a broker that throws here is the request's failure.
CMPIStatus finish(const RequestKind& kind, const CMPIResult* rslt, CMPIStatus status) {
    try {
        CMReturnDone(rslt);
    } catch (...) {
        quietly([&kind] { LogQuick(LOG_ERROR, kind.unknownException); });
        status.rc = CMPI_RC_ERR_FAILED;
    }
    return status;
}

const char* messageOf(const CMPIStatus& status) {
    return status.msg != nullptr && status.msg->hdl != nullptr ? static_cast<const char*>(status.msg->hdl) : "";
}

// Serves a request from its opening to its end. `work(class, returned)` returns what is wanted, counts it, and answers
// false when there is nothing.
//
// The provider throws a pointer to a status, which only the second handler takes: all its own failures log "Unknown
// Exception". The first one is for a status thrown by value, as somebody else's code below may do.
template <typename Work>
CMPIStatus answer(const RequestKind& kind, const CMPIResult* rslt, const CMPIObjectPath* ref, Work work) {
    CMPIStatus status = {CMPI_RC_OK, nullptr};
    unsigned returned = 0;
    bool found = false;
    const auto fail = [&] {
        status.rc = CMPI_RC_ERR_FAILED;
        found = kind.keepsPartialList && returned > 0;
    };
    try {
        const int tqsClass = openRequest(kind, ref, status);
        found = status.rc != CMPI_RC_OK || work(tqsClass, returned);
    } catch (const CMPIStatus& thrown) {
        quietly([&] { kind.logStatus(static_cast<int>(thrown.rc), messageOf(thrown)); });
        fail();
    } catch (...) {
        quietly([&kind] { LogQuick(LOG_ERROR, kind.unknownException); });
        fail();
    }
    if (!found) {
        quietly([&kind] { LogQuick(LOG_DEBUG, kind.noneFound); });
        status.rc = CMPI_RC_ERR_FAILED;
    }
    return finish(kind, rslt, status);
}

}  // namespace

CMPIStatus SensorProvider::enumInstanceNames(CMPIInstanceMI* /*mi*/, const CMPIContext* /*ctx*/, const CMPIResult* rslt,
                                             const CMPIObjectPath* ref) {
    return answer(NAMES, rslt, ref,
                  [this, rslt](int tqsClass, unsigned& returned) { return returnNames(tqsClass, rslt, returned); });
}

CMPIStatus SensorProvider::enumInstances(CMPIInstanceMI* /*mi*/, const CMPIContext* /*ctx*/, const CMPIResult* rslt,
                                         const CMPIObjectPath* ref, const char** /*properties*/) {
    return answer(INSTANCES, rslt, ref,
                  [this, rslt](int tqsClass, unsigned& returned) { return returnInstances(tqsClass, rslt, returned); });
}

CMPIStatus SensorProvider::getInstance(CMPIInstanceMI* /*mi*/, const CMPIContext* /*ctx*/, const CMPIResult* rslt,
                                       const CMPIObjectPath* ref, const char** /*properties*/) {
    return answer(ONE_INSTANCE, rslt, ref, [this, rslt, ref](int tqsClass, unsigned& /*returned*/) {
        return returnNamedInstance(tqsClass, rslt, ref);
    });
}

bool SensorProvider::returnNames(int tqsClass, const CMPIResult* rslt, unsigned& returned) {
    if (tqsClass == SYSTEM_EVENT_LOG) {
        CMReturnObjectPath(rslt, eventLog.getObjectPath(broker));
        return true;
    }
    for (TQS_NumericSensor& sensor : sensors) {
        CMReturnObjectPath(rslt, sensor.getObjectPath(broker));
        ++returned;
    }
    return !sensors.empty();
}

bool SensorProvider::returnInstances(int tqsClass, const CMPIResult* rslt, unsigned& returned) {
    if (tqsClass == SYSTEM_EVENT_LOG) {
        returnEventLog(rslt);
        return true;
    }
    for (TQS_NumericSensor& sensor : sensors) {
        // Additional sensors too go through the chip here; only a request for one instance asks the drive itself.
        updateReading(sensor);
        CMReturnInstance(rslt, sensor.getInstance(broker));
        ++returned;
    }
    return !sensors.empty();
}

bool SensorProvider::returnNamedInstance(int tqsClass, const CMPIResult* rslt, const CMPIObjectPath* ref) {
    if (tqsClass == SYSTEM_EVENT_LOG) {
        if (std::strcmp(nameKeyOf(ref), eventLog.getName()) != 0) return false;
        returnEventLog(rslt);
        return true;
    }
    for (TQS_NumericSensor& sensor : sensors) {
        if (std::strcmp(nameKeyOf(ref), sensor.getName()) != 0) continue;
        if (sensor.isAdditional) {
            additional.updateReading(sensor);
        } else {
            updateReading(sensor);
        }
        CMReturnInstance(rslt, sensor.getInstance(broker));
        return true;
    }
    return false;
}

void SensorProvider::returnEventLog(const CMPIResult* rslt) {
    updateLog();
    CMReturnInstance(rslt, eventLog.getInstance(broker));
}

void SensorProvider::updateReading(TQS_NumericSensor& sensor) {
    LogQuick(LOG_DEBUG, "SensorProvider::UpdateReading (Sensor)");
    const unsigned int handle = sensor.getHandle();
    if (!sensor.needsReading()) {
        Log(LOG_TRACE, "SensorProvider::UpdateReading - No need to update sensor 0x%08x yet", handle);
        return;
    }
    CSensorReading reading{0, READING_PRESET};
    const sscode status = chip->ReadSensor(handle, reading);
    if (status != 0) {
        Log(LOG_ERROR, "SensorProvider::UpdateReading - failed to read sensor 0x%08x, sscode=0x%08x", handle, status);
        throwFailure();
    }
    sensor.setCurrentReading(reading.value);
}

void SensorProvider::updateLog() {
    LogQuick(LOG_DEBUG, "SensorProvider::GetSystemEventLog");
    CSystemEventLog record{};
    const sscode status = chip->GetSystemEventLog(record);
    if (status != 0) {
        Log(LOG_ERROR, "SensorProvider::GetSystemEventLog - failed to get log information, sscode=0x%08x", status);
        throwFailure();
    }
    eventLog.clear();
    eventLog.setLogFull(record.logFull != 0);
    eventLog.setLogLines(record.lines);
    eventLog.setLogMultipleEventCountIncrement(record.multipleEventCountIncrement);
    eventLog.setLogMultipleEventTimeWindow(record.multipleEventTimeWindow);
    eventLog.setLogValid(record.logValid != 0);
}

int SensorProvider::getTqsInstanceClass(const char* className) {
    if (std::strcmp(className, "TQS_NumericSensor") == 0) return NUMERIC_SENSOR;
    if (std::strcmp(className, "TQS_SystemEventLog") == 0) return SYSTEM_EVENT_LOG;
    return NO_CLASS;
}

bool SensorProvider::isCimV2Namespace(const char* ns) {
    // Not strcasecmp: in some locales (Turkish, say) it does not take "I" for "i".
    static constexpr char wanted[] = "root/cimv2";
    std::size_t i = 0;
    for (; wanted[i] != '\0'; ++i) {
        const char c = ns[i] >= 'A' && ns[i] <= 'Z' ? static_cast<char>(ns[i] - 'A' + 'a') : ns[i];
        if (c != wanted[i]) return false;
    }
    return ns[i] == '\0';
}
