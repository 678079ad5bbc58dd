#include "BrokerFixture.h"

using broker::Broker;
using broker::Request;

namespace {

CMPIString* newString(Broker& broker) {
    return broker.handle()->eft->newString(broker.handle(), "text", nullptr);
}

}  // namespace

TEST(OwnershipTest, RequestFreesWhatWasMadeInIt) {
    Broker broker;
    {
        Request request(broker);
        request.makePath({});
        EXPECT_EQ(0U, broker.liveObjects());
        newString(broker);
        newString(broker);
        EXPECT_EQ(2U, broker.liveObjects());
    }
    EXPECT_EQ(0U, broker.liveObjects());
}

TEST(OwnershipTest, InnermostRequestOwns) {
    Broker broker;
    const Request outer(broker);
    newString(broker);
    {
        const Request inner(broker);
        newString(broker);
        EXPECT_EQ(2U, broker.liveObjects());
    }
    EXPECT_EQ(1U, broker.liveObjects());
    newString(broker);
    EXPECT_EQ(2U, broker.liveObjects());
}

TEST(OwnershipTest, RequestsOfTwoBrokersDoNotMix) {
    Broker one;
    Broker two;
    const Request requestOfOne(one);
    {
        const Request requestOfTwo(two);
        newString(one);
        newString(two);
    }
    EXPECT_EQ(1U, one.liveObjects());
    EXPECT_EQ(0U, two.liveObjects());
}

TEST(OwnershipTest, ObjectsOutsideEveryRequestStayWithTheBroker) {
    Broker broker;
    const CMPIString* string = newString(broker);
    { const Request request(broker); }
    EXPECT_EQ(1U, broker.liveObjects());
    EXPECT_EQ("text", textOf(string));
}

TEST(OwnershipTest, ClonesLiveUntilTheyAreReleased) {
    Broker broker;
    CMPIString* clone = nullptr;
    {
        const Request request(broker);
        const CMPIString* string = newString(broker);
        clone = string->ft->clone(string, nullptr);
    }
    EXPECT_EQ(0U, broker.liveObjects());
    EXPECT_EQ(1U, broker.liveClones());
    EXPECT_EQ("text", textOf(clone));
    EXPECT_EQ(CMPI_RC_OK, clone->ft->release(clone).rc);
    EXPECT_EQ(0U, broker.liveClones());
}

TEST(OwnershipTest, OnlyClonesCanBeReleased) {
    Broker broker;
    Request request(broker);
    CMPIString* string = newString(broker);
    EXPECT_EQ(CMPI_RC_ERR_INVALID_HANDLE, string->ft->release(string).rc);
    EXPECT_EQ("text", textOf(string));
    CMPIObjectPath* argument = request.makePath({});
    EXPECT_EQ(CMPI_RC_ERR_INVALID_HANDLE, argument->ft->release(argument).rc);
    EXPECT_EQ(1U, broker.liveObjects());
}

TEST(OwnershipTest, BrokerFreesForgottenClones) {
    // The address sanitizer would report a leak.
    Broker broker;
    const CMPIString* string = newString(broker);
    string->ft->clone(string, nullptr);
    EXPECT_EQ(1U, broker.liveClones());
}

using ServicesTest = BrokerTest;

