#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "verify/Conformance.h"

namespace {

using broker::Instance;
using broker::ObjectPath;
using broker::Value;
using host::ExpectedClass;
using host::Via;
using testing::ElementsAre;
using testing::IsEmpty;

template <typename Thing>
std::vector<std::string> textsOf(const Thing& thing, const ExpectedClass& expected, Via via = Via::Provider) {
    std::vector<std::string> texts;
    for (const host::Fault& fault : host::faultsOf(thing, expected, via)) texts.push_back(fault.text);
    return texts;
}

ExpectedClass thing() {
    return {"root/cimv2",
            "Thing",
            {{"Name", CMPI_string, true},
             {"Slot", CMPI_uint16, true},
             {"Caption", CMPI_string, false},
             {"Reading", CMPI_sint32, false},
             {"Lines", CMPI_stringA, false}}};
}

ObjectPath goodPath() {
    return {"", "root/cimv2", "Thing", {{"Name", Value::ofText("a")}, {"Slot", Value::ofUnsigned(3, CMPI_uint16)}}};
}

Instance goodInstance() {
    return {goodPath(),
            {{"Name", Value::ofText("a")},
             {"Slot", Value::ofUnsigned(3, CMPI_uint16)},
             {"Reading", Value::ofSigned(-5)},
             {"Lines", Value::ofArray({Value::ofText("x")}, CMPI_string)}}};
}

std::vector<std::string> faultsWithKey(const std::string& name, Value value) {
    ObjectPath path = goodPath();
    for (broker::NamedValue& key : path.keys) {
        if (key.name == name) key.value = std::move(value);
    }
    return textsOf(path, thing());
}

std::vector<std::string> faultsWithProperty(const std::string& name, Value value) {
    Instance instance = goodInstance();
    instance.properties.push_back({name, std::move(value)});
    return textsOf(instance, thing());
}

std::vector<std::string> faultsWithout(const std::string& property) {
    Instance instance = goodInstance();
    auto& all = instance.properties;
    all.erase(std::remove_if(all.begin(), all.end(), [&](const auto& each) { return each.name == property; }),
              all.end());
    return textsOf(instance, thing());
}

TEST(ConformanceTest, WhatIsDeclaredConforms) {
    EXPECT_THAT(textsOf(goodPath(), thing()), IsEmpty());
    EXPECT_THAT(textsOf(goodInstance(), thing()), IsEmpty());
}

TEST(ConformanceTest, PropertyThatIsNotSetConforms) {
    EXPECT_THAT(faultsWithout("Reading"), IsEmpty());
}

TEST(ConformanceTest, CharsConformToString) {
    EXPECT_THAT(faultsWithKey("Name", Value::ofText("a", CMPI_chars)), IsEmpty());
    EXPECT_THAT(faultsWithProperty("Caption", Value::ofText("x", CMPI_chars)), IsEmpty());
}

TEST(ConformanceTest, WrongNamespaceIsAFault) {
    ObjectPath path = goodPath();
    path.nameSpace = "Root/CIMv2";
    EXPECT_THAT(textsOf(path, thing()), IsEmpty());
    for (const char* other : {"", "root/cimv", "root/cimv22"}) {
        path.nameSpace = other;
        EXPECT_THAT(textsOf(path, thing()), ElementsAre("the namespace is not root/cimv2"));
    }
}

TEST(ConformanceTest, WrongClassIsAFault) {
    for (const char* other : {"", "Thin", "thing"}) {
        ObjectPath path = goodPath();
        path.className = other;
        EXPECT_THAT(textsOf(path, thing()), ElementsAre("the class is not Thing"));
    }
}

TEST(ConformanceTest, EachMissingKeyIsAFault) {
    ObjectPath path = goodPath();
    path.keys.pop_back();
    EXPECT_THAT(textsOf(path, thing()), ElementsAre("key Slot is missing"));
    path.keys.clear();
    EXPECT_THAT(textsOf(path, thing()), ElementsAre("key Name is missing", "key Slot is missing"));
}

TEST(ConformanceTest, KeyThatIsNoneInTheSchemaIsAFault) {
    ObjectPath path = goodPath();
    path.keys.push_back({"Caption", Value::ofText("x")});
    path.keys.push_back({"Other\x1b", Value::ofText("x")});
    EXPECT_THAT(textsOf(path, thing()),
                ElementsAre("key Caption is not declared as a key", "key Other\\x1b is not declared as a key"));
}

TEST(ConformanceTest, KeyOfAnotherTypeIsAFault) {
    EXPECT_THAT(faultsWithKey("Name", Value::ofUnsigned(1)), ElementsAre("key Name is uint32, declared as string"));
    EXPECT_THAT(faultsWithKey("Slot", Value::ofUnsigned(3)), ElementsAre("key Slot is uint32, declared as uint16"));
    EXPECT_THAT(faultsWithKey("Name", Value::ofArray({}, CMPI_string)),
                ElementsAre("key Name is string[], declared as string"));
}

TEST(ConformanceTest, NullKeyIsAFault) {
    EXPECT_THAT(faultsWithKey("Name", Value::null(CMPI_string)), ElementsAre("key Name is null"));
}

TEST(ConformanceTest, KeySpelledOtherwiseIsAFault) {
    ObjectPath path = goodPath();
    path.keys[0].name = "name";
    EXPECT_THAT(textsOf(path, thing()), ElementsAre("key name is spelled Name in the schema"));
}

TEST(ConformanceTest, UndeclaredPropertyIsAFault) {
    EXPECT_THAT(faultsWithProperty("Colour", Value::ofText("red")), ElementsAre("property Colour is not declared"));
}

TEST(ConformanceTest, PropertySpelledOtherwiseIsAFault) {
    EXPECT_THAT(faultsWithProperty("caption", Value::ofText("x")),
                ElementsAre("property caption is spelled Caption in the schema"));
}

TEST(ConformanceTest, PropertyOfAnotherTypeIsAFault) {
    Instance instance = goodInstance();
    instance.properties[2].value = Value::ofText("-5");
    EXPECT_THAT(textsOf(instance, thing()), ElementsAre("property Reading is string, declared as sint32"));
    instance.properties[2].value = Value::ofUnsigned(5);
    EXPECT_THAT(textsOf(instance, thing()), ElementsAre("property Reading is uint32, declared as sint32"));
    instance.properties[2].value = Value::ofSigned(5, CMPI_sint64);
    EXPECT_THAT(textsOf(instance, thing()), ElementsAre("property Reading is sint64, declared as sint32"));
}

TEST(ConformanceTest, NullPropertyMustHaveItsTypeToo) {
    EXPECT_THAT(faultsWithProperty("Caption", Value::null(CMPI_string)), IsEmpty());
    EXPECT_THAT(faultsWithProperty("Caption", Value::null(CMPI_null)), IsEmpty());
    EXPECT_THAT(faultsWithProperty("Caption", Value::null(CMPI_uint8)),
                ElementsAre("property Caption is uint8, declared as string"));
}

TEST(ConformanceTest, ArrayForScalarAndScalarForArrayAreFaults) {
    Instance instance = goodInstance();
    instance.properties[2].value = Value::ofArray({Value::ofSigned(1)}, CMPI_sint32);
    instance.properties[3].value = Value::ofText("x");
    EXPECT_THAT(textsOf(instance, thing()), ElementsAre("property Reading is sint32[], declared as sint32",
                                                        "property Lines is string, declared as string[]"));
}

TEST(ConformanceTest, KeyPropertyMustBeSet) {
    EXPECT_THAT(faultsWithout("Name"), ElementsAre("key property Name is not set"));
    Instance instance = goodInstance();
    instance.properties[0].value = Value::null(CMPI_string);
    EXPECT_THAT(textsOf(instance, thing()), ElementsAre("key property Name is not set"));
}

TEST(ConformanceTest, KeyPropertyMustEqualThePathsKey) {
    Instance instance = goodInstance();
    instance.properties[0].value = Value::ofText("b");
    instance.properties[1].value = Value::ofUnsigned(4, CMPI_uint16);
    EXPECT_THAT(textsOf(instance, thing()), ElementsAre("property Name is b, but the path's key is a",
                                                        "property Slot is 4, but the path's key is 3"));
}

TEST(ConformanceTest, InstancesPathIsCheckedToo) {
    Instance instance = goodInstance();
    instance.path.className = "Other";
    EXPECT_THAT(textsOf(instance, thing()), ElementsAre("the class is not Thing"));
}

TEST(ConformanceTest, TextThatXmlCannotCarryIsAFault) {
    EXPECT_THAT(faultsWithProperty("Caption", Value::ofText("a\xff")),
                ElementsAre("property Caption holds text that is not valid UTF-8 or has control characters: a\\xff"));
    Instance instance = goodInstance();
    instance.properties[3].value = Value::ofArray({Value::ofText("x"), Value::ofText("\x07")}, CMPI_string);
    EXPECT_THAT(textsOf(instance, thing()),
                ElementsAre("property Lines holds text that is not valid UTF-8 or has control characters: {x, \\x07}"));
    EXPECT_THAT(faultsWithKey("Name", Value::ofText("\x1b")),
                ElementsAre("key Name holds text that is not valid UTF-8 or has control characters: \\x1b"));
}

TEST(ConformanceTest, ManagerSendsPropertiesWithoutValuesToo) {
    Instance instance = goodInstance();
    instance.properties.push_back({"Caption", Value::null(CMPI_string)});
    EXPECT_THAT(textsOf(instance, thing(), Via::Manager), IsEmpty());
    EXPECT_THAT(textsOf(goodInstance(), thing(), Via::Manager), ElementsAre("property Caption is missing"));
}

TEST(ConformanceTest, KeyWithBlanksAroundItIsAFaultByAManagerOnly) {
    for (const char* name : {" a", "a ", "\ta"}) {
        ObjectPath path = goodPath();
        path.keys.at(0).value = Value::ofText(name);
        EXPECT_THAT(textsOf(path, thing()), IsEmpty());
        EXPECT_THAT(textsOf(path, thing(), Via::Manager), ElementsAre("key Name begins or ends with a blank"));
    }
}

}  // namespace
