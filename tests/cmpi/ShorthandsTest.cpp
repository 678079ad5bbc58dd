#include <cmpidt.h>
#include <cmpift.h>
#include <cmpimacs.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdarg>
#include <cstddef>
#include <optional>
#include <string>
#include <tuple>
#include <type_traits>
#include <utility>

namespace {

// Stands in a slot and keeps what it was called with.
template <typename Result, typename... Arguments>
struct Recorder {
    static inline std::optional<std::tuple<Arguments...>> seen;

    static Result record(Arguments... arguments) {
        seen.emplace(arguments...);
        return Result{};
    }
};

template <typename T>
T argumentAt(std::size_t position) {
    static char places[16];
    if constexpr (std::is_pointer_v<T>) {
        return reinterpret_cast<T>(&places[position]);
    } else if constexpr (std::is_enum_v<T>) {
        return static_cast<T>(1);
    } else {
        return static_cast<T>(position + 1);
    }
}

template <typename Object, typename Table>
void attach(Object& object, const Table& table) {
    object.ft = &table;
}

void attach(CMPIBroker& broker, const CMPIBrokerFT& table) {
    broker.bft = &table;
}

void attach(CMPIBroker& broker, const CMPIBrokerEncFT& table) {
    broker.eft = &table;
}

template <typename Table, typename Result, typename Object, typename... Arguments, std::size_t... Positions>
bool forwardsAll(Result (*shorthand)(const Object*, Arguments...), Result (*Table::*slot)(const Object*, Arguments...),
                 std::index_sequence<Positions...>) {
    using SlotRecorder = Recorder<Result, const Object*, Arguments...>;
    Table table{};
    table.*slot = &SlotRecorder::record;
    Object object{};
    attach(object, table);
    SlotRecorder::seen.reset();
    shorthand(&object, argumentAt<Arguments>(Positions)...);
    return SlotRecorder::seen == std::make_tuple(&object, argumentAt<Arguments>(Positions)...);
}

// Whether the shorthand calls the slot, with its own arguments in their order. All other slots are null, so that the
// program dies of a call to one.
template <typename Table, typename Result, typename Object, typename... Arguments>
bool forwards(Result (*shorthand)(const Object*, Arguments...), Result (*Table::*slot)(const Object*, Arguments...)) {
    return forwardsAll(shorthand, slot, std::index_sequence_for<Arguments...>{});
}

TEST(CmpiShorthandsTest, BrokerShorthandsCallTheirSlots) {
    EXPECT_TRUE(forwards(CBPrepareAttachThread, &CMPIBrokerFT::prepareAttachThread));
    EXPECT_TRUE(forwards(CBAttachThread, &CMPIBrokerFT::attachThread));
    EXPECT_TRUE(forwards(CBDetachThread, &CMPIBrokerFT::detachThread));
    EXPECT_TRUE(forwards(CBEnumInstanceNames, &CMPIBrokerFT::enumerateInstanceNames));
    EXPECT_TRUE(forwards(CBEnumInstances, &CMPIBrokerFT::enumerateInstances));
    EXPECT_TRUE(forwards(CBGetInstance, &CMPIBrokerFT::getInstance));
    EXPECT_TRUE(forwards(CBCreateInstance, &CMPIBrokerFT::createInstance));
    EXPECT_TRUE(forwards(CBModifyInstance, &CMPIBrokerFT::modifyInstance));
    EXPECT_TRUE(forwards(CBDeleteInstance, &CMPIBrokerFT::deleteInstance));
    EXPECT_TRUE(forwards(CBExecQuery, &CMPIBrokerFT::execQuery));
}

TEST(CmpiShorthandsTest, MakersAndQuestionsCallTheirSlots) {
    EXPECT_TRUE(forwards(CMNewInstance, &CMPIBrokerEncFT::newInstance));
    EXPECT_TRUE(forwards(CMNewObjectPath, &CMPIBrokerEncFT::newObjectPath));
    EXPECT_TRUE(forwards(CMNewArgs, &CMPIBrokerEncFT::newArgs));
    EXPECT_TRUE(forwards(CMNewString, &CMPIBrokerEncFT::newString));
    EXPECT_TRUE(forwards(CMNewArray, &CMPIBrokerEncFT::newArray));
    EXPECT_TRUE(forwards(CMNewDateTime, &CMPIBrokerEncFT::newDateTime));
    EXPECT_TRUE(forwards(CMNewDateTimeFromBinary, &CMPIBrokerEncFT::newDateTimeFromBinary));
    EXPECT_TRUE(forwards(CMNewDateTimeFromChars, &CMPIBrokerEncFT::newDateTimeFromChars));
    EXPECT_TRUE(forwards(CMNewSelectExp, &CMPIBrokerEncFT::newSelectExp));
    EXPECT_TRUE(forwards(CMNewCMPIError, &CMPIBrokerEncFT::newCMPIError));
    EXPECT_TRUE(forwards(CMClassPathIsA, &CMPIBrokerEncFT::classPathIsA));
    EXPECT_TRUE(forwards(CDToString, &CMPIBrokerEncFT::toString));
    EXPECT_TRUE(forwards(CDIsOfType, &CMPIBrokerEncFT::isOfType));
    EXPECT_TRUE(forwards(CDGetType, &CMPIBrokerEncFT::getType));
    EXPECT_TRUE(forwards(CMLogMessage, &CMPIBrokerEncFT::logMessage));
    EXPECT_TRUE(forwards(CMTraceMessage, &CMPIBrokerEncFT::trace));
}

TEST(CmpiShorthandsTest, ObjectPathShorthandsCallTheirSlots) {
    EXPECT_TRUE(forwards(CMSetNameSpace, &CMPIObjectPathFT::setNameSpace));
    EXPECT_TRUE(forwards(CMGetNameSpace, &CMPIObjectPathFT::getNameSpace));
    EXPECT_TRUE(forwards(CMSetHostname, &CMPIObjectPathFT::setHostname));
    EXPECT_TRUE(forwards(CMGetHostname, &CMPIObjectPathFT::getHostname));
    EXPECT_TRUE(forwards(CMSetClassName, &CMPIObjectPathFT::setClassName));
    EXPECT_TRUE(forwards(CMGetClassName, &CMPIObjectPathFT::getClassName));
    EXPECT_TRUE(forwards(CMAddKey, &CMPIObjectPathFT::addKey));
    EXPECT_TRUE(forwards(CMGetKey, &CMPIObjectPathFT::getKey));
    EXPECT_TRUE(forwards(CMGetKeyAt, &CMPIObjectPathFT::getKeyAt));
    EXPECT_TRUE(forwards(CMGetKeyCount, &CMPIObjectPathFT::getKeyCount));
    EXPECT_TRUE(forwards(CMSetNameSpaceFromObjectPath, &CMPIObjectPathFT::setNameSpaceFromObjectPath));
    EXPECT_TRUE(forwards(CMSetHostAndNameSpaceFromObjectPath, &CMPIObjectPathFT::setHostAndNameSpaceFromObjectPath));
}

TEST(CmpiShorthandsTest, InstanceAndResultShorthandsCallTheirSlots) {
    EXPECT_TRUE(forwards(CMSetProperty, &CMPIInstanceFT::setProperty));
    EXPECT_TRUE(forwards(CMSetPropertyWithOrigin, &CMPIInstanceFT::setPropertyWithOrigin));
    EXPECT_TRUE(forwards(CMGetProperty, &CMPIInstanceFT::getProperty));
    EXPECT_TRUE(forwards(CMGetPropertyAt, &CMPIInstanceFT::getPropertyAt));
    EXPECT_TRUE(forwards(CMGetPropertyCount, &CMPIInstanceFT::getPropertyCount));
    EXPECT_TRUE(forwards(CMGetObjectPath, &CMPIInstanceFT::getObjectPath));
    EXPECT_TRUE(forwards(CMSetObjectPath, &CMPIInstanceFT::setObjectPath));
    EXPECT_TRUE(forwards(CMSetPropertyFilter, &CMPIInstanceFT::setPropertyFilter));
    EXPECT_TRUE(forwards(CMReturnData, &CMPIResultFT::returnData));
    EXPECT_TRUE(forwards(CMReturnInstance, &CMPIResultFT::returnInstance));
    EXPECT_TRUE(forwards(CMReturnObjectPath, &CMPIResultFT::returnObjectPath));
    EXPECT_TRUE(forwards(CMReturnDone, &CMPIResultFT::returnDone));
    EXPECT_TRUE(forwards(CMReturnError, &CMPIResultFT::returnError));
}

TEST(CmpiShorthandsTest, ShorthandsOfSmallerObjectsCallTheirSlots) {
    EXPECT_TRUE(forwards(CMGetCharsPtr, &CMPIStringFT::getCharPtr));
    EXPECT_TRUE(forwards(CMGetArrayCount, &CMPIArrayFT::getSize));
    EXPECT_TRUE(forwards(CMGetArrayType, &CMPIArrayFT::getSimpleType));
    EXPECT_TRUE(forwards(CMGetArrayElementAt, &CMPIArrayFT::getElementAt));
    EXPECT_TRUE(forwards(CMSetArrayElementAt, &CMPIArrayFT::setElementAt));
    EXPECT_TRUE(forwards(CMGetContextEntry, &CMPIContextFT::getEntry));
    EXPECT_TRUE(forwards(CMGetContextEntryAt, &CMPIContextFT::getEntryAt));
    EXPECT_TRUE(forwards(CMGetContextEntryCount, &CMPIContextFT::getEntryCount));
    EXPECT_TRUE(forwards(CMAddContextEntry, &CMPIContextFT::addEntry));
    EXPECT_TRUE(forwards(CMGetNext, &CMPIEnumerationFT::getNext));
    EXPECT_TRUE(forwards(CMHasNext, &CMPIEnumerationFT::hasNext));
    EXPECT_TRUE(forwards(CMToArray, &CMPIEnumerationFT::toArray));
    EXPECT_TRUE(forwards(CMAddArg, &CMPIArgsFT::addArg));
    EXPECT_TRUE(forwards(CMGetArg, &CMPIArgsFT::getArg));
    EXPECT_TRUE(forwards(CMGetArgAt, &CMPIArgsFT::getArgAt));
    EXPECT_TRUE(forwards(CMGetArgCount, &CMPIArgsFT::getArgCount));
    EXPECT_TRUE(forwards(CMGetBinaryFormat, &CMPIDateTimeFT::getBinaryFormat));
    EXPECT_TRUE(forwards(CMGetStringFormat, &CMPIDateTimeFT::getStringFormat));
    EXPECT_TRUE(forwards(CMIsInterval, &CMPIDateTimeFT::isInterval));
}

// A broker whose strings hold the text in their handle, as those of brokers in use do.
CMPIString* newString(const CMPIBroker*, const char* text, CMPIStatus*) {
    static CMPIString string;
    string.hdl = text;
    return &string;
}

std::string s_messageGiven;

CMPIString* getMessage(const CMPIBroker*, const char* id, const char* defText, CMPIStatus*, CMPICount count, ...) {
    s_messageGiven = std::string(id) + "|" + defText + "|" + std::to_string(count);
    va_list arguments;
    va_start(arguments, count);
    for (CMPICount i = 0; i < count; ++i) {
        s_messageGiven += "|";
        switch (va_arg(arguments, int)) {
            case CMPI_sint32:
                s_messageGiven += "sint32 " + std::to_string(va_arg(arguments, long));
                break;
            case CMPI_uint32:
                s_messageGiven += "uint32 " + std::to_string(va_arg(arguments, unsigned long));
                break;
            case CMPI_sint64:
                s_messageGiven += "sint64 " + std::to_string(va_arg(arguments, long long));
                break;
            case CMPI_uint64:
                s_messageGiven += "uint64 " + std::to_string(va_arg(arguments, unsigned long long));
                break;
            case CMPI_real64:
                s_messageGiven += "real64 " + std::to_string(va_arg(arguments, double));
                break;
            case CMPI_boolean:
                s_messageGiven += "boolean " + std::to_string(va_arg(arguments, int));
                break;
            case CMPI_chars:
                s_messageGiven += std::string("chars ") + va_arg(arguments, const char*);
                break;
            case CMPI_string:
                s_messageGiven +=
                    std::string("string ") + static_cast<const char*>(va_arg(arguments, const CMPIString*)->hdl);
                break;
            default:
                s_messageGiven += "?";
        }
    }
    va_end(arguments);
    return nullptr;
}

CMPIString* getMessage2(const CMPIBroker*, const char* id, CMPIMsgFileHandle handle, const char* defText, CMPIStatus*,
                        CMPICount count, ...) {
    s_messageGiven =
        std::string(id) + "|" + static_cast<const char*>(handle) + "|" + defText + "|" + std::to_string(count);
    return nullptr;
}

class CmpiStatusTest : public testing::Test {
  protected:
    CmpiStatusTest() {
        makers.newString = newString;
        makers.getMessage = getMessage;
        makers.getMessage2 = getMessage2;
        services.brokerVersion = 200;
        services.brokerName = "name";
        services.brokerCapabilities = CMPI_MB_BasicWrite;
        broker.bft = &services;
        broker.eft = &makers;
    }

