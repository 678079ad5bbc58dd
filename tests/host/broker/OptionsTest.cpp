#include "BrokerFixture.h"

using broker::Broker;
using broker::BrokerOptions;
using broker::Request;
using broker::Value;

namespace {

CMPIObjectPath* newPath(const CMPIBroker* mb) {
    return mb->eft->newObjectPath(mb, "root/cimv2", "Test_Class", nullptr);
}

}  // namespace

TEST(OptionsTest, VersionsAndNameAreAnnounced) {
    BrokerOptions options;
    options.name = "old";
    options.brokerVersion = 0;
    options.tableVersion = 1;
    Broker broker(options);
    const Request request(broker);
    const CMPIBroker* mb = broker.handle();
    EXPECT_STREQ("old", mb->bft->brokerName);
    EXPECT_EQ(0, mb->bft->brokerVersion);
    EXPECT_EQ(1, mb->eft->ftVersion);
    EXPECT_EQ(1, mb->xft->ftVersion);
    const CMPIObjectPath* path = newPath(mb);
    EXPECT_EQ(1, path->ft->ftVersion);
    EXPECT_EQ(1, path->ft->getClassName(path, nullptr)->ft->ftVersion);
    EXPECT_EQ(1, mb->eft->newInstance(mb, path, nullptr)->ft->ftVersion);
    EXPECT_EQ(1, request.context()->ft->ftVersion);
    EXPECT_EQ(1, request.result()->ft->ftVersion);
}

TEST(OptionsTest, Level200IsOfferedUnlessTurnedOff) {
    Broker full;
    EXPECT_EQ(200, full.handle()->bft->brokerVersion);
    EXPECT_NE(nullptr, full.handle()->eft->newCMPIError);
    EXPECT_NE(nullptr, full.handle()->eft->getMessage2);
    BrokerOptions options;
    options.hasLevel200Slots = false;
    Broker reduced(options);
    const Request request(reduced);
    const CMPIBroker* mb = reduced.handle();
    EXPECT_EQ(nullptr, mb->eft->newCMPIError);
    EXPECT_EQ(nullptr, mb->eft->openMessageFile);
    EXPECT_EQ(nullptr, mb->eft->closeMessageFile);
    EXPECT_EQ(nullptr, mb->eft->getMessage2);
    EXPECT_EQ(nullptr, request.result()->ft->returnError);
    EXPECT_EQ(nullptr, mb->eft->newInstance(mb, newPath(mb), nullptr)->ft->setPropertyWithOrigin);
}

TEST(OptionsTest, NotFoundCodeIsTheChosenOne) {
    BrokerOptions options;
    options.notFound = CMPI_RC_ERR_NOT_FOUND;
    Broker broker(options);
    const Request request(broker);
    const CMPIObjectPath* path = newPath(broker.handle());
    CMPIStatus status{};
    path->ft->getKey(path, "None", &status);
    EXPECT_EQ(CMPI_RC_ERR_NOT_FOUND, status.rc);
}

TEST(OptionsTest, StrictArraysTakeTheirTypeAlone) {
    BrokerOptions options;
    options.strictElementTypes = true;
    Broker broker(options);
    const Request request(broker);
    const CMPIBroker* mb = broker.handle();
    CMPIArray* array = mb->eft->newArray(mb, 1, CMPI_string, nullptr);
    EXPECT_EQ(CMPI_RC_ERR_TYPE_MISMATCH, array->ft->setElementAt(array, 0, chars("text"), CMPI_chars).rc);
    CMPIValue value{};
    value.string = mb->eft->newString(mb, "text", nullptr);
    EXPECT_EQ(CMPI_RC_OK, array->ft->setElementAt(array, 0, &value, CMPI_string).rc);
    CMPIInstance* instance = mb->eft->newInstance(mb, newPath(mb), nullptr);
    value.array = array;
    EXPECT_EQ(CMPI_RC_ERR_TYPE_MISMATCH, instance->ft->setProperty(instance, "List", &value, CMPI_charsA).rc);
}

TEST(OptionsTest, NullElementsCanBeRefused) {
    BrokerOptions options;
    options.refusesNullElements = true;
    Broker broker(options);
    const Request request(broker);
    CMPIArray* array = broker.handle()->eft->newArray(broker.handle(), 1, CMPI_string, nullptr);
    EXPECT_EQ(CMPI_RC_ERR_INVALID_PARAMETER, array->ft->setElementAt(array, 0, nullptr, CMPI_string).rc);
}

TEST(OptionsTest, IntegerKeysCanComeBackAsSint64) {
    BrokerOptions options;
    options.integerKeysAsSint64 = true;
    Broker broker(options);
    Request request(broker);
    CMPIObjectPath* path = newPath(broker.handle());
    const CMPIValue number = uint32Value(0xFFFFFFFF);
    path->ft->addKey(path, "Number", &number, CMPI_uint32);
    path->ft->addKey(path, "Text", chars("t"), CMPI_chars);
    const CMPIData key = path->ft->getKey(path, "Number", nullptr);
    EXPECT_EQ(CMPI_sint64, key.type);
    EXPECT_EQ(0xFFFFFFFF, key.value.sint64);
    EXPECT_EQ(CMPI_string, path->ft->getKey(path, "Text", nullptr).type);
    EXPECT_EQ(Value::ofUnsigned(0xFFFFFFFF), *broker::copyOut(path).findKey("Number"));
    CMPIValue negative{};
    negative.sint8 = -3;
    path->ft->addKey(path, "Negative", &negative, CMPI_sint8);
    EXPECT_EQ(-3, path->ft->getKey(path, "Negative", nullptr).value.sint64);
    const CMPIObjectPath* given = request.makePath({"", "", "Test_Class", {{"Number", Value::ofUnsigned(1)}}});
    EXPECT_EQ(CMPI_uint32, given->ft->getKey(given, "Number", nullptr).type);
}

TEST(OptionsTest, CharsCanStayChars) {
    BrokerOptions options;
    options.charsStayChars = true;
    Broker broker(options);
    const Request request(broker);
    CMPIObjectPath* path = newPath(broker.handle());
    path->ft->addKey(path, "Text", chars("t"), CMPI_chars);
    const CMPIData key = path->ft->getKey(path, "Text", nullptr);
    EXPECT_EQ(CMPI_chars, key.type);
    EXPECT_STREQ("t", key.value.chars);
}
