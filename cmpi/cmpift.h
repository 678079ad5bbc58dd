// Objects and function tables of CMPI, the Common Manageability Programming Interface: the binary contract between a
// broker and a provider. Declared from the published interface (CMPI Issue 2).
//
// Every object is a pair of pointers: hdl, its owner's private handle, and ft, a table of functions that take the
// object as their first argument. Real objects may be larger, so an object is never copied by value, nor made for the
// broker by a provider. Tables only ever grew at their end; a slot beyond the table's ftVersion must not be touched,
// and since brokers in use announce 0 or 1, a slot of level 200 or higher is used only if it is not NULL either.
//
// Unless a comment says otherwise:
//  - CMPIStatus* rc may be NULL; else it is filled in. Preset it: some brokers forget to.
//  - A failed function gives NULL, 0 or false.
//  - What a function gives belongs to the broker, which frees it some time after the running request; only what clone
//    made is the caller's, who must release it, and nothing else may be released.
//  - Text and values passed in are copied during the call. How a value is passed depends on its type: see CMPIValue.
//  - A list of property names ends with NULL.
#ifndef ZELSENSORS_CMPI_CMPIFT_H
#define ZELSENSORS_CMPI_CMPIFT_H

#include <cmpidt.h>
#include <cmpios.h>
#include <stddef.h>