    CMPIBrokerEncFT makers{};
    CMPIBrokerFT services{};
    CMPIBroker broker{};
};

TEST_F(CmpiStatusTest, SetStatusFillsCodeAndMessage) {
    CMPIString text{};
    CMPIStatus status{CMPI_RC_ERROR, &text};

    CMSetStatus(&status, CMPI_RC_ERR_FAILED);
    EXPECT_EQ(status.rc, CMPI_RC_ERR_FAILED);
    EXPECT_EQ(status.msg, nullptr);

    CMSetStatusWithString(&status, CMPI_RC_ERR_NOT_FOUND, &text);
    EXPECT_EQ(status.rc, CMPI_RC_ERR_NOT_FOUND);
    EXPECT_EQ(status.msg, &text);

    CMSetStatusWithChars(&broker, &status, CMPI_RC_ERR_ACCESS_DENIED, "no");
    EXPECT_EQ(status.rc, CMPI_RC_ERR_ACCESS_DENIED);
    ASSERT_NE(status.msg, nullptr);
    EXPECT_STREQ(static_cast<const char*>(status.msg->hdl), "no");
}

TEST_F(CmpiStatusTest, SetStatusIgnoresNullStatusAndDoesWithoutBroker) {
    CMSetStatus(nullptr, CMPI_RC_OK);
    CMSetStatusWithString(nullptr, CMPI_RC_OK, nullptr);
    CMSetStatusWithChars(&broker, nullptr, CMPI_RC_OK, "text");

    CMPIString text{};
    CMPIStatus status{CMPI_RC_OK, &text};
    CMSetStatusWithChars(nullptr, &status, CMPI_RC_ERR_FAILED, "text");
    EXPECT_EQ(status.rc, CMPI_RC_ERR_FAILED);
    EXPECT_EQ(status.msg, nullptr);
}

// The macros must do as a statement of their own anywhere, also before an else.
CMPIStatus returned(const CMPIBroker* broker, CMPIString* text, int form) {
    if (form == 0)
        CMReturn(CMPI_RC_OK);
    else if (form == 1)
        CMReturnWithString(CMPI_RC_ERR_FAILED, text);
    else
        CMReturnWithChars(broker, CMPI_RC_ERR_NOT_FOUND, "gone");
}

TEST_F(CmpiStatusTest, ReturnMacrosReturnTheStatus) {
    CMPIString text{};
    EXPECT_EQ(returned(&broker, &text, 0).rc, CMPI_RC_OK);
    EXPECT_EQ(returned(&broker, &text, 0).msg, nullptr);
    EXPECT_EQ(returned(&broker, &text, 1).rc, CMPI_RC_ERR_FAILED);
    EXPECT_EQ(returned(&broker, &text, 1).msg, &text);
    const CMPIStatus withChars = returned(&broker, &text, 2);
    EXPECT_EQ(withChars.rc, CMPI_RC_ERR_NOT_FOUND);
    EXPECT_STREQ(static_cast<const char*>(withChars.msg->hdl), "gone");
}

TEST_F(CmpiStatusTest, BrokerFieldsAreGiven) {
    EXPECT_EQ(CBBrokerVersion(&broker), 200);
    EXPECT_STREQ(CBBrokerName(&broker), "name");
    EXPECT_EQ(CBGetCapabilities(&broker), 3u);
}

TEST_F(CmpiStatusTest, MessageArgumentsKeepTypeAndValue) {
    CMPIString text{};
    text.hdl = "s";
    CMGetMessage(&broker, "id", "def", nullptr,
                 CMFmtArgs8(CMFmtSint(-5), CMFmtUint(4000000000u), CMFmtSint64(-5000000000LL),
                            CMFmtUint64(18446744073709551615ULL), CMFmtReal(1.5f), CMFmtBoolean(2), CMFmtChars("c"),
                            CMFmtString(&text)));
    EXPECT_EQ(s_messageGiven,
              "id|def|8|sint32 -5|uint32 4000000000|sint64 -5000000000|uint64 18446744073709551615|real64 1.500000|"
              "boolean 1|chars c|string s");

    CMGetMessage(&broker, "id", "def", nullptr, CMFmtArgs0());
    EXPECT_EQ(s_messageGiven, "id|def|0");

    char handle[] = "handle";
    CMGetMessage2(&broker, "id", handle, "def", nullptr, CMFmtArgs1(CMFmtSint(1)));
    EXPECT_EQ(s_messageGiven, "id|handle|def|1");
}

TEST(CmpiDataTest, PredicatesGiveZeroOrOne) {
    CMPIData data{};
    EXPECT_EQ(CMIsNullValue(data), 0);
    EXPECT_EQ(CMIsKeyValue(data), 0);
    EXPECT_EQ(CMIsArray(data), 0);

    data.state = CMPI_nullValue | CMPI_keyValue;
    data.type = CMPI_stringA;
    EXPECT_EQ(CMIsNullValue(data), 1);
    EXPECT_EQ(CMIsKeyValue(data), 1);
    EXPECT_EQ(CMIsArray(data), 1);
}

TEST(CmpiDataTest, NullObjectIsANullPointer) {
    const CMPIString string{};
    EXPECT_EQ(CMIsNullObject(nullptr), 1);
    EXPECT_EQ(CMIsNullObject(&string), 0);
}

TEST(CmpiObjectTest, ReleaseCloneAndCharPtrCallTheTableOfTheObject) {
    CMPIStringFT table{};
    table.release = [](CMPIString*) { return CMPIStatus{CMPI_RC_ERR_INVALID_HANDLE, nullptr}; };
    table.clone = [](const CMPIString*, CMPIStatus* rc) -> CMPIString* {
        rc->rc = CMPI_RC_ERR_FAILED;
        return nullptr;
    };
    table.getCharPtr = [](const CMPIString* string, CMPIStatus* rc) {
        return rc == nullptr ? static_cast<const char*>(string->hdl) : nullptr;
    };
    CMPIString string{"text", &table};
    CMPIStatus status{};

    EXPECT_EQ(CMRelease(&string).rc, CMPI_RC_ERR_INVALID_HANDLE);
    EXPECT_EQ(CMClone(&string, &status), nullptr);
    EXPECT_EQ(status.rc, CMPI_RC_ERR_FAILED);
    EXPECT_STREQ(CMGetCharPtr(&string), "text");
}

// ---- The factory macro ----

constexpr CMPIStatus NOT_SUPPORTED{CMPI_RC_ERR_NOT_SUPPORTED, nullptr};
using Names = const char**;

CMPIStatus SampleCleanup(CMPIInstanceMI*, const CMPIContext*, CMPIBoolean) {
    return NOT_SUPPORTED;
}
CMPIStatus SampleEnumInstanceNames(CMPIInstanceMI*, const CMPIContext*, const CMPIResult*, const CMPIObjectPath*) {
    return NOT_SUPPORTED;
}
CMPIStatus SampleEnumInstances(CMPIInstanceMI*, const CMPIContext*, const CMPIResult*, const CMPIObjectPath*, Names) {
    return NOT_SUPPORTED;
}
CMPIStatus SampleGetInstance(CMPIInstanceMI*, const CMPIContext*, const CMPIResult*, const CMPIObjectPath*, Names) {
    return NOT_SUPPORTED;
}
CMPIStatus SampleCreateInstance(CMPIInstanceMI*, const CMPIContext*, const CMPIResult*, const CMPIObjectPath*,
                                const CMPIInstance*) {
    return NOT_SUPPORTED;
}
CMPIStatus SampleModifyInstance(CMPIInstanceMI*, const CMPIContext*, const CMPIResult*, const CMPIObjectPath*,
                                const CMPIInstance*, Names) {
    return NOT_SUPPORTED;
}
CMPIStatus SampleDeleteInstance(CMPIInstanceMI*, const CMPIContext*, const CMPIResult*, const CMPIObjectPath*) {
    return NOT_SUPPORTED;
}
CMPIStatus SampleExecQuery(CMPIInstanceMI*, const CMPIContext*, const CMPIResult*, const CMPIObjectPath*, const char*,
                           const char*) {
    return NOT_SUPPORTED;
}
CMPIStatus SampleEnumInstancesFiltered(CMPIInstanceMI*, const CMPIContext*, const CMPIResult*, const CMPIObjectPath*,
                                       Names, const char*, const char*, CMPIStatus*) {
    return NOT_SUPPORTED;
}

CMPIrc s_initialisationAnswer;
const CMPIContext* s_initialisationContext;

CMPIStatus SampleInstanceInitialize(CMPIInstanceMI* mi, const CMPIContext* ctx) {
    mi->hdl = "initialised";
    s_initialisationContext = ctx;
    return {s_initialisationAnswer, nullptr};
}

const CMPIBroker* s_keptBroker;

}  // namespace

