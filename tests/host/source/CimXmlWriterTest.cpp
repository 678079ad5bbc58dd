#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <pugixml.hpp>

#include "RecordedExchanges.h"
#include "source/CimXmlWriter.h"

namespace {

using broker::ObjectPath;
using broker::Value;
using testing::HasSubstr;
using testing::Not;

// Each element with its attributes and its text, in the order of the document.
std::vector<std::string> elementsOf(const std::string& xml) {
    struct Lister : pugi::xml_tree_walker {
        std::vector<std::string> lines;
        bool for_each(pugi::xml_node& node) override {
            std::string line = std::to_string(depth()) + ' ' + node.name() + node.value();
            for (const pugi::xml_attribute each : node.attributes()) {
                line += std::string(" ") + each.name() + "='" + each.value() + '\'';
            }
            lines.push_back(line);
            return true;
        }
    };
    pugi::xml_document document;
    const pugi::xml_parse_result result = document.load_buffer(xml.data(), xml.size(), pugi::parse_full);
    EXPECT_TRUE(result) << result.description() << '\n' << xml;
    Lister lister;
    document.traverse(lister);
    return lister.lines;
}

TEST(CimXmlWriterTest, RequestsAreThoseRecordedElementByElement) {
    const std::vector<RecordedRequest> all = allRecordedRequests();
    EXPECT_EQ(all.size(), 56U);
    for (const RecordedRequest& recorded : all) {
        SCOPED_TRACE(recorded.scenario + '/' + recorded.operation);
        const host::CimXmlRequest written = writtenRequest(requestOf(recorded.scenario, recorded.operation));
        EXPECT_EQ(elementsOf(written.body), elementsOf(recorded.body));
        EXPECT_THAT(recorded.head, HasSubstr("\r\nCIMMethod: " + written.method + "\r\n"));
    }
}

ObjectPath pathWithKey(Value value) {
    return {"", "root/cimv2", "Thing", {{"Key", std::move(value)}}};
}

std::string getRequest(Value value) {
    return host::getInstanceXml("1", pathWithKey(std::move(value))).body;
}

TEST(CimXmlWriterTest, KeysKeepTheirKindOfType) {
    EXPECT_THAT(getRequest(Value::ofText("7")), HasSubstr("<KEYVALUE VALUETYPE=\"string\">7</KEYVALUE>"));
    EXPECT_THAT(getRequest(Value::ofUnsigned(7)), HasSubstr("<KEYVALUE VALUETYPE=\"numeric\">7</KEYVALUE>"));
    EXPECT_THAT(getRequest(Value::ofSigned(-7)), HasSubstr("<KEYVALUE VALUETYPE=\"numeric\">-7</KEYVALUE>"));
    EXPECT_THAT(getRequest(Value::ofReal(0.5)), HasSubstr("<KEYVALUE VALUETYPE=\"numeric\">0.5</KEYVALUE>"));
    EXPECT_THAT(getRequest(Value::ofBoolean(true)), HasSubstr("<KEYVALUE VALUETYPE=\"boolean\">TRUE</KEYVALUE>"));
    EXPECT_THAT(getRequest(Value::ofUnsigned(0x20ac, CMPI_char16)),
                HasSubstr("<KEYVALUE VALUETYPE=\"string\">€</KEYVALUE>"));
}

TEST(CimXmlWriterTest, ReferenceInAKeyIsAPath) {
    Value reference = Value::null(CMPI_ref);
    reference.isNull = false;
    reference.path = std::make_shared<const ObjectPath>(pathWithKey(Value::ofText("inner")));
    EXPECT_THAT(getRequest(reference),
                HasSubstr("<KEYBINDING NAME=\"Key\"><VALUE.REFERENCE><LOCALINSTANCEPATH><LOCALNAMESPACEPATH>"
                          "<NAMESPACE NAME=\"root\"/><NAMESPACE NAME=\"cimv2\"/></LOCALNAMESPACEPATH>"
                          "<INSTANCENAME CLASSNAME=\"Thing\"><KEYBINDING NAME=\"Key\">"
                          "<KEYVALUE VALUETYPE=\"string\">inner</KEYVALUE>"));
}

TEST(CimXmlWriterTest, MarkupInTextsIsEscaped) {
    const std::string body = getRequest(Value::ofText("<a b='c' d=\"e\">&amp;]]>\r\n\t"));
    EXPECT_THAT(body, Not(HasSubstr("<a b")));
    EXPECT_THAT(body, HasSubstr("&#13;"));  // a plain one would be read as a line feed
    const std::string xml = host::enumerateInstancesXml("1", {"", "root/a\"b", "C\"<&'>", {}}).body;
    EXPECT_THAT(elementsOf(xml), testing::Contains("5 CLASSNAME NAME='C\"<&'>'"));
    EXPECT_THAT(elementsOf(xml), testing::Contains("5 NAMESPACE NAME='a\"b'"));
}

TEST(CimXmlWriterTest, WhatXmlCannotCarryIsNotSent) {
    for (const std::string& text : {std::string("\x01"), std::string("\xff"), std::string("a\0b", 3)}) {
        EXPECT_THROW(getRequest(Value::ofText(text)), host::UnsendableError) << testing::PrintToString(text);
        EXPECT_THROW(host::enumerateInstancesXml("1", {"", "root/cimv2", text, {}}), host::UnsendableError);
        EXPECT_THROW(host::enumerateInstancesXml("1", {"", text, "Thing", {}}), host::UnsendableError);
        EXPECT_THROW(host::execQueryXml("1", {"", "root/cimv2", "Thing", {}}, text, "WQL"), host::UnsendableError);
    }
    try {
        getRequest(Value::ofText("CPU\x1b"));
        FAIL();
    } catch (const host::UnsendableError& error) {
        EXPECT_STREQ(error.what(), "'CPU\\x1b' cannot be sent: XML has no such characters");
    }
}

std::string propertyXml(const Value& value) {
    const ObjectPath path{"", "root/cimv2", "Thing", {}};
    const std::string body = host::createInstanceXml("1", path, {path, {{"P", value}}}).body;
    const std::size_t begin = body.find("<PROPERTY");
    return body.substr(begin, body.find("</INSTANCE>") - begin);
}

TEST(CimXmlWriterTest, PropertiesHaveTheirTypes) {
    EXPECT_EQ(propertyXml(Value::ofUnsigned(200, CMPI_uint8)),
              "<PROPERTY NAME=\"P\" TYPE=\"uint8\"><VALUE>200</VALUE></PROPERTY>");
    EXPECT_EQ(propertyXml(Value::null(CMPI_sint16)), "<PROPERTY NAME=\"P\" TYPE=\"sint16\"/>");
    EXPECT_EQ(propertyXml(Value::ofText("20261122000000.000000+000", CMPI_dateTime)),
              "<PROPERTY NAME=\"P\" TYPE=\"datetime\"><VALUE>20261122000000.000000+000</VALUE></PROPERTY>");
    EXPECT_EQ(propertyXml(Value::ofArray({Value::ofText("a"), Value::null(CMPI_string)}, CMPI_string)),
              "<PROPERTY.ARRAY NAME=\"P\" TYPE=\"string\"><VALUE.ARRAY><VALUE>a</VALUE><VALUE.NULL/></VALUE.ARRAY>"
              "</PROPERTY.ARRAY>");
    EXPECT_EQ(propertyXml(Value::null(CMPI_ref)), "<PROPERTY.REFERENCE NAME=\"P\"/>");
    EXPECT_THROW(propertyXml(Value::null(CMPI_instance)), host::UnsendableError);
}

}  // namespace
