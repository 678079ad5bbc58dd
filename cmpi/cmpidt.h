// Data types and constants of CMPI, the Common Manageability Programming Interface. Declared from the published
// interface (CMPI Issue 2), for systems without its headers.
//
// CMPI_VERSION may be defined to the level to compile for: 100, 200 or 210 (the default). What a level lacks is not
// declared at that level. CMPI_VER_100, CMPI_VER_200 and CMPI_VER_210 are defined for the level and the ones below it;
// test them with #ifdef, as other headers define them without a value.
#ifndef ZELSENSORS_CMPI_CMPIDT_H
#define ZELSENSORS_CMPI_CMPIDT_H

#include <cmpios.h>
#include <cmpipl.h>

// ---- Levels ----

#define CMPIVersion100 100
#define CMPIVersion200 200
#define CMPIVersion210 210

#ifndef CMPI_VERSION
#define CMPI_VERSION CMPIVersion210
#endif

#if CMPI_VERSION == CMPIVersion210
#define CMPI_VER_100 1
#define CMPI_VER_200 1
#define CMPI_VER_210 1
#elif CMPI_VERSION == CMPIVersion200
#define CMPI_VER_100 1
#define CMPI_VER_200 1
#elif CMPI_VERSION == CMPIVersion100
#define CMPI_VER_100 1
#else
#error "CMPI_VERSION must be 100, 200 or 210"
#endif

// The highest level known here, whatever CMPI_VERSION is. So not what to write into a table: that is CMPI_VERSION.
#define CMPICurrentVersion CMPIVersion210