#ifdef __cplusplus
extern "C" {
#endif

struct timespec;

// The broker, as the provider's factory gets it: valid until the provider has been cleaned up.
struct _CMPIBroker {
    const void* hdl;
    const CMPIBrokerFT* bft;
    const CMPIBrokerEncFT* eft;
    const CMPIBrokerExtFT* xft;
#ifdef CMPI_VER_200
    const CMPIBrokerMemFT* mft;  // NULL: no such capability
#endif
};

// Services of the broker itself. Has no ftVersion; it starts with three fields.
struct _CMPIBrokerFT {
    // Bits of CMPI_MB_*; a capability is there when all bits of its mask are.
    unsigned int brokerCapabilities;

    // Level that the broker announces. Brokers in use announce 0, so a low number is no reason to refuse one.
    CMPIVersion brokerVersion;

    const char* brokerName;

    // Threads: the first is called where the thread is made and gives the context that the new thread attaches and
    // detaches with, around all its calls to the broker. NULL on failure.
    CMPIContext* (*prepareAttachThread)(const CMPIBroker* mb, const CMPIContext* ctx);
    CMPIStatus (*attachThread)(const CMPIBroker* mb, const CMPIContext* ctx);
    CMPIStatus (*detachThread)(const CMPIBroker* mb, const CMPIContext* ctx);

    // Indications.
    CMPIStatus (*deliverIndication)(const CMPIBroker* mb, const CMPIContext* ctx, const char* ns,
                                    const CMPIInstance* ind);

    // Requests to other providers, by way of the broker. A NULL list of properties asks for all of them, an empty one
    // for none.
    CMPIEnumeration* (*enumerateInstanceNames)(const CMPIBroker* mb, const CMPIContext* ctx, const CMPIObjectPath* cls,
                                               CMPIStatus* rc);
    CMPIInstance* (*getInstance)(const CMPIBroker* mb, const CMPIContext* ctx, const CMPIObjectPath* path,
                                 const char** props, CMPIStatus* rc);
    CMPIObjectPath* (*createInstance)(const CMPIBroker* mb, const CMPIContext* ctx, const CMPIObjectPath* cls,
                                      const CMPIInstance* inst, CMPIStatus* rc);
    CMPIStatus (*modifyInstance)(const CMPIBroker* mb, const CMPIContext* ctx, const CMPIObjectPath* path,
                                 const CMPIInstance* inst, const char** props);
    CMPIStatus (*deleteInstance)(const CMPIBroker* mb, const CMPIContext* ctx, const CMPIObjectPath* path);
    CMPIEnumeration* (*execQuery)(const CMPIBroker* mb, const CMPIContext* ctx, const CMPIObjectPath* cls,
                                  const char* query, const char* lang, CMPIStatus* rc);
    CMPIEnumeration* (*enumerateInstances)(const CMPIBroker* mb, const CMPIContext* ctx, const CMPIObjectPath* cls,
                                           const char** props, CMPIStatus* rc);

    // Associations. Any of the classes and roles may be NULL: not restricted.
    CMPIEnumeration* (*associators)(const CMPIBroker* mb, const CMPIContext* ctx, const CMPIObjectPath* path,
                                    const char* assocClass, const char* resultClass, const char* role,
                                    const char* resultRole, const char** props, CMPIStatus* rc);
    CMPIEnumeration* (*associatorNames)(const CMPIBroker* mb, const CMPIContext* ctx, const CMPIObjectPath* path,
                                        const char* assocClass, const char* resultClass, const char* role,
                                        const char* resultRole, CMPIStatus* rc);
    CMPIEnumeration* (*references)(const CMPIBroker* mb, const CMPIContext* ctx, const CMPIObjectPath* path,
                                   const char* resultClass, const char* role, const char** props, CMPIStatus* rc);
    CMPIEnumeration* (*referenceNames)(const CMPIBroker* mb, const CMPIContext* ctx, const CMPIObjectPath* path,
                                       const char* resultClass, const char* role, CMPIStatus* rc);

    // Methods and single properties.
    CMPIData (*invokeMethod)(const CMPIBroker* mb, const CMPIContext* ctx, const CMPIObjectPath* path,
                             const char* method, const CMPIArgs* in, CMPIArgs* out, CMPIStatus* rc);
    CMPIStatus (*setProperty)(const CMPIBroker* mb, const CMPIContext* ctx, const CMPIObjectPath* path,
                              const char* name, const CMPIValue* value, CMPIType type);
    CMPIData (*getProperty)(const CMPIBroker* mb, const CMPIContext* ctx, const CMPIObjectPath* path, const char* name,
                            CMPIStatus* rc);

    // Level 210, though declared at every level: there only if brokerVersion is 210 or higher.
    CMPIEnumeration* (*enumerateInstancesFiltered)(const CMPIBroker* mb, const CMPIContext* ctx,
                                                   const CMPIObjectPath* cls, const char** props,
                                                   const char* filterLang, const char* filter, CMPIStatus* rc);
    CMPIEnumeration* (*associatorsFiltered)(const CMPIBroker* mb, const CMPIContext* ctx, const CMPIObjectPath* path,
                                            const char* assocClass, const char* resultClass, const char* role,
                                            const char* resultRole, const char** props, const char* filterLang,
                                            const char* filter, CMPIStatus* rc);
    CMPIEnumeration* (*referencesFiltered)(const CMPIBroker* mb, const CMPIContext* ctx, const CMPIObjectPath* path,
                                           const char* resultClass, const char* role, const char** props,
                                           const char* filterLang, const char* filter, CMPIStatus* rc);
};

// Makes and examines objects. What is made belongs to the broker, which frees it some time after the request.
struct _CMPIBrokerEncFT {
    CMPIVersion ftVersion;

    // Makers. The text or path given is copied. newArray takes the type of an element, without CMPI_ARRAY; all elements
    // start as CIM NULL. A binary date-time is in microseconds, since 1970 in UTC or, for an interval, long.
    // newDateTimeFromChars takes the 25 characters of CIM. *projection becomes an array of strings or NULL.
    CMPIInstance* (*newInstance)(const CMPIBroker* mb, const CMPIObjectPath* path, CMPIStatus* rc);
    CMPIObjectPath* (*newObjectPath)(const CMPIBroker* mb, const char* ns, const char* cls, CMPIStatus* rc);
    CMPIArgs* (*newArgs)(const CMPIBroker* mb, CMPIStatus* rc);
    CMPIString* (*newString)(const CMPIBroker* mb, const char* text, CMPIStatus* rc);
    CMPIArray* (*newArray)(const CMPIBroker* mb, CMPICount size, CMPIType elemType, CMPIStatus* rc);
    CMPIDateTime* (*newDateTime)(const CMPIBroker* mb, CMPIStatus* rc);
    CMPIDateTime* (*newDateTimeFromBinary)(const CMPIBroker* mb, CMPIUint64 usec, CMPIBoolean isInterval,
                                           CMPIStatus* rc);
    CMPIDateTime* (*newDateTimeFromChars)(const CMPIBroker* mb, const char* cimText, CMPIStatus* rc);
    CMPISelectExp* (*newSelectExp)(const CMPIBroker* mb, const char* query, const char* lang, CMPIArray** projection,
                                   CMPIStatus* rc);

    // Questions about an object. Those with void* take a pointer to any encapsulated object; the type's name is, for
    // example, "CMPIInstance".
    CMPIBoolean (*classPathIsA)(const CMPIBroker* mb, const CMPIObjectPath* cls, const char* className, CMPIStatus* rc);
    CMPIString* (*toString)(const CMPIBroker* mb, const void* object, CMPIStatus* rc);
    CMPIBoolean (*isOfType)(const CMPIBroker* mb, const void* object, const char* typeName, CMPIStatus* rc);
    CMPIString* (*getType)(const CMPIBroker* mb, const void* object, CMPIStatus* rc);

    // A translated message with its $0 to $9 filled in. count pairs follow, at most ten: the CMPIType, then the value
    // as the CMFmt macros pass it.
    CMPIString* (*getMessage)(const CMPIBroker* mb, const char* id, const char* defText, CMPIStatus* rc,
                              CMPICount count, ...);

    // The broker's own log and trace. text is preferred to string; either may be NULL.
    CMPIStatus (*logMessage)(const CMPIBroker* mb, CMPISeverity severity, const char* id, const char* text,
                             const CMPIString* string);
    CMPIStatus (*trace)(const CMPIBroker* mb, CMPILevel level, const char* component, const char* text,
                        const CMPIString* string);
#ifdef CMPI_VER_200
    CMPIError* (*newCMPIError)(const CMPIBroker* mb, const char* owner, const char* msgId, const char* msg,
                               CMPIErrorSeverity sev, CMPIErrorProbableCause cause, CMPIrc cimStatus, CMPIStatus* rc);

    // Messages from a file of the provider's.
    CMPIStatus (*openMessageFile)(const CMPIBroker* mb, const char* file, CMPIMsgFileHandle* handle);
    CMPIStatus (*closeMessageFile)(const CMPIBroker* mb, CMPIMsgFileHandle handle);
    CMPIString* (*getMessage2)(const CMPIBroker* mb, const char* id, CMPIMsgFileHandle handle, const char* defText,
                               CMPIStatus* rc, CMPICount count, ...);
#endif
#ifdef CMPI_VER_210
    CMPIPropertyList* (*newPropertyList)(const CMPIBroker* mb, const char** props, CMPIStatus* rc);
    CMPIString* (*newStringCP)(const CMPIBroker* mb, const char* text, CMPICodepageID cp, CMPIStatus* rc);
    CMPIEnumerationFilter* (*newEnumerationFilter)(const CMPIBroker* mb, const char* filterLang, const char* filter,
                                                   CMPIStatus* rc);
#endif
};

// Services of the operating system. These take no broker; brokers leave some of the slots NULL.
struct _CMPIBrokerExtFT {
    CMPIVersion ftVersion;

    char* (*resolveFileName)(const char* libName);

    // Threads.
    void* (*newThread)(void* (*start)(void*), void* arg, int detached);
    int (*joinThread)(void* thread, void** result);
    int (*exitThread)(void* result);
    int (*cancelThread)(void* thread);
    int (*threadSleep)(CMPIUint32 msec);
    int (*threadOnce)(int* once, void (*init)(void));

    // Values of a thread's own.
    int (*createThreadKey)(unsigned int* key, void (*cleanup)(void*));
    int (*destroyThreadKey)(unsigned int key);
    void* (*getThreadSpecific)(unsigned int key);
    int (*setThreadSpecific)(unsigned int key, void* value);

    // Mutexes and conditions.
    void* (*newMutex)(int opt);
    void (*destroyMutex)(void* mutex);
    void (*lockMutex)(void* mutex);
    void (*unlockMutex)(void* mutex);
    void* (*newCondition)(int opt);
    void (*destroyCondition)(void* cond);
    int (*condWait)(void* cond, void* mutex);
    int (*timedCondWait)(void* cond, void* mutex, struct timespec* wait);
    int (*signalCondition)(void* cond);
#ifdef CMPI_VER_210
    // As those without the 2, with a result.
    int (*destroyMutex2)(void* mutex);
    int (*lockMutex2)(void* mutex);
    int (*unlockMutex2)(void* mutex);
    int (*destroyCondition2)(void* cond);
#endif
};

#ifdef CMPI_VER_200
// Memory. The broker's pointer to this table is NULL where it lacks the capability.
struct _CMPIBrokerMemFT {
    CMPIVersion ftVersion;

    // What is made between a mark and its release is freed by the release, clones excepted. Pairs nest.
    CMPIGcStat* (*mark)(const CMPIBroker* mb, CMPIStatus* rc);
    CMPIStatus (*release)(const CMPIBroker* mb, const CMPIGcStat* gc);

    // Plain memory.
    void* (*cmpiMalloc)(const CMPIBroker* mb, size_t size);
    void* (*cmpiCalloc)(const CMPIBroker* mb, size_t count, size_t size);
    void* (*cmpiRealloc)(const CMPIBroker* mb, void* ptr, size_t size);
    char* (*cmpiStrDup)(const CMPIBroker* mb, const char* text);
    void (*cmpiFree)(const CMPIBroker* mb, void* ptr);

    // Frees a made object (never a clone) before the broker would.
    void (*freeInstance)(const CMPIBroker* mb, CMPIInstance* obj);
    void (*freeObjectPath)(const CMPIBroker* mb, CMPIObjectPath* obj);
    void (*freeArgs)(const CMPIBroker* mb, CMPIArgs* obj);
    void (*freeString)(const CMPIBroker* mb, CMPIString* obj);
    void (*freeArray)(const CMPIBroker* mb, CMPIArray* obj);
    void (*freeDateTime)(const CMPIBroker* mb, CMPIDateTime* obj);
    void (*freeSelectExp)(const CMPIBroker* mb, CMPISelectExp* obj);
#ifdef CMPI_VER_210
    void (*freeChars)(const CMPIBroker* mb, char* text);
#endif
};
#endif

// Named values that come with a request. Belongs to the broker and ends with the call.
struct _CMPIContext {
    const void* hdl;
    const CMPIContextFT* ft;
};

struct _CMPIContextFT {
    CMPIVersion ftVersion;
    CMPIStatus (*release)(CMPIContext* ctx);
    CMPIContext* (*clone)(const CMPIContext* ctx, CMPIStatus* rc);

    // A missing entry is CMPI_RC_ERR_NO_SUCH_PROPERTY.
    CMPIData (*getEntry)(const CMPIContext* ctx, const char* name, CMPIStatus* rc);

    // Index from 0, in no order; *name becomes the entry's name. name may be NULL.
    CMPIData (*getEntryAt)(const CMPIContext* ctx, CMPICount index, CMPIString** name, CMPIStatus* rc);
    CMPICount (*getEntryCount)(const CMPIContext* ctx, CMPIStatus* rc);

    // Adds or replaces.
    CMPIStatus (*addEntry)(const CMPIContext* ctx, const char* name, const CMPIValue* value, CMPIType type);
};

// Takes the answer of a request. Belongs to the broker and ends with the call.
struct _CMPIResult {
    const void* hdl;
    const CMPIResultFT* ft;
};

struct _CMPIResultFT {
    CMPIVersion ftVersion;
    CMPIStatus (*release)(CMPIResult* rslt);
    CMPIResult* (*clone)(const CMPIResult* rslt, CMPIStatus* rc);

    // Each adds one item to the answer; a status other than OK can mean that the request has been given up.
    CMPIStatus (*returnData)(const CMPIResult* rslt, const CMPIValue* value, CMPIType type);
    CMPIStatus (*returnInstance)(const CMPIResult* rslt, const CMPIInstance* inst);
    CMPIStatus (*returnObjectPath)(const CMPIResult* rslt, const CMPIObjectPath* path);

    // Once, after the last item of a request that succeeded.
    CMPIStatus (*returnDone)(const CMPIResult* rslt);
#ifdef CMPI_VER_200
    CMPIStatus (*returnError)(const CMPIResult* rslt, const CMPIError* err);
#endif
};

// An instance of a CIM class.
struct _CMPIInstance {
    const void* hdl;
    const CMPIInstanceFT* ft;
};

struct _CMPIInstanceFT {
    CMPIVersion ftVersion;
    CMPIStatus (*release)(CMPIInstance* inst);
    CMPIInstance* (*clone)(const CMPIInstance* inst, CMPIStatus* rc);

    // A missing property is CMPI_RC_ERR_NO_SUCH_PROPERTY; one that is NULL is OK with CMPI_nullValue in the state.
    CMPIData (*getProperty)(const CMPIInstance* inst, const char* name, CMPIStatus* rc);

    // Index from 0; *name becomes the property's name. name may be NULL.
    CMPIData (*getPropertyAt)(const CMPIInstance* inst, CMPICount index, CMPIString** name, CMPIStatus* rc);
    CMPICount (*getPropertyCount)(const CMPIInstance* inst, CMPIStatus* rc);

    // Adds or replaces. A NULL value is CIM NULL of the type.
    CMPIStatus (*setProperty)(const CMPIInstance* inst, const char* name, const CMPIValue* value, CMPIType type);

    // A new path, made from the instance.
    CMPIObjectPath* (*getObjectPath)(const CMPIInstance* inst, CMPIStatus* rc);

    // Leaves it to the broker to drop properties outside the list. To be called before any setProperty; keys names the
    // keys, which some brokers need to know.
    CMPIStatus (*setPropertyFilter)(const CMPIInstance* inst, const char** props, const char** keys);

    // The path must name namespace, class and all keys.
    CMPIStatus (*setObjectPath)(const CMPIInstance* inst, const CMPIObjectPath* path);
#ifdef CMPI_VER_200
    // As setProperty; origin is the class that the property comes from, or NULL.
    CMPIStatus (*setPropertyWithOrigin)(const CMPIInstance* inst, const char* name, const CMPIValue* value,
                                        CMPIType type, const char* origin);
#endif
};

// The name of a class or an instance: host, namespace, class, keys.
struct _CMPIObjectPath {
    const void* hdl;
    const CMPIObjectPathFT* ft;
};

struct _CMPIObjectPathFT {
    CMPIVersion ftVersion;
    CMPIStatus (*release)(CMPIObjectPath* op);
    CMPIObjectPath* (*clone)(const CMPIObjectPath* op, CMPIStatus* rc);

    // The parts of the path. A getter may give NULL or a string without text where the part is not set.
    CMPIStatus (*setNameSpace)(const CMPIObjectPath* op, const char* ns);
    CMPIString* (*getNameSpace)(const CMPIObjectPath* op, CMPIStatus* rc);
    CMPIStatus (*setHostname)(const CMPIObjectPath* op, const char* host);
    CMPIString* (*getHostname)(const CMPIObjectPath* op, CMPIStatus* rc);
    CMPIStatus (*setClassName)(const CMPIObjectPath* op, const char* cls);
    CMPIString* (*getClassName)(const CMPIObjectPath* op, CMPIStatus* rc);

    // Keys. addKey adds or replaces; a key is never NULL, an array or an instance. Read back, an integer key may have
    // another integer type and text is a CMPI_string.
    CMPIStatus (*addKey)(const CMPIObjectPath* op, const char* name, const CMPIValue* value, CMPIType type);
    CMPIData (*getKey)(const CMPIObjectPath* op, const char* name, CMPIStatus* rc);
    CMPIData (*getKeyAt)(const CMPIObjectPath* op, CMPICount index, CMPIString** name, CMPIStatus* rc);
    CMPICount (*getKeyCount)(const CMPIObjectPath* op, CMPIStatus* rc);

    // Copy the parts from src.
    CMPIStatus (*setNameSpaceFromObjectPath)(const CMPIObjectPath* op, const CMPIObjectPath* src);
    CMPIStatus (*setHostAndNameSpaceFromObjectPath)(const CMPIObjectPath* op, const CMPIObjectPath* src);

    // Qualifiers. Often NULL slots: look before calling.
    CMPIData (*getClassQualifier)(const CMPIObjectPath* op, const char* qual, CMPIStatus* rc);
    CMPIData (*getPropertyQualifier)(const CMPIObjectPath* op, const char* prop, const char* qual, CMPIStatus* rc);
    CMPIData (*getMethodQualifier)(const CMPIObjectPath* op, const char* method, const char* qual, CMPIStatus* rc);
    CMPIData (*getParameterQualifier)(const CMPIObjectPath* op, const char* method, const char* param, const char* qual,
                                      CMPIStatus* rc);

    CMPIString* (*toString)(const CMPIObjectPath* op, CMPIStatus* rc);
};

// Text.
struct _CMPIString {
    const void* hdl;
    const CMPIStringFT* ft;
};

struct _CMPIStringFT {
    CMPIVersion ftVersion;
    CMPIStatus (*release)(CMPIString* str);
    CMPIString* (*clone)(const CMPIString* str, CMPIStatus* rc);

    // UTF-8, owned by the string object and valid as long as that.
    const char* (*getCharPtr)(const CMPIString* str, CMPIStatus* rc);
#ifdef CMPI_VER_210
    // A new copy in another code page; see freeChars of CMPIBrokerMemFT.
    char* (*newCharsCP)(const CMPIString* str, CMPICodepageID cp, CMPIStatus* rc);
#endif
};

// A fixed number of elements of one type; an index outside is CMPI_RC_ERR_NO_SUCH_PROPERTY.
struct _CMPIArray {
    const void* hdl;
    const CMPIArrayFT* ft;
};

struct _CMPIArrayFT {
    CMPIVersion ftVersion;
    CMPIStatus (*release)(CMPIArray* ar);
    CMPIArray* (*clone)(const CMPIArray* ar, CMPIStatus* rc);
    CMPICount (*getSize)(const CMPIArray* ar, CMPIStatus* rc);

    // The type of an element, without CMPI_ARRAY.
    CMPIType (*getSimpleType)(const CMPIArray* ar, CMPIStatus* rc);
    CMPIData (*getElementAt)(const CMPIArray* ar, CMPICount index, CMPIStatus* rc);

    // type must be that of the array's elements.
    CMPIStatus (*setElementAt)(const CMPIArray* ar, CMPICount index, const CMPIValue* value, CMPIType type);
};

// The answer of an enumeration, read once from the start.
struct _CMPIEnumeration {
    const void* hdl;
    const CMPIEnumerationFT* ft;
};

struct _CMPIEnumerationFT {
    CMPIVersion ftVersion;
    CMPIStatus (*release)(CMPIEnumeration* en);
    CMPIEnumeration* (*clone)(const CMPIEnumeration* en, CMPIStatus* rc);

    // An instance or a path. Past the end: CMPI_RC_NO_MORE_ELEMENTS.
    CMPIData (*getNext)(const CMPIEnumeration* en, CMPIStatus* rc);
    CMPIBoolean (*hasNext)(const CMPIEnumeration* en, CMPIStatus* rc);
    CMPIArray* (*toArray)(const CMPIEnumeration* en, CMPIStatus* rc);
};

// Arguments of a method.
struct _CMPIArgs {
    const void* hdl;
    const CMPIArgsFT* ft;
};

struct _CMPIArgsFT {
    CMPIVersion ftVersion;
    CMPIStatus (*release)(CMPIArgs* args);
    CMPIArgs* (*clone)(const CMPIArgs* args, CMPIStatus* rc);

    // Adds or replaces.
    CMPIStatus (*addArg)(const CMPIArgs* args, const char* name, const CMPIValue* value, CMPIType type);

    // As for the properties of an instance.
    CMPIData (*getArg)(const CMPIArgs* args, const char* name, CMPIStatus* rc);
    CMPIData (*getArgAt)(const CMPIArgs* args, CMPICount index, CMPIString** name, CMPIStatus* rc);
    CMPICount (*getArgCount)(const CMPIArgs* args, CMPIStatus* rc);
};

// A point in time or an interval.
struct _CMPIDateTime {
    const void* hdl;
    const CMPIDateTimeFT* ft;
};

struct _CMPIDateTimeFT {
    CMPIVersion ftVersion;
    CMPIStatus (*release)(CMPIDateTime* dt);
    CMPIDateTime* (*clone)(const CMPIDateTime* dt, CMPIStatus* rc);

    // Microseconds, since 1970 in UTC or, for an interval, long.
    CMPIUint64 (*getBinaryFormat)(const CMPIDateTime* dt, CMPIStatus* rc);

    // The 25 characters of CIM.
    CMPIString* (*getStringFormat)(const CMPIDateTime* dt, CMPIStatus* rc);
    CMPIBoolean (*isInterval)(const CMPIDateTime* dt, CMPIStatus* rc);
};

// A parsed query.
struct _CMPISelectExp {
    const void* hdl;
    const CMPISelectExpFT* ft;
};

struct _CMPISelectExpFT {
    CMPIVersion ftVersion;
    CMPIStatus (*release)(CMPISelectExp* se);
    CMPISelectExp* (*clone)(const CMPISelectExp* se, CMPIStatus* rc);

    // Whether the instance matches.
    CMPIBoolean (*evaluate)(const CMPISelectExp* se, const CMPIInstance* inst, CMPIStatus* rc);

    // The text of the query.
    CMPIString* (*getString)(const CMPISelectExp* se, CMPIStatus* rc);

    // The condition as a disjunction of conjunctions, and the other way round.
    CMPISelectCond* (*getDOC)(const CMPISelectExp* se, CMPIStatus* rc);
    CMPISelectCond* (*getCOD)(const CMPISelectExp* se, CMPIStatus* rc);

    // As evaluate, with accessor(name, arg) giving the value of a property.
    CMPIBoolean (*evaluateUsingAccessor)(const CMPISelectExp* se, CMPIAccessor* accessor, void* arg, CMPIStatus* rc);
};

#ifdef CMPI_VER_200
// An instance of CIM_Error.
struct _CMPIError {
    const void* hdl;
    const CMPIErrorFT* ft;
};

struct _CMPIErrorFT {
    CMPIVersion ftVersion;
    CMPIStatus (*release)(CMPIError* er);
    CMPIError* (*clone)(const CMPIError* er, CMPIStatus* rc);

    CMPIErrorType (*getErrorType)(const CMPIError* er, CMPIStatus* rc);
    CMPIString* (*getOtherErrorType)(const CMPIError* er, CMPIStatus* rc);
    CMPIString* (*getOwningEntity)(const CMPIError* er, CMPIStatus* rc);
    CMPIString* (*getMessageID)(const CMPIError* er, CMPIStatus* rc);
    CMPIString* (*getMessage)(const CMPIError* er, CMPIStatus* rc);
    CMPIErrorSeverity (*getPerceivedSeverity)(const CMPIError* er, CMPIStatus* rc);
    CMPIErrorProbableCause (*getProbableCause)(const CMPIError* er, CMPIStatus* rc);
    CMPIString* (*getProbableCauseDescription)(const CMPIError* er, CMPIStatus* rc);
    CMPIArray* (*getRecommendedActions)(const CMPIError* er, CMPIStatus* rc);
    CMPIString* (*getErrorSource)(const CMPIError* er, CMPIStatus* rc);
    CMPIErrorSrcFormat (*getErrorSourceFormat)(const CMPIError* er, CMPIStatus* rc);
    CMPIString* (*getOtherErrorSourceFormat)(const CMPIError* er, CMPIStatus* rc);
    CMPIrc (*getCIMStatusCode)(const CMPIError* er, CMPIStatus* rc);
    CMPIString* (*getCIMStatusCodeDescription)(const CMPIError* er, CMPIStatus* rc);
    CMPIArray* (*getMessageArguments)(const CMPIError* er, CMPIStatus* rc);

    CMPIStatus (*setErrorType)(const CMPIError* er, CMPIErrorType type);
    CMPIStatus (*setOtherErrorType)(const CMPIError* er, const char* text);
    CMPIStatus (*setProbableCauseDescription)(const CMPIError* er, const char* text);
    CMPIStatus (*setRecommendedActions)(const CMPIError* er, const CMPIArray* list);
    CMPIStatus (*setErrorSource)(const CMPIError* er, const char* text);
    CMPIStatus (*setErrorSourceFormat)(const CMPIError* er, CMPIErrorSrcFormat format);
    CMPIStatus (*setOtherErrorSourceFormat)(const CMPIError* er, const char* text);
    CMPIStatus (*setCIMStatusCodeDescription)(const CMPIError* er, const char* text);
    CMPIStatus (*setMessageArguments)(const CMPIError* er, const CMPIArray* list);
};
#endif

#ifdef CMPI_VER_210
// A parsed list of property names.
struct _CMPIPropertyList {
    const void* hdl;
    const CMPIPropertyListFT* ft;
};

struct _CMPIPropertyListFT {
    CMPIVersion ftVersion;
    CMPIStatus (*release)(CMPIPropertyList* pl);
    CMPIPropertyList* (*clone)(const CMPIPropertyList* pl, CMPIStatus* rc);

    CMPIBoolean (*isPropertyInList)(const CMPIPropertyList* pl, const char* name, CMPIStatus* rc);

    // NULL-terminated, owned by the list object.
    const char** (*getProperties)(const CMPIPropertyList* pl, CMPIStatus* rc);
};
#endif

#ifdef CMPI_VER_210
// A parsed filter of an enumeration.
struct _CMPIEnumerationFilter {
    const void* hdl;
    const CMPIEnumerationFilterFT* ft;
};

struct _CMPIEnumerationFilterFT {
    CMPIVersion ftVersion;
    CMPIStatus (*release)(CMPIEnumerationFilter* ef);
    CMPIEnumerationFilter* (*clone)(const CMPIEnumerationFilter* ef, CMPIStatus* rc);

    // Whether the instance passes.
    CMPIBoolean (*match)(const CMPIEnumerationFilter* ef, const CMPIInstance* inst, CMPIStatus* rc);
};
#endif

// An instance provider. The provider owns both pointers; hdl is free for its use. The broker gets it from the factory,
// a function of the provider library with C linkage for each provider name N:
//
//     CMPIInstanceMI* N_Create_InstanceMI(const CMPIBroker* mb, const CMPIContext* ctx, CMPIStatus* rc);
//
// NULL, or a status other than OK, means that the provider is not to be used. Every slot must be filled; what is not
// done answers CMPI_RC_ERR_NOT_SUPPORTED. Apart from cleanup, the functions may run in several threads at once.
struct _CMPIInstanceMI {
    const void* hdl;
    const CMPIInstanceMIFT* ft;
};

struct _CMPIInstanceMIFT {
    // Level of this table. miVersion and miName are for information only.
    CMPIVersion ftVersion;
    int miVersion;
    const char* miName;

    // Frees the provider. May be put off with CMPI_RC_DO_NOT_UNLOAD or CMPI_RC_NEVER_UNLOAD unless terminating.
    CMPIStatus (*cleanup)(CMPIInstanceMI* mi, const CMPIContext* ctx, CMPIBoolean terminating);

    // The answer goes to rslt: a path for each name, an instance for each instance. A NULL list of properties asks for
    // all of them, an empty one for none.
    CMPIStatus (*enumerateInstanceNames)(CMPIInstanceMI* mi, const CMPIContext* ctx, const CMPIResult* rslt,
                                         const CMPIObjectPath* cls);
    CMPIStatus (*enumerateInstances)(CMPIInstanceMI* mi, const CMPIContext* ctx, const CMPIResult* rslt,
                                     const CMPIObjectPath* cls, const char** props);
    CMPIStatus (*getInstance)(CMPIInstanceMI* mi, const CMPIContext* ctx, const CMPIResult* rslt,
                              const CMPIObjectPath* path, const char** props);

    // createInstance answers with the path of the new instance; modifyInstance and deleteInstance with nothing. The
    // list of properties says what to change; NULL is all that inst has.
    CMPIStatus (*createInstance)(CMPIInstanceMI* mi, const CMPIContext* ctx, const CMPIResult* rslt,
                                 const CMPIObjectPath* cls, const CMPIInstance* inst);
    CMPIStatus (*modifyInstance)(CMPIInstanceMI* mi, const CMPIContext* ctx, const CMPIResult* rslt,
                                 const CMPIObjectPath* path, const CMPIInstance* inst, const char** props);
    CMPIStatus (*deleteInstance)(CMPIInstanceMI* mi, const CMPIContext* ctx, const CMPIResult* rslt,
                                 const CMPIObjectPath* path);

    CMPIStatus (*execQuery)(CMPIInstanceMI* mi, const CMPIContext* ctx, const CMPIResult* rslt,
                            const CMPIObjectPath* cls, const char* query, const char* lang);
#ifdef CMPI_VER_210
    // rc must be left alone: brokers may pass a flag in its place.
    CMPIStatus (*enumerateInstancesFiltered)(CMPIInstanceMI* mi, const CMPIContext* ctx, const CMPIResult* rslt,
                                             const CMPIObjectPath* cls, const char** props, const char* filterLang,
                                             const char* filter, CMPIStatus* rc);
#endif
};

#ifdef __cplusplus
}
#endif

#endif  // ZELSENSORS_CMPI_CMPIFT_H
