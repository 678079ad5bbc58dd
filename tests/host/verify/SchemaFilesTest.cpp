#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Scenarios.h"
#include "TemporaryDirectory.h"
#include "broker/Model.h"
#include "mof/MofReader.h"
#include "verify/SchemaError.h"
#include "verify/SchemaFiles.h"

namespace {

using host::readSchema;
using testing::HasSubstr;

constexpr const char* QUALIFIERS = SCHEMA "/qualifiers.mof";
constexpr const char* CLASSES = SCHEMA "/tqs.mof";

std::string usageComplaint(const std::string& file) {
    try {
        readSchema({file});
    } catch (const host::SchemaError& error) {
        return error.what();
    }
    return "";
}

std::vector<std::string> keysOf(const mof::Schema& schema, const std::string& className) {
    std::vector<std::string> keys;
    for (const mof::Member& member : schema.membersOf(*schema.findClass(className))) {
        if (member.isKey) keys.push_back(member.name);
    }
    return keys;
}

TEST(SchemaFilesTest, EachFileUsesWhatThoseBeforeItDeclare) {
    const TemporaryDirectory directory;
    const std::string base = directory.write("base.mof", "class Base {};");
    const std::string derived = directory.write("derived.mof", "class Derived : Base {};");
    EXPECT_EQ(readSchema({base, derived}).classes().size(), 2U);
    EXPECT_THROW(readSchema({derived, base}), mof::MofError);
}

TEST(SchemaFilesTest, UnreadableFileIsWrongUsage) {
    const TemporaryDirectory directory;
    EXPECT_EQ(usageComplaint(directory.path("none.mof")),
              "the schema file " + directory.path("none.mof") + " cannot be read (No such file or directory)");
    EXPECT_THAT(usageComplaint(std::filesystem::temp_directory_path()), HasSubstr("cannot be read (Is a directory)"));
}

TEST(SchemaFilesTest, EndlessFileIsRefused) {
    EXPECT_EQ(usageComplaint("/dev/zero"), "the schema file /dev/zero is larger than 16 MiB");
}

TEST(SchemaFilesTest, LastLineNeedsNoLineFeed) {
    const TemporaryDirectory directory;
    const std::string text = "class A {};" + std::string(8192, ' ') + "class B {};";
    EXPECT_EQ(readSchema({directory.write("a.mof", text)}).classes().size(), 2U);
}

TEST(ShippedSchemaTest, ClassesStandAloneWithNameAsTheOnlyKey) {
    const mof::Schema schema = readSchema({CLASSES});
    ASSERT_EQ(schema.classes().size(), 2U);
    for (const mof::Class& declaration : schema.classes()) {
        EXPECT_EQ(declaration.superclass, "");
        EXPECT_TRUE(declaration.methods.empty());
        EXPECT_EQ(keysOf(schema, declaration.name), std::vector<std::string>{"Name"});
    }
    EXPECT_EQ(schema.findClass("TQS_NumericSensor")->properties.size(), 26U);
    EXPECT_EQ(schema.findClass("TQS_SystemEventLog")->properties.size(), 12U);
}

TEST(ShippedSchemaTest, EveryQualifierUsedIsDeclaredAndEveryDeclaredOneUsed) {
    const mof::Schema schema = readSchema({QUALIFIERS, CLASSES});
    mof::Names used;
    const auto note = [&](const std::vector<mof::Qualifier>& qualifiers) {
        for (const mof::Qualifier& each : qualifiers) {
            used.insert(each.name);
            EXPECT_NE(schema.findQualifier(each.name), nullptr) << each.name;
        }
    };
    for (const mof::Class& declaration : schema.classes()) {
        note(declaration.qualifiers);
        for (const mof::Property& property : declaration.properties) note(property.qualifiers);
    }
    EXPECT_EQ(used.size(), schema.qualifierCount());
}

TEST(ShippedSchemaTest, EveryPropertyIsReadableAndDescribed) {
    const mof::Schema schema = readSchema({CLASSES});
    for (const mof::Class& declaration : schema.classes()) {
        for (const mof::Property& property : declaration.properties) {
            EXPECT_TRUE(mof::isSet(property.qualifiers, "Read")) << property.name;
            const mof::Qualifier* description = mof::findQualifier(property.qualifiers, "Description");
            EXPECT_TRUE(description != nullptr && !description->value.value().text.empty()) << property.name;
        }
    }
}

TEST(ShippedSchemaTest, EveryValueHasItsName) {
    unsigned maps = 0;
    const mof::Schema schema = readSchema({CLASSES});
    for (const mof::Class& declaration : schema.classes()) {
        for (const mof::Property& property : declaration.properties) {
            const mof::Qualifier* map = mof::findQualifier(property.qualifiers, "ValueMap");
            if (map == nullptr) continue;
            ++maps;
            const mof::Qualifier* values = mof::findQualifier(property.qualifiers, "Values");
            ASSERT_NE(values, nullptr) << property.name;
            EXPECT_EQ(map->value.value().elements.size(), values->value.value().elements.size()) << property.name;
        }
    }
    EXPECT_EQ(maps, 3U);  // BaseUnits, RateUnits and SensorType
}

}  // namespace
