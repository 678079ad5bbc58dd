#include "BrokerFixture.h"

using broker::Value;
using PathTest = BrokerTest;

TEST_F(PathTest, NamesAreSetAndRead) {
    CMPIObjectPath* path = mb->eft->newObjectPath(mb, "root/a", "Test_A", &status);
    EXPECT_EQ(CMPI_RC_OK, status.rc);
    EXPECT_EQ("root/a", textOf(path->ft->getNameSpace(path, nullptr)));
    EXPECT_EQ("Test_A", textOf(path->ft->getClassName(path, nullptr)));
    EXPECT_EQ("", textOf(path->ft->getHostname(path, nullptr)));
    EXPECT_EQ(CMPI_RC_OK, path->ft->setNameSpace(path, "root/b").rc);
    EXPECT_EQ(CMPI_RC_OK, path->ft->setClassName(path, "Test_B").rc);
    EXPECT_EQ(CMPI_RC_OK, path->ft->setHostname(path, "till7").rc);
    EXPECT_EQ((broker::ObjectPath{"till7", "root/b", "Test_B", {}}), broker::copyOut(path));
    EXPECT_EQ(CMPI_RC_ERR_INVALID_PARAMETER, path->ft->setClassName(path, nullptr).rc);
}

TEST_F(PathTest, KeysAreAddedOrReplacedInOrder) {
    CMPIObjectPath* path = newPath();
    const CMPIValue number = uint32Value(7);
    EXPECT_EQ(CMPI_RC_OK, path->ft->addKey(path, "Id", chars("one"), CMPI_chars).rc);
    EXPECT_EQ(CMPI_RC_OK, path->ft->addKey(path, "Number", &number, CMPI_uint32).rc);
    EXPECT_EQ(CMPI_RC_OK, path->ft->addKey(path, "ID", chars("two"), CMPI_chars).rc);
    EXPECT_EQ(2U, path->ft->getKeyCount(path, nullptr));
    EXPECT_EQ(
        (std::vector<broker::NamedValue>{{"Id", Value::ofText("two", CMPI_chars)}, {"Number", Value::ofUnsigned(7)}}),
        broker::copyOut(path).keys);
}

TEST_F(PathTest, KeysAreReadByNameAndByIndex) {
    CMPIObjectPath* path = newPath();
    path->ft->addKey(path, "Id", chars("one"), CMPI_chars);
    const CMPIData byName = path->ft->getKey(path, "iD", &status);
    EXPECT_EQ(CMPI_RC_OK, status.rc);
    EXPECT_EQ(CMPI_string, byName.type);
    EXPECT_EQ(CMPI_keyValue, byName.state);
    EXPECT_EQ("one", textOf(byName.value.string));
    CMPIString* name = nullptr;
    const CMPIData byIndex = path->ft->getKeyAt(path, 0, &name, nullptr);
    EXPECT_EQ("Id", textOf(name));
    EXPECT_EQ("one", textOf(byIndex.value.string));
}

TEST_F(PathTest, MissingKeysAreNoSuchProperty) {
    CMPIObjectPath* path = newPath();
    path->ft->getKey(path, "None", &status);
    EXPECT_EQ(CMPI_RC_ERR_NO_SUCH_PROPERTY, status.rc);
    status = {};
    path->ft->getKeyAt(path, 0, nullptr, &status);
    EXPECT_EQ(CMPI_RC_ERR_NO_SUCH_PROPERTY, status.rc);
}

TEST_F(PathTest, WhatCannotBeAKeyIsRefused) {
    CMPIObjectPath* path = newPath();
    CMPIValue value{};
    value.array = mb->eft->newArray(mb, 1, CMPI_uint8, nullptr);
    EXPECT_EQ(CMPI_RC_ERR_INVALID_PARAMETER, path->ft->addKey(path, "Null", nullptr, CMPI_string).rc);
    EXPECT_EQ(CMPI_RC_ERR_INVALID_PARAMETER, path->ft->addKey(path, nullptr, chars("a"), CMPI_chars).rc);
    EXPECT_EQ(CMPI_RC_ERR_INVALID_DATA_TYPE, path->ft->addKey(path, "Array", &value, CMPI_uint8A).rc);
    value.inst = newInstance();
    EXPECT_EQ(CMPI_RC_ERR_INVALID_DATA_TYPE, path->ft->addKey(path, "Instance", &value, CMPI_instance).rc);
    EXPECT_EQ(CMPI_RC_ERR_INVALID_DATA_TYPE, path->ft->addKey(path, "Pointer", &value, CMPI_ptr).rc);
    EXPECT_EQ(0U, path->ft->getKeyCount(path, nullptr));
}

