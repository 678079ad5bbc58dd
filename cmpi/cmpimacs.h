// Shorthands for the function tables of CMPI. None of them checks its object for NULL unless it says so.
//
// A few exist in other forms in older headers of a system's own: there CMGetCharPtr reads the handle of the string, the
// predicates on CMPIData give the raw flag (which a CMPIBoolean cannot hold), and a value argument is cast to
// CMPIValue*. Source that is to compile with either casts value arguments itself and tests the flags itself.
#ifndef ZELSENSORS_CMPI_CMPIMACS_H
#define ZELSENSORS_CMPI_CMPIMACS_H

#include <cmpidt.h>
#include <cmpift.h>
#include <stddef.h>

#ifdef __cplusplus
extern "C" {
#endif

// ---- Status ----

// A NULL st is ignored. The message of the last is made by the broker; without a broker there is none.
static inline void CMSetStatus(CMPIStatus* st, CMPIrc rc) {
    if (st != NULL) {
        st->rc = rc;
        st->msg = NULL;
    }
}

static inline void CMSetStatusWithString(CMPIStatus* st, CMPIrc rc, CMPIString* str) {
    if (st != NULL) {
        st->rc = rc;
        st->msg = str;
    }
}

static inline void CMSetStatusWithChars(const CMPIBroker* mb, CMPIStatus* st, CMPIrc rc, const char* chars) {
    if (st != NULL) {
        st->rc = rc;
        st->msg = mb != NULL ? mb->eft->newString(mb, chars, NULL) : NULL;
    }
}

// Return from the calling function with a status.
#define CMReturn(rc_)                                     \
    do {                                                  \
        const CMPIStatus cmReturnStatus_ = {(rc_), NULL}; \
        return cmReturnStatus_;                           \
    } while (0)

#define CMReturnWithString(rc_, str_)                       \
    do {                                                    \
        const CMPIStatus cmReturnStatus_ = {(rc_), (str_)}; \
        return cmReturnStatus_;                             \
    } while (0)

#define CMReturnWithChars(mb_, rc_, chars_)                             \
    do {                                                                \
        CMPIStatus cmReturnStatus_;                                     \
        CMSetStatusWithChars((mb_), &cmReturnStatus_, (rc_), (chars_)); \
        return cmReturnStatus_;                                         \
    } while (0)

// ---- Any object, any data ----

#define CMRelease(obj) ((obj)->ft->release((obj)))
#define CMClone(obj, rc) ((obj)->ft->clone((obj), (rc)))

static inline CMPIBoolean CMIsNullObject(const void* obj) {
    return obj == NULL;
}

static inline CMPIBoolean CMIsNullValue(CMPIData data) {
    return (data.state & CMPI_nullValue) != 0;
}

static inline CMPIBoolean CMIsKeyValue(CMPIData data) {
    return (data.state & CMPI_keyValue) != 0;
}

static inline CMPIBoolean CMIsArray(CMPIData data) {
    return (data.type & CMPI_ARRAY) != 0;
}

// ---- Making objects, and asking about them ----

static inline CMPIInstance* CMNewInstance(const CMPIBroker* mb, const CMPIObjectPath* path, CMPIStatus* rc) {
    return mb->eft->newInstance(mb, path, rc);
}

static inline CMPIObjectPath* CMNewObjectPath(const CMPIBroker* mb, const char* ns, const char* cls, CMPIStatus* rc) {
    return mb->eft->newObjectPath(mb, ns, cls, rc);
}

static inline CMPIArgs* CMNewArgs(const CMPIBroker* mb, CMPIStatus* rc) {
    return mb->eft->newArgs(mb, rc);
}

static inline CMPIString* CMNewString(const CMPIBroker* mb, const char* text, CMPIStatus* rc) {
    return mb->eft->newString(mb, text, rc);
}

static inline CMPIArray* CMNewArray(const CMPIBroker* mb, CMPICount size, CMPIType elemType, CMPIStatus* rc) {
    return mb->eft->newArray(mb, size, elemType, rc);
}

static inline CMPIDateTime* CMNewDateTime(const CMPIBroker* mb, CMPIStatus* rc) {
    return mb->eft->newDateTime(mb, rc);
}

static inline CMPIDateTime* CMNewDateTimeFromBinary(const CMPIBroker* mb, CMPIUint64 usec, CMPIBoolean isInterval,
                                                    CMPIStatus* rc) {
    return mb->eft->newDateTimeFromBinary(mb, usec, isInterval, rc);
}

static inline CMPIDateTime* CMNewDateTimeFromChars(const CMPIBroker* mb, const char* cimText, CMPIStatus* rc) {
    return mb->eft->newDateTimeFromChars(mb, cimText, rc);
}

static inline CMPISelectExp* CMNewSelectExp(const CMPIBroker* mb, const char* query, const char* lang,
                                            CMPIArray** projection, CMPIStatus* rc) {
    return mb->eft->newSelectExp(mb, query, lang, projection, rc);
}

static inline CMPIBoolean CMClassPathIsA(const CMPIBroker* mb, const CMPIObjectPath* cls, const char* className,
                                         CMPIStatus* rc) {
    return mb->eft->classPathIsA(mb, cls, className, rc);
}

static inline CMPIString* CDToString(const CMPIBroker* mb, const void* object, CMPIStatus* rc) {
    return mb->eft->toString(mb, object, rc);
}

static inline CMPIBoolean CDIsOfType(const CMPIBroker* mb, const void* object, const char* typeName, CMPIStatus* rc) {
    return mb->eft->isOfType(mb, object, typeName, rc);
}

static inline CMPIString* CDGetType(const CMPIBroker* mb, const void* object, CMPIStatus* rc) {
    return mb->eft->getType(mb, object, rc);
}

#ifdef CMPI_VER_200
static inline CMPIError* CMNewCMPIError(const CMPIBroker* mb, const char* owner, const char* msgId, const char* msg,
                                        CMPIErrorSeverity sev, CMPIErrorProbableCause cause, CMPIrc cimStatus,
                                        CMPIStatus* rc) {
    return mb->eft->newCMPIError(mb, owner, msgId, msg, sev, cause, cimStatus, rc);
}
#endif

// ---- Log, trace, messages ----

static inline CMPIStatus CMLogMessage(const CMPIBroker* mb, CMPISeverity severity, const char* id, const char* text,
                                      const CMPIString* string) {
    return mb->eft->logMessage(mb, severity, id, text, string);
}

static inline CMPIStatus CMTraceMessage(const CMPIBroker* mb, CMPILevel level, const char* component, const char* text,
                                        const CMPIString* string) {
    return mb->eft->trace(mb, level, component, text, string);
}

// The last argument is one of CMFmtArgs0() to CMFmtArgs10(...), whose own arguments are CMFmtSint(v) and so on.
#define CMGetMessage(mb, id, def, rc, args) ((mb)->eft->getMessage((mb), (id), (def), (rc), args))
#ifdef CMPI_VER_200
#define CMGetMessage2(mb, id, handle, def, rc, args) ((mb)->eft->getMessage2((mb), (id), (handle), (def), (rc), args))
#endif

#define CMFmtArgs0() 0
#define CMFmtArgs1(a1) 1, a1
#define CMFmtArgs2(a1, a2) 2, a1, a2
#define CMFmtArgs3(a1, a2, a3) 3, a1, a2, a3
#define CMFmtArgs4(a1, a2, a3, a4) 4, a1, a2, a3, a4
#define CMFmtArgs5(a1, a2, a3, a4, a5) 5, a1, a2, a3, a4, a5
#define CMFmtArgs6(a1, a2, a3, a4, a5, a6) 6, a1, a2, a3, a4, a5, a6
#define CMFmtArgs7(a1, a2, a3, a4, a5, a6, a7) 7, a1, a2, a3, a4, a5, a6, a7
#define CMFmtArgs8(a1, a2, a3, a4, a5, a6, a7, a8) 8, a1, a2, a3, a4, a5, a6, a7, a8
#define CMFmtArgs9(a1, a2, a3, a4, a5, a6, a7, a8, a9) 9, a1, a2, a3, a4, a5, a6, a7, a8, a9
#define CMFmtArgs10(a1, a2, a3, a4, a5, a6, a7, a8, a9, a10) 10, a1, a2, a3, a4, a5, a6, a7, a8, a9, a10

// Each is the type and the value in the width that goes through "...". The arithmetic widens without a cast.
#define CMFmtSint(v) CMPI_sint32, (0L + (v))
#define CMFmtUint(v) CMPI_uint32, (0UL + (v))
#define CMFmtSint64(v) CMPI_sint64, (0LL + (v))
#define CMFmtUint64(v) CMPI_uint64, (0ULL + (v))
#define CMFmtReal(v) CMPI_real64, (1.0 * (v))
#define CMFmtBoolean(v) CMPI_boolean, ((v) ? 1 : 0)
#define CMFmtChars(v) CMPI_chars, (v)
#define CMFmtString(v) CMPI_string, (v)

// ---- Object paths ----

static inline CMPIStatus CMSetNameSpace(const CMPIObjectPath* op, const char* ns) {
    return op->ft->setNameSpace(op, ns);
}

static inline CMPIString* CMGetNameSpace(const CMPIObjectPath* op, CMPIStatus* rc) {
    return op->ft->getNameSpace(op, rc);
}

static inline CMPIStatus CMSetHostname(const CMPIObjectPath* op, const char* host) {
    return op->ft->setHostname(op, host);
}

static inline CMPIString* CMGetHostname(const CMPIObjectPath* op, CMPIStatus* rc) {
    return op->ft->getHostname(op, rc);
}

static inline CMPIStatus CMSetClassName(const CMPIObjectPath* op, const char* cls) {
    return op->ft->setClassName(op, cls);
}

static inline CMPIString* CMGetClassName(const CMPIObjectPath* op, CMPIStatus* rc) {
    return op->ft->getClassName(op, rc);
}

static inline CMPIStatus CMAddKey(const CMPIObjectPath* op, const char* name, const CMPIValue* value, CMPIType type) {
    return op->ft->addKey(op, name, value, type);
}

static inline CMPIData CMGetKey(const CMPIObjectPath* op, const char* name, CMPIStatus* rc) {
    return op->ft->getKey(op, name, rc);
}

static inline CMPIData CMGetKeyAt(const CMPIObjectPath* op, CMPICount index, CMPIString** name, CMPIStatus* rc) {
    return op->ft->getKeyAt(op, index, name, rc);
}

static inline CMPICount CMGetKeyCount(const CMPIObjectPath* op, CMPIStatus* rc) {
    return op->ft->getKeyCount(op, rc);
}

static inline CMPIStatus CMSetNameSpaceFromObjectPath(const CMPIObjectPath* op, const CMPIObjectPath* src) {
    return op->ft->setNameSpaceFromObjectPath(op, src);
}

static inline CMPIStatus CMSetHostAndNameSpaceFromObjectPath(const CMPIObjectPath* op, const CMPIObjectPath* src) {
    return op->ft->setHostAndNameSpaceFromObjectPath(op, src);
}

// ---- Instances ----

static inline CMPIStatus CMSetProperty(const CMPIInstance* inst, const char* name, const CMPIValue* value,
                                       CMPIType type) {
    return inst->ft->setProperty(inst, name, value, type);
}

static inline CMPIData CMGetProperty(const CMPIInstance* inst, const char* name, CMPIStatus* rc) {
    return inst->ft->getProperty(inst, name, rc);
}

static inline CMPIData CMGetPropertyAt(const CMPIInstance* inst, CMPICount index, CMPIString** name, CMPIStatus* rc) {
    return inst->ft->getPropertyAt(inst, index, name, rc);
}

static inline CMPICount CMGetPropertyCount(const CMPIInstance* inst, CMPIStatus* rc) {
    return inst->ft->getPropertyCount(inst, rc);
}

static inline CMPIObjectPath* CMGetObjectPath(const CMPIInstance* inst, CMPIStatus* rc) {
    return inst->ft->getObjectPath(inst, rc);
}

static inline CMPIStatus CMSetObjectPath(const CMPIInstance* inst, const CMPIObjectPath* path) {
    return inst->ft->setObjectPath(inst, path);
}

static inline CMPIStatus CMSetPropertyFilter(const CMPIInstance* inst, const char** props, const char** keys) {
    return inst->ft->setPropertyFilter(inst, props, keys);
}

#ifdef CMPI_VER_200
// The slot can be NULL even in a broker of level 200.
static inline CMPIStatus CMSetPropertyWithOrigin(const CMPIInstance* inst, const char* name, const CMPIValue* value,
                                                 CMPIType type, const char* origin) {
    return inst->ft->setPropertyWithOrigin(inst, name, value, type, origin);
}
#endif

// ---- Strings and arrays ----

static inline const char* CMGetCharsPtr(const CMPIString* str, CMPIStatus* rc) {
    return str->ft->getCharPtr(str, rc);
}

static inline const char* CMGetCharPtr(const CMPIString* str) {
    return str->ft->getCharPtr(str, NULL);
}

static inline CMPICount CMGetArrayCount(const CMPIArray* ar, CMPIStatus* rc) {
    return ar->ft->getSize(ar, rc);
}

static inline CMPIType CMGetArrayType(const CMPIArray* ar, CMPIStatus* rc) {
    return ar->ft->getSimpleType(ar, rc);
}

static inline CMPIData CMGetArrayElementAt(const CMPIArray* ar, CMPICount index, CMPIStatus* rc) {
    return ar->ft->getElementAt(ar, index, rc);
}

static inline CMPIStatus CMSetArrayElementAt(const CMPIArray* ar, CMPICount index, const CMPIValue* value,
                                             CMPIType type) {
    return ar->ft->setElementAt(ar, index, value, type);
}

// ---- Results: these hand an item over; they do not return from the calling function ----

static inline CMPIStatus CMReturnData(const CMPIResult* rslt, const CMPIValue* value, CMPIType type) {
    return rslt->ft->returnData(rslt, value, type);
}

static inline CMPIStatus CMReturnInstance(const CMPIResult* rslt, const CMPIInstance* inst) {
    return rslt->ft->returnInstance(rslt, inst);
}

static inline CMPIStatus CMReturnObjectPath(const CMPIResult* rslt, const CMPIObjectPath* path) {
    return rslt->ft->returnObjectPath(rslt, path);
}

static inline CMPIStatus CMReturnDone(const CMPIResult* rslt) {
    return rslt->ft->returnDone(rslt);
}

#ifdef CMPI_VER_200
static inline CMPIStatus CMReturnError(const CMPIResult* rslt, const CMPIError* err) {
    return rslt->ft->returnError(rslt, err);
}
#endif

// ---- Contexts ----

static inline CMPIData CMGetContextEntry(const CMPIContext* ctx, const char* name, CMPIStatus* rc) {
    return ctx->ft->getEntry(ctx, name, rc);
}

static inline CMPIData CMGetContextEntryAt(const CMPIContext* ctx, CMPICount index, CMPIString** name, CMPIStatus* rc) {
    return ctx->ft->getEntryAt(ctx, index, name, rc);
}

static inline CMPICount CMGetContextEntryCount(const CMPIContext* ctx, CMPIStatus* rc) {
    return ctx->ft->getEntryCount(ctx, rc);
}

static inline CMPIStatus CMAddContextEntry(const CMPIContext* ctx, const char* name, const CMPIValue* value,
                                           CMPIType type) {
    return ctx->ft->addEntry(ctx, name, value, type);
}

// ---- Enumerations, arguments, date-times ----

static inline CMPIData CMGetNext(const CMPIEnumeration* en, CMPIStatus* rc) {
    return en->ft->getNext(en, rc);
}

static inline CMPIBoolean CMHasNext(const CMPIEnumeration* en, CMPIStatus* rc) {
    return en->ft->hasNext(en, rc);
}

static inline CMPIArray* CMToArray(const CMPIEnumeration* en, CMPIStatus* rc) {
    return en->ft->toArray(en, rc);
}

static inline CMPIStatus CMAddArg(const CMPIArgs* args, const char* name, const CMPIValue* value, CMPIType type) {
    return args->ft->addArg(args, name, value, type);
}

static inline CMPIData CMGetArg(const CMPIArgs* args, const char* name, CMPIStatus* rc) {
    return args->ft->getArg(args, name, rc);
}

static inline CMPIData CMGetArgAt(const CMPIArgs* args, CMPICount index, CMPIString** name, CMPIStatus* rc) {
    return args->ft->getArgAt(args, index, name, rc);
}

static inline CMPICount CMGetArgCount(const CMPIArgs* args, CMPIStatus* rc) {
    return args->ft->getArgCount(args, rc);
}

static inline CMPIUint64 CMGetBinaryFormat(const CMPIDateTime* dt, CMPIStatus* rc) {
    return dt->ft->getBinaryFormat(dt, rc);
}

static inline CMPIString* CMGetStringFormat(const CMPIDateTime* dt, CMPIStatus* rc) {
    return dt->ft->getStringFormat(dt, rc);
}

static inline CMPIBoolean CMIsInterval(const CMPIDateTime* dt, CMPIStatus* rc) {
    return dt->ft->isInterval(dt, rc);
}

// ---- The broker ----

static inline CMPIVersion CBBrokerVersion(const CMPIBroker* mb) {
    return mb->bft->brokerVersion;
}

static inline const char* CBBrokerName(const CMPIBroker* mb) {
    return mb->bft->brokerName;
}

static inline unsigned int CBGetCapabilities(const CMPIBroker* mb) {
    return mb->bft->brokerCapabilities;
}

static inline CMPIContext* CBPrepareAttachThread(const CMPIBroker* mb, const CMPIContext* ctx) {
    return mb->bft->prepareAttachThread(mb, ctx);
}

static inline CMPIStatus CBAttachThread(const CMPIBroker* mb, const CMPIContext* ctx) {
    return mb->bft->attachThread(mb, ctx);
}

static inline CMPIStatus CBDetachThread(const CMPIBroker* mb, const CMPIContext* ctx) {
    return mb->bft->detachThread(mb, ctx);
}

static inline CMPIEnumeration* CBEnumInstanceNames(const CMPIBroker* mb, const CMPIContext* ctx,
                                                   const CMPIObjectPath* cls, CMPIStatus* rc) {
    return mb->bft->enumerateInstanceNames(mb, ctx, cls, rc);
}

static inline CMPIEnumeration* CBEnumInstances(const CMPIBroker* mb, const CMPIContext* ctx, const CMPIObjectPath* cls,
                                               const char** props, CMPIStatus* rc) {
    return mb->bft->enumerateInstances(mb, ctx, cls, props, rc);
}

static inline CMPIInstance* CBGetInstance(const CMPIBroker* mb, const CMPIContext* ctx, const CMPIObjectPath* path,
                                          const char** props, CMPIStatus* rc) {
    return mb->bft->getInstance(mb, ctx, path, props, rc);
}

static inline CMPIObjectPath* CBCreateInstance(const CMPIBroker* mb, const CMPIContext* ctx, const CMPIObjectPath* cls,
                                               const CMPIInstance* inst, CMPIStatus* rc) {
    return mb->bft->createInstance(mb, ctx, cls, inst, rc);
}

static inline CMPIStatus CBModifyInstance(const CMPIBroker* mb, const CMPIContext* ctx, const CMPIObjectPath* path,
                                          const CMPIInstance* inst, const char** props) {
    return mb->bft->modifyInstance(mb, ctx, path, inst, props);
}

static inline CMPIStatus CBDeleteInstance(const CMPIBroker* mb, const CMPIContext* ctx, const CMPIObjectPath* path) {
    return mb->bft->deleteInstance(mb, ctx, path);
}

static inline CMPIEnumeration* CBExecQuery(const CMPIBroker* mb, const CMPIContext* ctx, const CMPIObjectPath* cls,
                                           const char* query, const char* lang, CMPIStatus* rc) {
    return mb->bft->execQuery(mb, ctx, cls, query, lang, rc);
}

#ifdef __cplusplus
}
#endif

