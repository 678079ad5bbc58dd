#include "BrokerFixture.h"

using broker::Value;

namespace {

class InstanceTest : public BrokerTest {
  protected:
    // Sets a value and answers what the property holds and hands out.
    CMPIData roundTrip(const CMPIValue* given, CMPIType type) {
        EXPECT_EQ(CMPI_RC_OK, instance->ft->setProperty(instance, "P", given, type).rc);
        return instance->ft->getProperty(instance, "p", &status);
    }
    Value stored() const { return *broker::copyOut(instance).findProperty("P"); }

    CMPIInstance* instance = newInstance();
    CMPIValue value = CMPIValue();  // all of it zero; {} would zero the first member alone
};

}  // namespace

TEST_F(InstanceTest, UnsignedNumbersKeepTheirValue) {
    value.uint8 = 0xFF;
    EXPECT_EQ(0xFF, roundTrip(&value, CMPI_uint8).value.uint8);
    value.uint16 = 0xFFFF;
    EXPECT_EQ(0xFFFF, roundTrip(&value, CMPI_uint16).value.uint16);
    value.uint32 = 0xFFFFFFFF;
    EXPECT_EQ(0xFFFFFFFF, roundTrip(&value, CMPI_uint32).value.uint32);
    EXPECT_EQ(Value::ofUnsigned(0xFFFFFFFF), stored());
    value.uint64 = 0xFFFFFFFFFFFFFFFF;
    EXPECT_EQ(0xFFFFFFFFFFFFFFFF, roundTrip(&value, CMPI_uint64).value.uint64);
    value.char16 = 0xFFFE;
    EXPECT_EQ(0xFFFE, roundTrip(&value, CMPI_char16).value.char16);
}

TEST_F(InstanceTest, SignedNumbersKeepTheirValue) {
    value.sint8 = -128;
    EXPECT_EQ(-128, roundTrip(&value, CMPI_sint8).value.sint8);
    value.sint16 = -32768;
    EXPECT_EQ(-32768, roundTrip(&value, CMPI_sint16).value.sint16);
    value.sint32 = -5;
    EXPECT_EQ(-5, roundTrip(&value, CMPI_sint32).value.sint32);
    EXPECT_EQ(Value::ofSigned(-5), stored());
    value.sint64 = INT64_MIN;
    EXPECT_EQ(INT64_MIN, roundTrip(&value, CMPI_sint64).value.sint64);
}

TEST_F(InstanceTest, RealsAndBooleansKeepTheirValue) {
    value.real32 = 0.5F;
    EXPECT_EQ(0.5F, roundTrip(&value, CMPI_real32).value.real32);
    value.real64 = 0.1;
    EXPECT_EQ(0.1, roundTrip(&value, CMPI_real64).value.real64);
    value.boolean = 1;
    EXPECT_EQ(1, roundTrip(&value, CMPI_boolean).value.boolean);
    EXPECT_EQ(Value::ofBoolean(true), stored());
}

TEST_F(InstanceTest, CharsAreTheCharactersThemselvesAndReadAsString) {
    char text[] = "text";
    const CMPIData data = roundTrip(chars(text), CMPI_chars);
    text[0] = 'T';
    EXPECT_EQ(CMPI_string, data.type);
    EXPECT_EQ(CMPI_goodValue, data.state);
    EXPECT_EQ("text", textOf(data.value.string));
    EXPECT_EQ(Value::ofText("text", CMPI_chars), stored());
}

TEST_F(InstanceTest, StringsAreCopied) {
    value = stringValue("text");
    EXPECT_NE(value.string, roundTrip(&value, CMPI_string).value.string);
    EXPECT_EQ(Value::ofText("text"), stored());
}

TEST_F(InstanceTest, DatesEmbeddedInstancesAndReferencesAreCopied) {
    value.dateTime = mb->eft->newDateTimeFromBinary(mb, 0, 0, nullptr);
    EXPECT_EQ(CMPI_dateTime, roundTrip(&value, CMPI_dateTime).type);
    EXPECT_EQ(Value::ofText("19700101000000.000000+000", CMPI_dateTime), stored());
    CMPIInstance* inner = newInstance();
    inner->ft->setProperty(inner, "Inner", chars("x"), CMPI_chars);
    value.inst = inner;
    EXPECT_EQ(broker::copyOut(inner), broker::copyOut(roundTrip(&value, CMPI_instance).value.inst));
    value.ref = newPath("Test_Other");
    EXPECT_EQ("Test_Other", broker::copyOut(roundTrip(&value, CMPI_ref).value.ref).className);
}

TEST_F(InstanceTest, ArraysAreCopied) {
    CMPIArray* array = mb->eft->newArray(mb, 2, CMPI_uint32, nullptr);
    const CMPIValue seven = uint32Value(7);
    array->ft->setElementAt(array, 0, &seven, CMPI_uint32);
    value.array = array;
    const CMPIData data = roundTrip(&value, CMPI_uint32A);
    EXPECT_EQ(CMPI_uint32A, data.type);
    EXPECT_NE(array, data.value.array);
    EXPECT_EQ(7U, data.value.array->ft->getElementAt(data.value.array, 0, nullptr).value.uint32);
    EXPECT_EQ(Value::ofArray({Value::ofUnsigned(7), Value::null(CMPI_uint32)}, CMPI_uint32), stored());
    EXPECT_EQ(CMPI_RC_ERR_TYPE_MISMATCH, instance->ft->setProperty(instance, "P", &value, CMPI_uint8A).rc);
}