TEST_F(ServicesTest, TypeOfEachObjectIsNamed) {
    CMPIInstance* instance = newInstance();
    EXPECT_EQ("CMPIInstance", textOf(mb->eft->getType(mb, instance, &status)));
    EXPECT_EQ("CMPIObjectPath", textOf(mb->eft->getType(mb, newPath(), nullptr)));
    EXPECT_EQ("CMPIArgs", textOf(mb->eft->getType(mb, mb->eft->newArgs(mb, nullptr), nullptr)));
    EXPECT_EQ("CMPIArray", textOf(mb->eft->getType(mb, mb->eft->newArray(mb, 0, CMPI_uint8, nullptr), nullptr)));
    EXPECT_EQ("CMPIDateTime", textOf(mb->eft->getType(mb, mb->eft->newDateTime(mb, nullptr), nullptr)));
    EXPECT_EQ("CMPIContext", textOf(mb->eft->getType(mb, request.context(), nullptr)));
    EXPECT_EQ("CMPIResult", textOf(mb->eft->getType(mb, request.result(), nullptr)));
    EXPECT_EQ("CMPIString", textOf(mb->eft->getType(mb, newString(""), nullptr)));
    EXPECT_EQ(1, mb->eft->isOfType(mb, instance, "CMPIInstance", nullptr));
    EXPECT_EQ(0, mb->eft->isOfType(mb, instance, "CMPIArray", &status));
    EXPECT_EQ(CMPI_RC_OK, status.rc);
    EXPECT_EQ(nullptr, mb->eft->getType(mb, nullptr, &status));
    EXPECT_EQ(CMPI_RC_ERR_INVALID_HANDLE, status.rc);
}

TEST_F(ServicesTest, ObjectsAreShownAsText) {
    CMPIObjectPath* path = newPath();
    path->ft->setHostname(path, "till7");
    path->ft->addKey(path, "Text", chars("a\"b"), CMPI_chars);
    const CMPIValue number = uint32Value(7);
    path->ft->addKey(path, "Number", &number, CMPI_uint32);
    EXPECT_EQ("//till7/root/cimv2:Test_Class.Text=\"a\\\"b\",Number=7", textOf(mb->eft->toString(mb, path, nullptr)));
    CMPIInstance* instance = newInstance();
    CMPIValue value{};
    value.boolean = 1;
    instance->ft->setProperty(instance, "Flag", &value, CMPI_boolean);
    value.real64 = 0.5;
    instance->ft->setProperty(instance, "Real", &value, CMPI_real64);
    value.sint32 = -1;
    instance->ft->setProperty(instance, "Signed", &value, CMPI_sint32);
    instance->ft->setProperty(instance, "None", nullptr, CMPI_uint8);
    CMPIArray* array = mb->eft->newArray(mb, 2, CMPI_uint32, nullptr);
    array->ft->setElementAt(array, 1, &number, CMPI_uint32);
    value.array = array;
    instance->ft->setProperty(instance, "List", &value, CMPI_uint32A);
    EXPECT_EQ("instance of Test_Class { Flag = TRUE; Real = 0.5; Signed = -1; None = NULL; List = {NULL, 7}; }",
              textOf(mb->eft->toString(mb, instance, nullptr)));
    EXPECT_EQ("{NULL, 7}", textOf(mb->eft->toString(mb, array, nullptr)));
    EXPECT_EQ("text", textOf(mb->eft->toString(mb, newString("text"), nullptr)));
    EXPECT_EQ("CMPIContext", textOf(mb->eft->toString(mb, request.context(), nullptr)));
}

TEST_F(ServicesTest, MessagesAreFilledIn) {
    EXPECT_EQ(
        "-1 2 -3 4 0.5 true text string $8",
        textOf(CMGetMessage(mb, "id", "$0 $1 $2 $3 $4 $5 $6 $7 $8", &status,
                            CMFmtArgs8(CMFmtSint(-1), CMFmtUint(2), CMFmtSint64(-3), CMFmtUint64(4), CMFmtReal(0.5),
                                       CMFmtBoolean(1), CMFmtChars("text"), CMFmtString(newString("string"))))));
    EXPECT_EQ(CMPI_RC_OK, status.rc);
    EXPECT_EQ("id", textOf(CMGetMessage(mb, "id", nullptr, &status, CMFmtArgs0())));
    EXPECT_EQ("5$", textOf(CMGetMessage2(mb, "id", nullptr, "$0$", &status, CMFmtArgs1(CMFmtUint(5)))));
}