// ---- The factory of an instance provider ----

// Defines the function table and the factory of the provider "name" from the functions pfxCleanup,
// pfxEnumInstanceNames, pfxEnumInstances, pfxGetInstance, pfxCreateInstance, pfxModifyInstance, pfxDeleteInstance,
// pfxExecQuery and, at level 210, pfxEnumInstancesFiltered, which must be declared before. The factory keeps the broker
// in brokerVar, a const CMPIBroker*, and then runs the statement hook: CMNoHook, CMInitHook or one of the caller's own.
#define CMInstanceMIStub(pfx, name, brokerVar, hook)                                                     \
    static const CMPIInstanceMIFT name##InstanceMIFT_ = {CMPI_VERSION,                                   \
                                                         CMPI_VERSION,                                   \
                                                         "instance" #name,                               \
                                                         pfx##Cleanup,                                   \
                                                         pfx##EnumInstanceNames,                         \
                                                         pfx##EnumInstances,                             \
                                                         pfx##GetInstance,                               \
                                                         pfx##CreateInstance,                            \
                                                         pfx##ModifyInstance,                            \
                                                         pfx##DeleteInstance,                            \
                                                         pfx##ExecQuery CM_INSTANCE_MI_STUB_210_(pfx)};  \
    CMPI_EXTERN_C CMPIInstanceMI* name##_Create_InstanceMI(const CMPIBroker* mb, const CMPIContext* ctx, \
                                                           CMPIStatus* rc);                              \
    CMPI_EXTERN_C CMPIInstanceMI* name##_Create_InstanceMI(const CMPIBroker* mb, const CMPIContext* ctx, \
                                                           CMPIStatus* rc) {                             \
        static CMPIInstanceMI mi = {NULL, &name##InstanceMIFT_};                                         \
        (void)ctx;                                                                                       \
        CMSetStatus(rc, CMPI_RC_OK);                                                                     \
        (brokerVar) = mb;                                                                                \
        hook;                                                                                            \
        return &mi;                                                                                      \
    }

#ifdef CMPI_VER_210
#define CM_INSTANCE_MI_STUB_210_(pfx) , pfx##EnumInstancesFiltered
#else
#define CM_INSTANCE_MI_STUB_210_(pfx)
#endif

#define CMNoHook

// As the hook with mtype Instance: calls pfxInstanceInitialize(&mi, ctx); unless that gives OK, the factory passes its
// status out and gives NULL.
#define CMInitHook(pfx, mtype)                                             \
    do {                                                                   \
        const CMPIStatus cmInitStatus_ = pfx##mtype##Initialize(&mi, ctx); \
        if (cmInitStatus_.rc != CMPI_RC_OK) {                              \
            if (rc != NULL) {                                              \
                *rc = cmInitStatus_;                                       \
            }                                                              \
            return NULL;                                                   \
        }                                                                  \
    } while (0)

#endif  // ZELSENSORS_CMPI_CMPIMACS_H