TEST_F(PathTest, ReferenceKeysAreCopies) {
    CMPIObjectPath* target = newPath("Test_Target");
    target->ft->addKey(target, "Id", chars("t"), CMPI_chars);
    CMPIValue value{};
    value.ref = target;
    CMPIObjectPath* path = newPath();
    EXPECT_EQ(CMPI_RC_OK, path->ft->addKey(path, "Target", &value, CMPI_ref).rc);
    target->ft->setClassName(target, "Test_Changed");
    const CMPIData data = path->ft->getKey(path, "Target", nullptr);
    EXPECT_EQ("Test_Target", textOf(data.value.ref->ft->getClassName(data.value.ref, nullptr)));
    EXPECT_EQ("root/cimv2:Test_Class.Target=\"root/cimv2:Test_Target.Id=\\\"t\\\"\"",
              textOf(path->ft->toString(path, nullptr)));
}

TEST_F(PathTest, NameSpaceComesFromAnotherPath) {
    CMPIObjectPath* source = mb->eft->newObjectPath(mb, "root/b", "Test_B", nullptr);
    source->ft->setHostname(source, "till7");
    CMPIObjectPath* path = newPath();
    EXPECT_EQ(CMPI_RC_OK, path->ft->setNameSpaceFromObjectPath(path, source).rc);
    EXPECT_EQ((broker::ObjectPath{"", "root/b", "Test_B", {}}), broker::copyOut(path));
    EXPECT_EQ(CMPI_RC_OK, path->ft->setHostAndNameSpaceFromObjectPath(path, source).rc);
    EXPECT_EQ("till7", broker::copyOut(path).host);
    EXPECT_EQ(CMPI_RC_ERR_INVALID_HANDLE, path->ft->setNameSpaceFromObjectPath(path, nullptr).rc);
}

TEST_F(PathTest, ClassPathIsAComparesTheClassAlone) {
    const CMPIObjectPath* path = newPath("Test_A");
    EXPECT_EQ(1, mb->eft->classPathIsA(mb, path, "test_a", &status));
    EXPECT_EQ(0, mb->eft->classPathIsA(mb, path, "Test_B", &status));
    EXPECT_EQ(CMPI_RC_OK, status.rc);
    EXPECT_EQ(0, mb->eft->classPathIsA(mb, nullptr, "Test_A", &status));
    EXPECT_EQ(CMPI_RC_ERR_INVALID_HANDLE, status.rc);
}

TEST_F(PathTest, QualifiersAreNotSupported) {
    const CMPIObjectPath* path = newPath();
    path->ft->getPropertyQualifier(path, "Id", "Key", &status);
    EXPECT_EQ(CMPI_RC_ERR_NOT_SUPPORTED, status.rc);
}

TEST_F(PathTest, CloneIsAnObjectOfItsOwn) {
    CMPIObjectPath* path = newPath();
    path->ft->addKey(path, "Id", chars("one"), CMPI_chars);
    CMPIObjectPath* clone = path->ft->clone(path, &status);
    path->ft->addKey(path, "Id", chars("two"), CMPI_chars);
    EXPECT_EQ("one", broker::copyOut(clone).findKey("Id")->text);
    EXPECT_EQ(CMPI_RC_OK, clone->ft->release(clone).rc);
}

TEST_F(PathTest, GivenPathKeepsTheTypesOfItsKeys) {
    const broker::ObjectPath model{
        "", "root/cimv2", "Test_Class", {{"Chars", Value::ofText("c", CMPI_chars)}, {"String", Value::ofText("s")}}};
    const CMPIObjectPath* path = request.makePath(model);
    const CMPIData asChars = path->ft->getKey(path, "Chars", nullptr);
    EXPECT_EQ(CMPI_chars, asChars.type);
    EXPECT_STREQ("c", asChars.value.chars);
    const CMPIData asString = path->ft->getKey(path, "String", nullptr);
    EXPECT_EQ(CMPI_string, asString.type);
    EXPECT_EQ("s", textOf(asString.value.string));
    EXPECT_EQ(model, broker::copyOut(path));
}