TEST_F(ServicesTest, LoggingAndTracingAreNotSupported) {
    EXPECT_EQ(CMPI_RC_ERR_NOT_SUPPORTED, mb->eft->logMessage(mb, CMPI_SEV_ERROR, "id", "text", nullptr).rc);
    EXPECT_EQ(CMPI_RC_ERR_NOT_SUPPORTED, mb->eft->trace(mb, CMPI_LEV_INFO, "component", "text", nullptr).rc);
}

TEST_F(ServicesTest, OtherUnsupportedServicesSaySo) {
    EXPECT_EQ(nullptr, mb->eft->newSelectExp(mb, "select", "WQL", nullptr, &status));
    EXPECT_EQ(CMPI_RC_ERR_NOT_SUPPORTED, status.rc);
    status = {};
    EXPECT_EQ(nullptr, mb->eft->newCMPIError(mb, "", "", "", ErrorSevUnknown, ErrorProbCauseUnknown, CMPI_RC_ERR_FAILED,
                                             &status));
    EXPECT_EQ(CMPI_RC_ERR_NOT_SUPPORTED, status.rc);
    CMPIMsgFileHandle handle = nullptr;
    EXPECT_EQ(CMPI_RC_ERR_NOT_SUPPORTED, mb->eft->openMessageFile(mb, "file", &handle).rc);
    EXPECT_EQ(CMPI_RC_ERR_NOT_SUPPORTED, mb->eft->closeMessageFile(mb, handle).rc);
    EXPECT_EQ(nullptr, mb->mft);
}

TEST_F(ServicesTest, CallsToOtherProvidersAreNotSupported) {
    const CMPIContext* context = request.context();
    const CMPIObjectPath* path = newPath();
    CMPIInstance* instance = newInstance();
    const auto expectRefused = [this](const void* answer) {
        EXPECT_EQ(nullptr, answer);
        EXPECT_EQ(CMPI_RC_ERR_NOT_SUPPORTED, status.rc);
        status = {};
    };
    expectRefused(mb->bft->enumerateInstanceNames(mb, context, path, &status));
    expectRefused(mb->bft->getInstance(mb, context, path, nullptr, &status));
    expectRefused(mb->bft->createInstance(mb, context, path, instance, &status));
    expectRefused(mb->bft->execQuery(mb, context, path, "", "", &status));
    expectRefused(mb->bft->enumerateInstances(mb, context, path, nullptr, &status));
    expectRefused(mb->bft->associators(mb, context, path, "", "", "", "", nullptr, &status));
    expectRefused(mb->bft->associatorNames(mb, context, path, "", "", "", "", &status));
    expectRefused(mb->bft->references(mb, context, path, "", "", nullptr, &status));
    expectRefused(mb->bft->referenceNames(mb, context, path, "", "", &status));
    mb->bft->invokeMethod(mb, context, path, "Reset", nullptr, nullptr, &status);
    expectRefused(nullptr);
    mb->bft->getProperty(mb, context, path, "P", &status);
    expectRefused(nullptr);
    EXPECT_EQ(CMPI_RC_ERR_NOT_SUPPORTED, mb->bft->setProperty(mb, context, path, "P", nullptr, CMPI_uint8).rc);
    EXPECT_EQ(CMPI_RC_ERR_NOT_SUPPORTED, mb->bft->modifyInstance(mb, context, path, instance, nullptr).rc);
    EXPECT_EQ(CMPI_RC_ERR_NOT_SUPPORTED, mb->bft->deleteInstance(mb, context, path).rc);
    EXPECT_EQ(CMPI_RC_ERR_NOT_SUPPORTED, mb->bft->deliverIndication(mb, context, "ns", instance).rc);
}

TEST_F(ServicesTest, CallsWithoutABrokerAreInvalid) {
    EXPECT_EQ(nullptr, mb->eft->newString(nullptr, "text", &status));
    EXPECT_EQ(CMPI_RC_ERR_INVALID_HANDLE, status.rc);
    EXPECT_EQ(CMPI_RC_ERR_INVALID_HANDLE, mb->bft->deleteInstance(nullptr, nullptr, nullptr).rc);
}