TEST_F(InstanceTest, NullKeepsItsType) {
    const CMPIData data = roundTrip(nullptr, CMPI_uint16);
    EXPECT_EQ(CMPI_RC_OK, status.rc);
    EXPECT_EQ(CMPI_uint16, data.type);
    EXPECT_EQ(CMPI_nullValue, data.state);
    EXPECT_EQ(Value::null(CMPI_uint16), stored());
    EXPECT_EQ(CMPI_nullValue, roundTrip(&value, CMPI_string).state);
}

TEST_F(InstanceTest, TypesThatCimLacksAreRefused) {
    for (const CMPIType type : {CMPI_null, CMPI_args, CMPI_ptr, CMPI_charsptr}) {
        EXPECT_EQ(CMPI_RC_ERR_INVALID_DATA_TYPE, instance->ft->setProperty(instance, "P", &value, type).rc) << type;
    }
    EXPECT_EQ(CMPI_RC_ERR_INVALID_PARAMETER, instance->ft->setProperty(instance, nullptr, nullptr, CMPI_uint8).rc);
}

TEST_F(InstanceTest, ObjectsOfAnotherBrokerAreRefused) {
    broker::Broker other;
    const broker::Request otherRequest(other);
    value.string = other.handle()->eft->newString(other.handle(), "foreign", nullptr);
    EXPECT_EQ(CMPI_RC_ERR_INVALID_HANDLE, instance->ft->setProperty(instance, "P", &value, CMPI_string).rc);
}

TEST_F(InstanceTest, PropertiesAreSetOnceAndReplaced) {
    EXPECT_EQ(0U, instance->ft->getPropertyCount(instance, nullptr));
    instance->ft->setProperty(instance, "First", chars("a"), CMPI_chars);
    instance->ft->setPropertyWithOrigin(instance, "Second", chars("b"), CMPI_chars, "Test_Base");
    instance->ft->setProperty(instance, "FIRST", chars("c"), CMPI_chars);
    ASSERT_EQ(2U, instance->ft->getPropertyCount(instance, nullptr));
    CMPIString* name = nullptr;
    EXPECT_EQ("c", textOf(instance->ft->getPropertyAt(instance, 0, &name, nullptr).value.string));
    EXPECT_EQ("First", textOf(name));
    EXPECT_EQ("b", textOf(instance->ft->getPropertyAt(instance, 1, nullptr, nullptr).value.string));
    instance->ft->getPropertyAt(instance, 2, nullptr, &status);
    EXPECT_EQ(CMPI_RC_ERR_NO_SUCH_PROPERTY, status.rc);
    instance->ft->getProperty(instance, "Third", &status);
    EXPECT_EQ(CMPI_RC_ERR_NO_SUCH_PROPERTY, status.rc);
}

TEST_F(InstanceTest, ObjectPathIsACopyOfItsOwn) {
    CMPIObjectPath* path = newPath("Test_Other");
    path->ft->addKey(path, "Id", chars("one"), CMPI_chars);
    EXPECT_EQ(CMPI_RC_OK, instance->ft->setObjectPath(instance, path).rc);
    CMPIObjectPath* handedOut = instance->ft->getObjectPath(instance, nullptr);
    EXPECT_EQ(broker::copyOut(path), broker::copyOut(handedOut));
    handedOut->ft->setClassName(handedOut, "Test_Changed");
    EXPECT_EQ("Test_Other", broker::copyOut(instance).path.className);
    EXPECT_EQ(CMPI_RC_ERR_INVALID_HANDLE, instance->ft->setObjectPath(instance, nullptr).rc);
}

TEST_F(InstanceTest, FilterKeepsListedPropertiesAndKeys) {
    CMPIObjectPath* path = newPath();
    path->ft->addKey(path, "PathKey", chars("k"), CMPI_chars);
    instance = mb->eft->newInstance(mb, path, nullptr);
    instance->ft->setProperty(instance, "Early", chars("x"), CMPI_chars);
    const char* properties[] = {"wanted", nullptr};
    const char* keys[] = {"ListedKey", nullptr};
    EXPECT_EQ(CMPI_RC_OK, instance->ft->setPropertyFilter(instance, properties, keys).rc);
    for (const char* name : {"PathKey", "ListedKey", "Wanted", "Unwanted"}) {
        EXPECT_EQ(CMPI_RC_OK, instance->ft->setProperty(instance, name, chars("x"), CMPI_chars).rc);
    }
    std::vector<std::string> names;
    for (const auto& property : broker::copyOut(instance).properties) names.push_back(property.name);
    EXPECT_EQ((std::vector<std::string>{"PathKey", "ListedKey", "Wanted"}), names);
    EXPECT_EQ(CMPI_RC_OK, instance->ft->setPropertyFilter(instance, nullptr, nullptr).rc);
    instance->ft->setProperty(instance, "Unwanted", chars("x"), CMPI_chars);
    EXPECT_EQ(4U, instance->ft->getPropertyCount(instance, nullptr));
}

TEST_F(InstanceTest, InstanceNeedsAPath) {
    EXPECT_EQ(nullptr, mb->eft->newInstance(mb, nullptr, &status));
    EXPECT_EQ(CMPI_RC_ERR_INVALID_HANDLE, status.rc);
}

TEST_F(InstanceTest, GivenInstanceKeepsTheTypesOfItsProperties) {
    broker::Instance model;
    model.properties = {{"Chars", Value::ofText("c", CMPI_chars)}};
    instance = request.makeInstance(model);
    EXPECT_EQ(model, broker::copyOut(instance));
    const CMPIData data = instance->ft->getProperty(instance, "Chars", nullptr);
    EXPECT_EQ(CMPI_chars, data.type);
    EXPECT_STREQ("c", data.value.chars);
}
