// Providers for the broker to drive.
//   Echo     answers each operation with what it was given; cleanup is put off unless the broker terminates
//   Null     its factory answers null with status 0
//   Failing  its factory writes a line to standard error, and answers a status with text
//   Unready  a start that failed: enumerations answer status 16; the start, each of them and the cleanup write a line
#include <cmpidt.h>
#include <cmpift.h>
#include <cmpimacs.h>

#include <cstdio>
#include <string>

// How often Echo was cleaned up, by the value of `terminating`.
CMPI_EXTERN_C int echoCleanups[2];
int echoCleanups[2];

namespace {

const CMPIBroker* s_echoBroker = nullptr;
CMPIObjectPath* s_kept = nullptr;

CMPIStatus answer(CMPIrc rc, const std::string& text) {
    return {rc, s_echoBroker->eft->newString(s_echoBroker, text.c_str(), nullptr)};
}

const CMPIValue* chars(const char* text) {
    return reinterpret_cast<const CMPIValue*>(text);
}

CMPIStatus cleanup(CMPIInstanceMI*, const CMPIContext*, CMPIBoolean terminating) {
    ++echoCleanups[terminating];
    if (terminating == 0) return {CMPI_RC_DO_NOT_UNLOAD, nullptr};
    if (s_kept != nullptr) s_kept->ft->release(s_kept);
    s_kept = nullptr;
    return {CMPI_RC_OK, nullptr};
}

// The given class path with a key, twice.
CMPIStatus enumerateInstanceNames(CMPIInstanceMI*, const CMPIContext*, const CMPIResult* result,
                                  const CMPIObjectPath* classPath) {
    const CMPIString* className = classPath->ft->getClassName(classPath, nullptr);
    CMPIObjectPath* path = s_echoBroker->eft->newObjectPath(s_echoBroker, "root/echo",
                                                            className->ft->getCharPtr(className, nullptr), nullptr);
    path->ft->addKey(path, "Id", chars("1"), CMPI_chars);
    result->ft->returnObjectPath(result, path);
    path->ft->addKey(path, "Id", chars("2"), CMPI_chars);
    result->ft->returnObjectPath(result, path);
    return result->ft->returnDone(result);
}

// An instance with the context's namespace, and either a property for each that was asked for or the property All.
CMPIStatus enumerateInstances(CMPIInstanceMI*, const CMPIContext* context, const CMPIResult* result,
                              const CMPIObjectPath* classPath, const char** properties) {
    CMPIInstance* instance = s_echoBroker->eft->newInstance(s_echoBroker, classPath, nullptr);
    const CMPIData nameSpace = context->ft->getEntry(context, CMPIInitNameSpace, nullptr);
    instance->ft->setProperty(instance, "NameSpace", &nameSpace.value, nameSpace.type);
    if (properties == nullptr) instance->ft->setProperty(instance, "All", nullptr, CMPI_string);
    for (; properties != nullptr && *properties != nullptr; ++properties) {
        instance->ft->setProperty(instance, *properties, nullptr, CMPI_string);
    }
    result->ft->returnInstance(result, instance);
    return result->ft->returnDone(result);
}

CMPIStatus getInstance(CMPIInstanceMI*, const CMPIContext*, const CMPIResult*, const CMPIObjectPath* path,
                       const char** properties) {
    const CMPIData key = path->ft->getKey(path, "Id", nullptr);
    return answer(CMPI_RC_ERR_NOT_FOUND, std::string("no ") +
                                             key.value.string->ft->getCharPtr(key.value.string, nullptr) +
                                             (properties == nullptr ? "" : properties[0]));
}

CMPIStatus createInstance(CMPIInstanceMI*, const CMPIContext*, const CMPIResult* result, const CMPIObjectPath* path,
                          const CMPIInstance* instance) {
    result->ft->returnObjectPath(result, path);
    result->ft->returnInstance(result, instance);
    return result->ft->returnDone(result);
}

CMPIStatus modifyInstance(CMPIInstanceMI*, const CMPIContext*, const CMPIResult* result, const CMPIObjectPath* path,
                          const CMPIInstance* instance, const char** properties) {
    result->ft->returnObjectPath(result, path);
    result->ft->returnInstance(result, instance);
    return answer(CMPI_RC_OK, properties == nullptr ? "all" : properties[0]);
}

// Keeps a clone of the path until cleanup.
CMPIStatus deleteInstance(CMPIInstanceMI*, const CMPIContext*, const CMPIResult*, const CMPIObjectPath* path) {
    s_kept = path->ft->clone(path, nullptr);
    return {CMPI_RC_OK, nullptr};
}

CMPIStatus execQuery(CMPIInstanceMI*, const CMPIContext*, const CMPIResult*, const CMPIObjectPath*, const char* query,
                     const char* language) {
    return answer(CMPI_RC_ERR_INVALID_QUERY, std::string(language) + ": " + query);
}

CMPIInstanceMIFT s_echoFunctions = {100,
                                    100,
                                    "Echo",
                                    cleanup,
                                    enumerateInstanceNames,
                                    enumerateInstances,
                                    getInstance,
                                    createInstance,
                                    modifyInstance,
                                    deleteInstance,
                                    execQuery};
CMPIInstanceMI s_echo = {nullptr, &s_echoFunctions};

CMPIStatus unreadyCleanup(CMPIInstanceMI*, const CMPIContext*, CMPIBoolean) {
    std::puts("gone");
    return {CMPI_RC_OK, nullptr};
}

CMPIStatus refuseNames(CMPIInstanceMI*, const CMPIContext*, const CMPIResult*, const CMPIObjectPath*) {
    std::puts("asked");
    return {CMPI_RC_ERR_METHOD_NOT_AVAILABLE, nullptr};
}

CMPIStatus refuseInstances(CMPIInstanceMI*, const CMPIContext*, const CMPIResult*, const CMPIObjectPath*,
                           const char**) {
    std::puts("asked");
    return {CMPI_RC_ERR_METHOD_NOT_AVAILABLE, nullptr};
}

CMPIInstanceMIFT s_unreadyFunctions = {100,
                                       100,
                                       "Unready",
                                       unreadyCleanup,
                                       refuseNames,
                                       refuseInstances,
                                       getInstance,
                                       createInstance,
                                       modifyInstance,
                                       deleteInstance,
                                       execQuery};
CMPIInstanceMI s_unready = {nullptr, &s_unreadyFunctions};

}  // namespace

CMPI_EXTERN_C CMPIInstanceMI* Echo_Create_InstanceMI(const CMPIBroker* mb, const CMPIContext* context, CMPIStatus* rc) {
    s_echoBroker = mb;
    echoCleanups[0] = echoCleanups[1] = 0;
    context->ft->getEntry(context, CMPIInitNameSpace, rc);
    return &s_echo;
}

CMPI_EXTERN_C CMPIInstanceMI* Null_Create_InstanceMI(const CMPIBroker*, const CMPIContext*, CMPIStatus*) {
    return nullptr;
}

CMPI_EXTERN_C CMPIInstanceMI* Failing_Create_InstanceMI(const CMPIBroker* mb, const CMPIContext*, CMPIStatus* rc) {
    std::fputs("no device\n", stderr);
    *rc = {CMPI_RC_ERR_ACCESS_DENIED, mb->eft->newString(mb, "out of order", nullptr)};
    return &s_echo;
}

CMPI_EXTERN_C CMPIInstanceMI* Unready_Create_InstanceMI(const CMPIBroker*, const CMPIContext*, CMPIStatus*) {
    std::puts("no driver");
    return &s_unready;
}