CMInstanceMIStub(Sample, PlainSample, s_keptBroker, CMNoHook)
    CMInstanceMIStub(Sample, HookedSample, s_keptBroker, CMInitHook(Sample, Instance))

        namespace {
    TEST(CmpiFactoryTest, StubFillsTheTableAndKeepsTheBroker) {
        const CMPIBroker broker{};
        CMPIStatus status{CMPI_RC_ERROR, nullptr};
        const CMPIInstanceMI* mi = PlainSample_Create_InstanceMI(&broker, nullptr, &status);

        ASSERT_NE(mi, nullptr);
        EXPECT_EQ(status.rc, CMPI_RC_OK);
        EXPECT_EQ(s_keptBroker, &broker);
        EXPECT_EQ(mi->ft->ftVersion, 210);
        EXPECT_EQ(mi->ft->miVersion, 210);
        EXPECT_STREQ(mi->ft->miName, "instancePlainSample");
        EXPECT_EQ(mi->ft->cleanup, SampleCleanup);
        EXPECT_EQ(mi->ft->enumerateInstanceNames, SampleEnumInstanceNames);
        EXPECT_EQ(mi->ft->enumerateInstances, SampleEnumInstances);
        EXPECT_EQ(mi->ft->getInstance, SampleGetInstance);
        EXPECT_EQ(mi->ft->createInstance, SampleCreateInstance);
        EXPECT_EQ(mi->ft->modifyInstance, SampleModifyInstance);
        EXPECT_EQ(mi->ft->deleteInstance, SampleDeleteInstance);
        EXPECT_EQ(mi->ft->execQuery, SampleExecQuery);
        EXPECT_EQ(mi->ft->enumerateInstancesFiltered, SampleEnumInstancesFiltered);
        EXPECT_NE(PlainSample_Create_InstanceMI(&broker, nullptr, nullptr), nullptr);
    }

    TEST(CmpiFactoryTest, HookInitialisesTheProviderAndItsFailureIsPassedOut) {
        const CMPIBroker broker{};
        const CMPIContext context{};
        CMPIStatus status{CMPI_RC_ERROR, nullptr};

        s_initialisationAnswer = CMPI_RC_OK;
        const CMPIInstanceMI* mi = HookedSample_Create_InstanceMI(&broker, &context, &status);
        ASSERT_NE(mi, nullptr);
        EXPECT_STREQ(static_cast<const char*>(mi->hdl), "initialised");
        EXPECT_EQ(s_initialisationContext, &context);
        EXPECT_EQ(status.rc, CMPI_RC_OK);

        s_initialisationAnswer = CMPI_RC_ERR_ACCESS_DENIED;
        EXPECT_EQ(HookedSample_Create_InstanceMI(&broker, &context, &status), nullptr);
        EXPECT_EQ(status.rc, CMPI_RC_ERR_ACCESS_DENIED);
        EXPECT_EQ(HookedSample_Create_InstanceMI(&broker, &context, nullptr), nullptr);
    }

}  // namespace