#ifdef __cplusplus
extern "C" {
#endif

typedef int CMPIVersion;

// ---- Scalars ----

typedef unsigned char CMPIBoolean;  // 0 or 1; a masked flag does not fit
typedef unsigned short CMPIChar16;
typedef unsigned char CMPIUint8;
typedef unsigned short CMPIUint16;
typedef unsigned int CMPIUint32;
typedef unsigned long long CMPIUint64;
typedef signed char CMPISint8;
typedef short CMPISint16;
typedef int CMPISint32;
typedef long long CMPISint64;
typedef float CMPIReal32;
typedef double CMPIReal64;

typedef unsigned int CMPICount;
typedef unsigned int CMPIFlags;         // CMPI_FLAG_*
typedef unsigned short CMPIType;        // a type code below
typedef unsigned short CMPIValueState;  // CMPI_goodValue and so on

// ---- Objects: each is declared, with its function table, in cmpift.h ----

typedef struct _CMPIBroker CMPIBroker;
typedef struct _CMPIBrokerFT CMPIBrokerFT;
typedef struct _CMPIBrokerEncFT CMPIBrokerEncFT;
typedef struct _CMPIBrokerExtFT CMPIBrokerExtFT;
#ifdef CMPI_VER_200
typedef struct _CMPIBrokerMemFT CMPIBrokerMemFT;
#endif

typedef struct _CMPIContext CMPIContext;
typedef struct _CMPIContextFT CMPIContextFT;
typedef struct _CMPIResult CMPIResult;
typedef struct _CMPIResultFT CMPIResultFT;
typedef struct _CMPIInstance CMPIInstance;
typedef struct _CMPIInstanceFT CMPIInstanceFT;
typedef struct _CMPIObjectPath CMPIObjectPath;
typedef struct _CMPIObjectPathFT CMPIObjectPathFT;
typedef struct _CMPIString CMPIString;
typedef struct _CMPIStringFT CMPIStringFT;
typedef struct _CMPIArray CMPIArray;
typedef struct _CMPIArrayFT CMPIArrayFT;
typedef struct _CMPIEnumeration CMPIEnumeration;
typedef struct _CMPIEnumerationFT CMPIEnumerationFT;
typedef struct _CMPIArgs CMPIArgs;
typedef struct _CMPIArgsFT CMPIArgsFT;
typedef struct _CMPIDateTime CMPIDateTime;
typedef struct _CMPIDateTimeFT CMPIDateTimeFT;
typedef struct _CMPISelectExp CMPISelectExp;
typedef struct _CMPISelectExpFT CMPISelectExpFT;
#ifdef CMPI_VER_200
typedef struct _CMPIError CMPIError;
typedef struct _CMPIErrorFT CMPIErrorFT;
#endif
#ifdef CMPI_VER_210
typedef struct _CMPIPropertyList CMPIPropertyList;
typedef struct _CMPIPropertyListFT CMPIPropertyListFT;
typedef struct _CMPIEnumerationFilter CMPIEnumerationFilter;
typedef struct _CMPIEnumerationFilterFT CMPIEnumerationFilterFT;
#endif

typedef struct _CMPIInstanceMI CMPIInstanceMI;
typedef struct _CMPIInstanceMIFT CMPIInstanceMIFT;

// Parts of a parsed query; opaque here.
typedef struct _CMPISelectCond CMPISelectCond;
typedef struct _CMPISubCond CMPISubCond;
typedef struct _CMPIPredicate CMPIPredicate;

#ifdef CMPI_VER_200
typedef void* CMPIMsgFileHandle;
typedef void CMPIGcStat;
#endif

// ---- Type codes: the code of an array is that of its elements with CMPI_ARRAY added ----

#define CMPI_null 0x0000

// The masks overlap (every signed code has the bits of CMPI_UINT): compare whole codes.
#define CMPI_SIMPLE 0x0002
#define CMPI_boolean 0x0002
#define CMPI_char16 0x0003

#define CMPI_REAL 0x0008
#define CMPI_real32 0x0008
#define CMPI_real64 0x000C

#define CMPI_UINT 0x0080
#define CMPI_uint8 0x0080
#define CMPI_uint16 0x0090
#define CMPI_uint32 0x00A0
#define CMPI_uint64 0x00B0

#define CMPI_SINT 0x00C0
#define CMPI_sint8 0x00C0
#define CMPI_sint16 0x00D0
#define CMPI_sint32 0x00E0
#define CMPI_sint64 0x00F0

#define CMPI_INTEGER 0x00C0

#define CMPI_ENC 0x1000
#define CMPI_instance 0x1000
#define CMPI_ref 0x1100
#define CMPI_args 0x1200
#define CMPI_class 0x1300  // unused
#define CMPI_filter 0x1400
#define CMPI_enumeration 0x1500
#define CMPI_string 0x1600
#define CMPI_chars 0x1700  // see CMPIValue
#define CMPI_dateTime 0x1800
#define CMPI_ptr 0x1900
#define CMPI_charsptr 0x1A00  // unused

#define CMPI_ARRAY 0x2000
#define CMPI_SIMPLEA (CMPI_ARRAY | CMPI_SIMPLE)
#define CMPI_booleanA (CMPI_ARRAY | CMPI_boolean)
#define CMPI_char16A (CMPI_ARRAY | CMPI_char16)
#define CMPI_REALA (CMPI_ARRAY | CMPI_REAL)
#define CMPI_real32A (CMPI_ARRAY | CMPI_real32)
#define CMPI_real64A (CMPI_ARRAY | CMPI_real64)
#define CMPI_UINTA (CMPI_ARRAY | CMPI_UINT)
#define CMPI_uint8A (CMPI_ARRAY | CMPI_uint8)
#define CMPI_uint16A (CMPI_ARRAY | CMPI_uint16)
#define CMPI_uint32A (CMPI_ARRAY | CMPI_uint32)
#define CMPI_uint64A (CMPI_ARRAY | CMPI_uint64)
#define CMPI_SINTA (CMPI_ARRAY | CMPI_SINT)
#define CMPI_sint8A (CMPI_ARRAY | CMPI_sint8)
#define CMPI_sint16A (CMPI_ARRAY | CMPI_sint16)
#define CMPI_sint32A (CMPI_ARRAY | CMPI_sint32)
#define CMPI_sint64A (CMPI_ARRAY | CMPI_sint64)
#define CMPI_INTEGERA (CMPI_ARRAY | CMPI_INTEGER)
#define CMPI_ENCA (CMPI_ARRAY | CMPI_ENC)
#define CMPI_instanceA (CMPI_ARRAY | CMPI_instance)
#define CMPI_refA (CMPI_ARRAY | CMPI_ref)
#define CMPI_stringA (CMPI_ARRAY | CMPI_string)
#define CMPI_charsA (CMPI_ARRAY | CMPI_chars)
#define CMPI_dateTimeA (CMPI_ARRAY | CMPI_dateTime)
#define CMPI_charsptrA (CMPI_ARRAY | CMPI_charsptr)

// Types of keys, for a broker that does not know the class.
#define CMPI_keyInteger CMPI_sint64
#define CMPI_keyString CMPI_string
#define CMPI_keyBoolean CMPI_boolean
#define CMPI_keyRef CMPI_ref

// Types in the predicates of a parsed query.
#define CMPI_charString CMPI_string
#define CMPI_integerString (CMPI_string | CMPI_sint64)
#define CMPI_realString (CMPI_string | CMPI_real64)
#define CMPI_numericString (CMPI_string | CMPI_sint64 | CMPI_real64)
#define CMPI_booleanString (CMPI_string | CMPI_boolean)
#define CMPI_dateTimeString (CMPI_string | CMPI_dateTime)
#define CMPI_classNameString (CMPI_string | CMPI_ref)
#define CMPI_nameString (CMPI_string | 0x0800)

// Old names.
#ifndef CMPI_NO_SYNONYM_SUPPORT
#define CMPI_Byte CMPI_sint8
#define CMPI_Short CMPI_sint16
#define CMPI_Int CMPI_sint32
#define CMPI_Long CMPI_sint64
#define CMPI_Float CMPI_real32
#define CMPI_Double CMPI_real64
#define CMPI_ByteA CMPI_sint8A
#define CMPI_ShortA CMPI_sint16A
#define CMPI_IntA CMPI_sint32A
#define CMPI_LongA CMPI_sint64A
#define CMPI_FloatA CMPI_real32A
#define CMPI_DoubleA CMPI_real64A
#endif

// ---- Values ----

// A block of memory, for values in a context only.
typedef struct _CMPIValuePtr {
    void* ptr;
    CMPICount length;
} CMPIValuePtr;

// A value of any type. Passed to a function as a pointer with its type beside it, it is
//  - for CMPI_chars, the text itself: the const char*, cast to a const CMPIValue*;
//  - for every other type a whole CMPIValue with the member of that type set (array for all array codes), since some
//    brokers copy all of it;
//  - NULL for CIM NULL, where that is allowed.
// In a CMPIData, CMPI_chars is in the member chars.
typedef union _CMPIValue {
    CMPIBoolean boolean;
    CMPIChar16 char16;
    CMPIUint8 uint8;
    CMPIUint16 uint16;
    CMPIUint32 uint32;
    CMPIUint64 uint64;
    CMPISint8 sint8;
    CMPISint16 sint16;
    CMPISint32 sint32;
    CMPISint64 sint64;
    CMPIReal32 real32;
    CMPIReal64 real64;

    CMPIInstance* inst;
    CMPIObjectPath* ref;
    CMPIArgs* args;
    CMPISelectExp* filter;
    CMPIEnumeration* Enum;
    CMPIArray* array;
    CMPIString* string;
    char* chars;
    CMPIDateTime* dateTime;
    CMPIValuePtr dataPtr;

    // Old names.
    CMPISint8 Byte;
    CMPISint16 Short;
    CMPISint32 Int;
    CMPISint64 Long;
    CMPIReal32 Float;
    CMPIReal64 Double;
} CMPIValue;

#define CMPI_goodValue 0x0000
#define CMPI_nullValue 0x0100  // CIM NULL
#define CMPI_keyValue 0x0200   // the value of a key; may come with another flag
#define CMPI_notFound 0x0400   // deprecated; the status says it
#define CMPI_badValue 0x8000

// A value as a broker gives it. The value means something only if the call succeeded and the state is not null or bad.
typedef struct _CMPIData {
    CMPIType type;
    CMPIValueState state;
    CMPIValue value;
} CMPIData;

// Gives the value of the named property to the evaluation of a query.
typedef CMPIData CMPIAccessor(const char* name, void* arg);

// ---- Status ----

// To 29 the status codes of the CIM protocol; 50 and 51 are answers to cleanup alone; from 60 on errors of the
// interface.
typedef enum _CMPIrc {
    CMPI_RC_OK = 0,
    CMPI_RC_ERR_FAILED = 1,
    CMPI_RC_ERR_ACCESS_DENIED = 2,
    CMPI_RC_ERR_INVALID_NAMESPACE = 3,
    CMPI_RC_ERR_INVALID_PARAMETER = 4,
    CMPI_RC_ERR_INVALID_CLASS = 5,
    CMPI_RC_ERR_NOT_FOUND = 6,  // no such instance
    CMPI_RC_ERR_NOT_SUPPORTED = 7,
    CMPI_RC_ERR_CLASS_HAS_CHILDREN = 8,
    CMPI_RC_ERR_CLASS_HAS_INSTANCES = 9,
    CMPI_RC_ERR_INVALID_SUPERCLASS = 10,
    CMPI_RC_ERR_ALREADY_EXISTS = 11,
    CMPI_RC_ERR_NO_SUCH_PROPERTY = 12,  // no such key, entry or index either
    CMPI_RC_ERR_TYPE_MISMATCH = 13,
    CMPI_RC_ERR_QUERY_LANGUAGE_NOT_SUPPORTED = 14,
    CMPI_RC_ERR_INVALID_QUERY = 15,
    CMPI_RC_ERR_METHOD_NOT_AVAILABLE = 16,
    CMPI_RC_ERR_METHOD_NOT_FOUND = 17,
#ifdef CMPI_VER_210
    CMPI_RC_NO_MORE_ELEMENTS = 18,
    CMPI_RC_ERR_SERVER_LIMITS_EXCEEDED = 27,
    CMPI_RC_ERR_QUERY_FEATURE_NOT_SUPPORTED = 29,
#endif
    CMPI_RC_DO_NOT_UNLOAD = 50,  // not now
    CMPI_RC_NEVER_UNLOAD = 51,   // not before the broker ends
    CMPI_RC_ERR_INVALID_HANDLE = 60,
    CMPI_RC_ERR_INVALID_DATA_TYPE = 61,
#ifdef CMPI_VER_210
    CMPI_RC_ERR_NOT_IN_CODEPAGE = 62,
#endif
    CMPI_RC_ERROR_SYSTEM = 100,
    CMPI_RC_ERROR = 200
} CMPIrc;

// msg is NULL or made by the broker, whose it stays.
typedef struct _CMPIStatus {
    CMPIrc rc;
    CMPIString* msg;
} CMPIStatus;

// ---- Log and trace ----

typedef enum _CMPISeverity {
    CMPI_SEV_ERROR = 1,
    CMPI_SEV_INFO = 2,
    CMPI_SEV_WARNING = 3,
    CMPI_DEV_DEBUG = 4  // DEV is how the interface spells it
} CMPISeverity;

typedef enum _CMPILevel { CMPI_LEV_INFO = 1, CMPI_LEV_WARNING = 2, CMPI_LEV_VERBOSE = 3 } CMPILevel;

// ---- Context entries ----

#define CMPIInitNameSpace "CMPIInitNameSpace"      // CMPI_string: namespace of the provider or the request
#define CMPIInvocationFlags "CMPIInvocationFlags"  // CMPI_uint32: CMPI_FLAG_*
#define CMPIPrincipal "CMPIPrincipal"              // CMPI_string: the user, authenticated
#define CMPIRole "CMPIRole"                        // CMPI_string: the user's role, empty if none
#define CMPIAcceptLanguage "CMPIAcceptLanguage"    // CMPI_string: wanted languages, as in HTTP
#define CMPIContentLanguage "CMPIContentLanguage"  // CMPI_string: language of the data passed in

#define CMPI_FLAG_LocalOnly 1
#define CMPI_FLAG_DeepInheritance 2
#define CMPI_FLAG_IncludeQualifiers 4
#define CMPI_FLAG_IncludeClassOrigin 8

// ---- Capabilities of a broker: each mask has the bits of what it builds on ----

#define CMPI_MB_BasicRead 0x00000001
#define CMPI_MB_BasicWrite 0x00000003
#define CMPI_MB_InstanceManipulation 0x00000007
#define CMPI_MB_AssociationTraversal 0x00000009
#define CMPI_MB_QueryExecution 0x00000011
#define CMPI_MB_QueryNormalization 0x00000031
#define CMPI_MB_BasicQualifierSupport 0x00000047
#define CMPI_MB_Indications 0x00000081
#define CMPI_MB_OSEncapsulationSupport 0x00000100
#ifdef CMPI_VER_200
#define CMPI_MB_Supports_MemEnhancements 0x00004000
#define CMPI_MB_Supports_Extended_Error 0x00008000
#endif
#ifdef CMPI_VER_210
#define CMPI_MB_Logging 0x00010000
#define CMPI_MB_Tracing 0x00020000
#define CMPI_MB_PropertyFiltering 0x00040001
#define CMPI_MB_CodepageConversion 0x00080000
#endif

#define CMPI_MB_Class_0 CMPI_MB_BasicRead
#define CMPI_MB_Class_1 CMPI_MB_BasicWrite
#define CMPI_MB_Class_2 CMPI_MB_InstanceManipulation

// ---- Queries, errors, code pages ----

typedef enum _CMPIPredOp {
    CMPI_PredOp_Equals = 1,
    CMPI_PredOp_NotEquals = 2,
    CMPI_PredOp_LessThan = 3,
    CMPI_PredOp_GreaterThanOrEquals = 4,
    CMPI_PredOp_GreaterThan = 5,
    CMPI_PredOp_LessThanOrEquals = 6,
    CMPI_PredOp_Isa = 7,
    CMPI_PredOp_NotIsa = 8,
    CMPI_PredOp_Like = 9,
    CMPI_PredOp_NotLike = 10,
#ifdef CMPI_VER_200
    CMPI_PredOp_Not_Null = 11,
    CMPI_PredOp_Null = 12,
    CMPI_PredOp_And = 13,
    CMPI_PredOp_Or = 14,
#endif
} CMPIPredOp;

#ifdef CMPI_VER_200
typedef enum _CMPIErrorType {
    UnknownErrorType = 0,
    OtherErrorType = 1,
    CommunicationsError = 2,
    QualityOfServiceError = 3,
    SoftwareError = 4,
    HardwareError = 5,
    EnvironmentalError = 6,
    SecurityError = 7,
    Oversubscription_Error = 8,
#ifdef CMPI_VER_210
    OversubscriptionError = 8,
#endif
    UnavailableResourceError = 9,
    UnsupportedOperationError = 10
} CMPIErrorType;

typedef enum _CMPIErrorSeverity {
    ErrorSevUnknown = 0,
    ErrorSevLow = 2,
    ErrorSevMedium = 3,
    ErrorSevHigh = 4,
    ErrorSevFatal = 5
} CMPIErrorSeverity;

// The first two of the values of CIM_Error.ProbableCause; the others, to 130, have no names here.
typedef enum _CMPIErrorProbableCause { ErrorProbCauseUnknown = 0, ErrorProbCauseOther = 1 } CMPIErrorProbableCause;

typedef enum _CMPIErrorSrcFormat { CMPIErrSrcUnknown = 0, CMPIErrSrcOther = 1, CIMObjectHandle = 2 } CMPIErrorSrcFormat;
#endif

#ifdef CMPI_VER_210
typedef enum _CMPICodepageID { CMPI_CPID_SYSTEM = 1, CMPI_CPID_USASCII = 2, CMPI_CPID_UTF16 = 3 } CMPICodepageID;
#endif

#ifdef __cplusplus
}
#endif

#endif  // ZELSENSORS_CMPI_CMPIDT_H
