#include "BrokerFixture.h"

using broker::Value;
using ArrayTest = BrokerTest;

TEST_F(ArrayTest, ElementsAreNullAtFirst) {
    const CMPIArray* array = mb->eft->newArray(mb, 2, CMPI_uint32, &status);
    EXPECT_EQ(CMPI_RC_OK, status.rc);
    EXPECT_EQ(2U, array->ft->getSize(array, nullptr));
    EXPECT_EQ(CMPI_uint32, array->ft->getSimpleType(array, nullptr));
    const CMPIData element = array->ft->getElementAt(array, 1, &status);
    EXPECT_EQ(CMPI_RC_OK, status.rc);
    EXPECT_EQ(CMPI_uint32, element.type);
    EXPECT_EQ(CMPI_nullValue, element.state);
}

TEST_F(ArrayTest, SizeIsFixed) {
    CMPIArray* array = mb->eft->newArray(mb, 1, CMPI_uint32, nullptr);
    const CMPIValue value = uint32Value(5);
    EXPECT_EQ(CMPI_RC_OK, array->ft->setElementAt(array, 0, &value, CMPI_uint32).rc);
    EXPECT_EQ(CMPI_RC_ERR_NO_SUCH_PROPERTY, array->ft->setElementAt(array, 1, &value, CMPI_uint32).rc);
    array->ft->getElementAt(array, 1, &status);
    EXPECT_EQ(CMPI_RC_ERR_NO_SUCH_PROPERTY, status.rc);
    EXPECT_EQ(5U, array->ft->getElementAt(array, 0, nullptr).value.uint32);
    const CMPIArray* empty = mb->eft->newArray(mb, 0, CMPI_uint32, nullptr);
    EXPECT_EQ(0U, empty->ft->getSize(empty, nullptr));
}

TEST_F(ArrayTest, ElementsBecomeNullAgain) {
    CMPIArray* array = mb->eft->newArray(mb, 2, CMPI_uint32, nullptr);
    const CMPIValue value = uint32Value(5);
    for (const CMPICount index : {0U, 1U}) array->ft->setElementAt(array, index, &value, CMPI_uint32);
    EXPECT_EQ(CMPI_RC_OK, array->ft->setElementAt(array, 0, nullptr, CMPI_uint32).rc);
    EXPECT_EQ(CMPI_RC_OK, array->ft->setElementAt(array, 1, &value, CMPI_null).rc);
    for (const CMPICount index : {0U, 1U}) {
        EXPECT_EQ(CMPI_nullValue, array->ft->getElementAt(array, index, nullptr).state) << index;
    }
}

TEST_F(ArrayTest, TextConvertsToTheElementTypeAndNothingElseDoes) {
    CMPIArray* array = mb->eft->newArray(mb, 1, CMPI_string, nullptr);
    EXPECT_EQ(CMPI_RC_OK, array->ft->setElementAt(array, 0, chars("text"), CMPI_chars).rc);
    const CMPIData element = array->ft->getElementAt(array, 0, nullptr);
    EXPECT_EQ(CMPI_string, element.type);
    EXPECT_EQ("text", textOf(element.value.string));
    const CMPIValue number = uint32Value(5);
    EXPECT_EQ(CMPI_RC_ERR_TYPE_MISMATCH, array->ft->setElementAt(array, 0, &number, CMPI_uint32).rc);
    CMPIArray* numbers = mb->eft->newArray(mb, 1, CMPI_uint8, nullptr);
    EXPECT_EQ(CMPI_RC_ERR_TYPE_MISMATCH, numbers->ft->setElementAt(numbers, 0, &number, CMPI_uint32).rc);
}

TEST_F(ArrayTest, ArrayOfCharsReadsAsArrayOfStringsFromAProperty) {
    CMPIArray* array = mb->eft->newArray(mb, 1, CMPI_chars, nullptr);
    array->ft->setElementAt(array, 0, chars("text"), CMPI_chars);
    EXPECT_STREQ("text", array->ft->getElementAt(array, 0, nullptr).value.chars);
    CMPIInstance* instance = newInstance();
    CMPIValue value{};
    value.array = array;
    EXPECT_EQ(CMPI_RC_OK, instance->ft->setProperty(instance, "List", &value, CMPI_charsA).rc);
    const CMPIData list = instance->ft->getProperty(instance, "List", nullptr);
    EXPECT_EQ(CMPI_stringA, list.type);
    EXPECT_EQ(CMPI_string, list.value.array->ft->getSimpleType(list.value.array, nullptr));
    EXPECT_EQ("text", textOf(list.value.array->ft->getElementAt(list.value.array, 0, nullptr).value.string));
}

TEST_F(ArrayTest, ArrayOfStringsSetAsCharsHoldsChars) {
    CMPIArray* array = mb->eft->newArray(mb, 1, CMPI_string, nullptr);
    array->ft->setElementAt(array, 0, chars("text"), CMPI_chars);
    CMPIInstance* instance = newInstance();
    CMPIValue value{};
    value.array = array;
    instance->ft->setProperty(instance, "List", &value, CMPI_charsA);
    EXPECT_EQ(Value::ofArray({Value::ofText("text", CMPI_chars)}, CMPI_chars),
              *broker::copyOut(instance).findProperty("List"));
}

TEST_F(ArrayTest, ArraysOfArraysDoNotExist) {
    EXPECT_EQ(nullptr, mb->eft->newArray(mb, 1, CMPI_uint8A, &status));
    EXPECT_EQ(CMPI_RC_ERR_INVALID_DATA_TYPE, status.rc);
}

TEST_F(ArrayTest, CloneIsAnArrayOfItsOwn) {
    CMPIArray* array = mb->eft->newArray(mb, 1, CMPI_uint32, nullptr);
    CMPIArray* clone = array->ft->clone(array, nullptr);
    const CMPIValue value = uint32Value(5);
    array->ft->setElementAt(array, 0, &value, CMPI_uint32);
    EXPECT_EQ(CMPI_nullValue, clone->ft->getElementAt(clone, 0, nullptr).state);
    EXPECT_EQ(CMPI_RC_OK, clone->ft->release(clone).rc);
}
