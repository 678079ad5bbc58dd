#include <gtest/gtest.h>

#include "broker/Model.h"

using broker::Value;

TEST(ModelTest, KeysAndPropertiesAreFoundByName) {
    broker::Instance instance;
    instance.path.keys = {{"Name", Value::ofText("a")}};
    instance.properties = {{"Count", Value::ofUnsigned(3)}};
    ASSERT_NE(nullptr, instance.path.findKey("NAME"));
    EXPECT_EQ("a", instance.path.findKey("NAME")->text);
    EXPECT_EQ(nullptr, instance.path.findKey("Count"));
    ASSERT_NE(nullptr, instance.findProperty("count"));
    EXPECT_EQ(nullptr, instance.findProperty("Name"));
}

TEST(ModelTest, ValuesCompareByTypeAndContent) {
    EXPECT_EQ(Value::ofSigned(-1), Value::ofSigned(-1));
    EXPECT_NE(Value::ofSigned(-1), Value::ofSigned(-2));
    EXPECT_NE(Value::ofText("a"), Value::ofText("a", CMPI_chars));
    EXPECT_NE(Value::null(CMPI_uint32), Value::ofUnsigned(0));
    EXPECT_EQ(Value::null(CMPI_uint32), Value::null(CMPI_uint32));
    EXPECT_NE(Value::ofArray({Value::ofBoolean(true)}, CMPI_boolean),
              Value::ofArray({Value::ofBoolean(false)}, CMPI_boolean));
    EXPECT_NE(Value::ofReal(0.5), Value::ofReal(0.25));
}

TEST(ModelTest, ReferencesCompareByWhatTheyPointTo) {
    Value left = Value::ofText("", CMPI_ref);
    Value right = left;
    left.path = std::make_shared<const broker::ObjectPath>(broker::ObjectPath{"", "ns", "A", {}});
    right.path = std::make_shared<const broker::ObjectPath>(broker::ObjectPath{"", "ns", "A", {}});
    EXPECT_EQ(left, right);
    right.path = std::make_shared<const broker::ObjectPath>(broker::ObjectPath{"", "ns", "B", {}});
    EXPECT_NE(left, right);
}

TEST(ModelTest, KindsOfValuesExcludeArraysAndOneAnother) {
    EXPECT_TRUE(Value::ofSigned(1, CMPI_sint8).isSigned());
    EXPECT_FALSE(Value::ofSigned(1, CMPI_sint8).isUnsigned());
    EXPECT_TRUE(Value::ofUnsigned(1, CMPI_uint64).isUnsigned());
    EXPECT_FALSE(Value::ofUnsigned(1, CMPI_uint64).isSigned());
    EXPECT_FALSE(Value::ofBoolean(true).isUnsigned());
    EXPECT_FALSE(Value::ofUnsigned(1, CMPI_char16).isUnsigned());
    EXPECT_FALSE(Value::ofReal(1).isSigned());
    EXPECT_FALSE(Value::ofText("", CMPI_dateTime).isSigned());
    EXPECT_TRUE(Value::ofText("", CMPI_chars).isText());
    const Value array = Value::ofArray({}, CMPI_uint8);
    EXPECT_TRUE(array.isArray());
    EXPECT_FALSE(array.isUnsigned());
    EXPECT_FALSE(Value::ofArray({}, CMPI_string).isText());
}
