#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "mof/MofReader.h"

namespace {

using mof::Class;
using mof::Literal;
using mof::Property;
using mof::readMof;
using mof::Schema;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;

Schema read(const std::string& text, Schema before = {}) {
    return readMof(text, "some.mof", std::move(before));
}

std::string complaint(const std::string& text, const Schema& before = {}) {
    try {
        readMof(text, "some.mof", before);
    } catch (const mof::MofError& error) {
        return error.what();
    }
    return "";
}

Class onlyClass(const std::string& text) {
    const Schema schema = read(text);
    return schema.classes().size() == 1 ? schema.classes()[0] : Class();
}

// The value of a property of that type.
Literal valueOf(const std::string& type, const std::string& value) {
    const Class declaration = onlyClass("class A { " + type + " P = " + value + "; };");
    return declaration.properties.at(0).defaultValue.value();
}

Literal arrayValueOf(const std::string& type, const std::string& value) {
    return onlyClass("class A { " + type + " P[] = " + value + "; };").properties.at(0).defaultValue.value();
}

std::string textOf(const std::string& value) {
    return valueOf("string", value).text;
}

std::string valueComplaint(const std::string& type, const std::string& value) {
    return complaint("class A { " + type + " P = " + value + "; };");
}

TEST(MofReaderTest, EmptyTextDeclaresNothing) {
    EXPECT_TRUE(read("").classes().empty());
    EXPECT_TRUE(read(" \t\r\n").classes().empty());
    EXPECT_TRUE(read("\xef\xbb\xbf").classes().empty());
}

TEST(MofReaderTest, Comments) {
    const Class declaration = onlyClass(
        "// class B {};\n/* class C {}; \n** / */ class /**/ A // after\n{ /* \" */ string P; // * /\n};//at the end");
    EXPECT_EQ(declaration.name, "A");
    ASSERT_EQ(declaration.properties.size(), 1U);
    EXPECT_EQ(declaration.properties[0].line, 4U);
    EXPECT_EQ(complaint("\n/* x\n"), "some.mof:2: the comment is not closed, expected */");
    EXPECT_EQ(complaint("/*/"), "some.mof:1: the comment is not closed, expected */");
    EXPECT_EQ(complaint("\n/"), "some.mof:2: \"/\" has no meaning here");
}

TEST(MofReaderTest, PragmasAreSkipped) {
    EXPECT_EQ(onlyClass("#pragma locale (\"en_US\")\n# PRAGMA Namespace(\"root\" \"/cimv2\") class A {};").name, "A");
    EXPECT_EQ(complaint("#pragma locale \"en\""),
              "some.mof:1: expected \"(\" after the pragma's name, found the text \"en\"");
    EXPECT_EQ(complaint("#pragma locale (en)"), "some.mof:1: expected a text in double quotes, found \"en\"");
    EXPECT_EQ(complaint("#pragma locale (\"en\""),
              "some.mof:1: expected \")\" after the pragma's text, found the end of the file");
    EXPECT_EQ(complaint("#pragma (\"en\")"), "some.mof:1: expected the pragma's name, found \"(\"");
    EXPECT_EQ(complaint("#define A"), "some.mof:1: expected pragma after #, found \"define\"");
}

TEST(MofReaderTest, IncludeIsRefused) {
    EXPECT_EQ(complaint("\n#pragma Include (\"x.mof\")"),
              "some.mof:2: #pragma include is not followed, read that file by itself");
}

TEST(MofReaderTest, InstancesAreRefused) {
    EXPECT_EQ(complaint("class A {};\ninstance of A {};"),
              "some.mof:2: an instance declaration, expected classes and qualifiers only");
}

TEST(MofReaderTest, QualifierDeclaration) {
    const Schema schema = read(
        "Qualifier ArrayType : string = \"Bag\", Scope (property, Parameter), Flavor (DisableOverride, ToSubclass);\n"
        "qualifier Values : string[], scope(any);\n"
        "QUALIFIER MaxLen : uint32 = null, SCOPE(property);");
    EXPECT_EQ(schema.qualifierCount(), 3U);
    const mof::QualifierDeclaration* arrayType = schema.findQualifier("arraytype");
    ASSERT_NE(arrayType, nullptr);
    EXPECT_EQ(arrayType->name, "ArrayType");
    EXPECT_EQ(arrayType->type, CMPI_string);
    EXPECT_EQ(arrayType->defaultValue.value().text, "Bag");
    EXPECT_THAT(arrayType->scopes, ElementsAre("Parameter", "property"));
    EXPECT_EQ(arrayType->scopes.count("PARAMETER"), 1U);
    EXPECT_THAT(arrayType->flavors, ElementsAre("DisableOverride", "ToSubclass"));
    EXPECT_EQ(schema.findQualifier("Values")->type, CMPI_stringA);
    EXPECT_FALSE(schema.findQualifier("Values")->defaultValue);
    EXPECT_EQ(schema.findQualifier("MaxLen")->line, 3U);
    EXPECT_EQ(schema.findQualifier("Other"), nullptr);
}

TEST(MofReaderTest, WrongQualifierDeclarations) {
    EXPECT_EQ(complaint("qualifier ;"), "some.mof:1: expected the qualifier's name, found \";\"");
    EXPECT_EQ(complaint("qualifier A string"),
              "some.mof:1: expected \":\" after the qualifier's name, found \"string\"");
    EXPECT_EQ(complaint("qualifier A : text, scope(any);"),
              "some.mof:1: \"text\" is no type, expected a CIM type, or a class and ref");
    EXPECT_EQ(complaint("qualifier A : B ref, scope(any);"), "some.mof:1: a qualifier cannot be a reference");
    EXPECT_EQ(complaint("qualifier A : string;"), "some.mof:1: expected \",\" and the qualifier's scope, found \";\"");
    EXPECT_EQ(complaint("qualifier A : string, flavor(ToSubclass);"), "some.mof:1: expected scope, found \"flavor\"");
    EXPECT_EQ(complaint("qualifier A : string,\n scope(propperty);"),
              "some.mof:2: expected a scope such as property or any, found \"propperty\"");
    EXPECT_EQ(complaint("qualifier A : string, scope(any;"), "some.mof:1: expected \")\" or a comma, found \";\"");
    EXPECT_EQ(complaint("qualifier A : string, scope(any), any;"), "some.mof:1: expected flavor, found \"any\"");
    EXPECT_EQ(complaint("qualifier A : string, scope(any), flavor(Sweet);"),
              "some.mof:1: expected a flavor such as DisableOverride, found \"Sweet\"");
    EXPECT_EQ(complaint("qualifier A : string, scope(any)\nqualifier"),
              "some.mof:2: expected \";\" after the qualifier declaration, found \"qualifier\"");
    EXPECT_EQ(complaint("qualifier A : uint8 = 256, scope(any);"),
              "some.mof:1: the value of A does not fit its type uint8");
    EXPECT_EQ(complaint("qualifier A : string, scope(any);\nqualifier a : string, scope(any);"),
              "some.mof:2: the qualifier a is declared twice");
}

TEST(MofReaderTest, ClassHeader) {
    const Schema schema =
        read("class Base {};\n[Version (\"1\"), Terminal] CLASS Derived As $Alias : base { string P; };");
    ASSERT_EQ(schema.classes().size(), 2U);
    const Class& derived = schema.classes()[1];
    EXPECT_EQ(derived.name, "Derived");
    EXPECT_EQ(derived.alias, "Alias");
    EXPECT_EQ(derived.superclass, "base");
    EXPECT_EQ(derived.line, 2U);
    ASSERT_EQ(derived.qualifiers.size(), 2U);
    EXPECT_EQ(derived.qualifiers[0].value.value().text, "1");
    EXPECT_TRUE(mof::isSet(derived.qualifiers, "terminal"));
    EXPECT_EQ(schema.findClass("DERIVED"), &derived);
    EXPECT_EQ(schema.findClass("Deriv"), nullptr);
}

TEST(MofReaderTest, WrongClassHeaders) {
    EXPECT_EQ(complaint("clas A {};"), "some.mof:1: expected a class or qualifier declaration, found \"clas\"");
    EXPECT_EQ(complaint("[Key] qualifier A"), "some.mof:1: expected class, found \"qualifier\"");
    EXPECT_EQ(complaint("class {};"), "some.mof:1: expected the class's name, found \"{\"");
    EXPECT_EQ(complaint("class A as B {};"), "some.mof:1: expected \"$\" before the alias, found \"B\"");
    EXPECT_EQ(complaint("class A as $ {};"), "some.mof:1: expected the alias, found \"{\"");
    EXPECT_EQ(complaint("class A : {};"), "some.mof:1: expected the superclass's name, found \"{\"");
    EXPECT_EQ(complaint("class A;"), "some.mof:1: expected \"{\" before the class's properties, found \";\"");
    EXPECT_EQ(complaint("class A {}"), "some.mof:1: expected \";\" after the class, found the end of the file");
    EXPECT_EQ(complaint("class A {\n\n"), "some.mof:3: expected a type, found the end of the file");
    EXPECT_EQ(complaint("class A : B {};"), "some.mof:1: the superclass B is not declared before");
    EXPECT_EQ(complaint("class A : A {};"), "some.mof:1: the superclass A is not declared before");
    EXPECT_EQ(complaint("class A {};\nclass a {};"), "some.mof:2: the class a is declared twice");
}

TEST(MofReaderTest, PropertiesOfAllTypes) {
    const Class declaration = onlyClass(
        "class A { boolean a; STRING b; char16 c; uint8 d; sint8 e; uint16 f; sint16 g; uint32 h; sint32 i;"
        " uint64 j; sint64 k; real32 l; real64 m; datetime n; };");
    std::vector<CMPIType> types;
    for (const Property& property : declaration.properties) types.push_back(property.type);
    EXPECT_THAT(types, ElementsAre(CMPI_boolean, CMPI_string, CMPI_char16, CMPI_uint8, CMPI_sint8, CMPI_uint16,
                                   CMPI_sint16, CMPI_uint32, CMPI_sint32, CMPI_uint64, CMPI_sint64, CMPI_real32,
                                   CMPI_real64, CMPI_dateTime));
}

TEST(MofReaderTest, Arrays) {
    const Class declaration = onlyClass("class A { string a[]; uint8 b[0x10] = {1, 2}; };");
    EXPECT_EQ(declaration.properties[0].type, CMPI_stringA);
    EXPECT_FALSE(declaration.properties[0].arraySize);
    EXPECT_EQ(declaration.properties[1].type, CMPI_uint8A);
    EXPECT_EQ(declaration.properties[1].arraySize, 16U);
    for (const char* size : {"0", "-1", "1.5"}) {
        EXPECT_EQ(complaint("class A { string a[" + std::string(size) + "]; };"),
                  "some.mof:1: expected a number of elements, found \"" + std::string(size) + '"');
    }
    EXPECT_EQ(complaint("class A { string a[x]; };"), "some.mof:1: expected \"]\" after the array's size, found \"x\"");
}

TEST(MofReaderTest, References) {
    const Class declaration = onlyClass("[Association] class A { [Key] CIM_Thing REF Thing = \"CIM_Thing.Id=1\"; };");
    EXPECT_EQ(declaration.properties[0].type, CMPI_ref);
    EXPECT_EQ(declaration.properties[0].referencedClass, "CIM_Thing");
    EXPECT_EQ(declaration.properties[0].defaultValue.value().text, "CIM_Thing.Id=1");
    EXPECT_EQ(complaint("class A { B ref C[]; };"),
              "some.mof:1: C is an array of references, which no property can be");
}

TEST(MofReaderTest, WrongProperties) {
    EXPECT_EQ(complaint("class A {\n strng P; };"),
              "some.mof:2: \"strng\" is no type, expected a CIM type, or a class and ref");
    EXPECT_EQ(complaint("class A { string; };"), "some.mof:1: expected a name after the type, found \";\"");
    EXPECT_EQ(complaint("class A { string \"P\"; };"),
              "some.mof:1: expected a name after the type, found the text \"P\"");
    EXPECT_EQ(complaint("class A { string P\n uint8 Q; };"),
              "some.mof:2: expected \";\" after the declaration, found \"uint8\"");
    EXPECT_EQ(complaint("class A { string P;\nuint8 p; };"), "some.mof:2: p is declared twice");
    EXPECT_EQ(complaint("class A { 'x' P; };"), "some.mof:1: expected a type, found the character \"x\"");
}

TEST(MofReaderTest, Methods) {
    const Class declaration = onlyClass(
        "class A { [Description (\"x\")] uint32 Start([In, Out : ToSubclass] string Names[], B ref Which, C ref "
        "All[2]);"
        " boolean Stop(); string Start; };");
    ASSERT_EQ(declaration.methods.size(), 2U);
    const mof::Method& start = declaration.methods[0];
    EXPECT_EQ(start.result.name, "Start");
    EXPECT_EQ(start.result.type, CMPI_uint32);
    EXPECT_EQ(start.result.qualifiers.size(), 1U);
    ASSERT_EQ(start.parameters.size(), 3U);
    EXPECT_EQ(start.parameters[0].type, CMPI_stringA);
    EXPECT_EQ(start.parameters[0].qualifiers.size(), 2U);
    EXPECT_EQ(start.parameters[1].referencedClass, "B");
    EXPECT_EQ(start.parameters[2].type, CMPI_refA);
    EXPECT_TRUE(declaration.methods[1].parameters.empty());
    EXPECT_EQ(declaration.properties.size(), 1U);
}

TEST(MofReaderTest, WrongMethods) {
    EXPECT_EQ(complaint("class A { B ref M(); };"), "some.mof:1: the method M returns a reference");
    EXPECT_EQ(complaint("class A { uint8 M(string a,); };"), "some.mof:1: expected another parameter, found \")\"");
    EXPECT_EQ(complaint("class A { uint8 M(string a; };"), "some.mof:1: expected \")\" or a comma, found \";\"");
    EXPECT_EQ(complaint("class A { uint8 M(string a,\nuint8 A); };"), "some.mof:2: A is declared twice");
    EXPECT_EQ(complaint("class A { uint8 M();\nuint8 m(); };"), "some.mof:2: m is declared twice");
    EXPECT_EQ(complaint("class A { uint8 M(void); };"),
              "some.mof:1: \"void\" is no type, expected a CIM type, or a class and ref");
}

TEST(MofReaderTest, QualifierLists) {
    const Class declaration = onlyClass(
        "class A { [Key, Read (FALSE) : DisableOverride ToSubclass, ValueMap {\"0\", \"1\"}, MaxLen (-1),\n"
        "Null (null)] string P; };");
    const std::vector<mof::Qualifier>& qualifiers = declaration.properties[0].qualifiers;
    ASSERT_EQ(qualifiers.size(), 5U);
    EXPECT_FALSE(qualifiers[0].value);
    EXPECT_TRUE(mof::isSet(qualifiers, "KEY"));
    EXPECT_FALSE(mof::isSet(qualifiers, "Read"));
    EXPECT_FALSE(mof::isSet(qualifiers, "Write"));
    EXPECT_THAT(qualifiers[1].flavors, ElementsAre("DisableOverride", "ToSubclass"));
    EXPECT_EQ(qualifiers[2].value.value().elements.size(), 2U);
    EXPECT_TRUE(qualifiers[3].value.value().isNegative);
    EXPECT_EQ(qualifiers[4].value.value().kind, Literal::Kind::Null);
    EXPECT_EQ(qualifiers[4].line, 2U);
}

TEST(MofReaderTest, WrongQualifierLists) {
    EXPECT_EQ(complaint("[] class A {};"), "some.mof:1: expected a qualifier's name, found \"]\"");
    EXPECT_EQ(complaint("[Key class A {};"),
              "some.mof:1: expected \"]\" or a comma after the qualifier, found \"class\"");
    EXPECT_EQ(complaint("[Key,] class A {};"), "some.mof:1: expected a qualifier's name, found \"]\"");
    EXPECT_EQ(complaint("[Key (true] class A {};"),
              "some.mof:1: expected \")\" after the qualifier's value, found \"]\"");
    EXPECT_EQ(complaint("[Key : ] class A {};"), "some.mof:1: expected a flavor such as DisableOverride, found \"]\"");
    EXPECT_EQ(complaint("[Key : ToSubclass Sweet] class A {};"),
              "some.mof:1: expected a flavor such as DisableOverride, found \"Sweet\"");
    EXPECT_EQ(complaint("[Key,\nkey] class A {};"), "some.mof:2: the qualifier key is given twice");
}

TEST(MofReaderTest, Texts) {
    EXPECT_EQ(textOf("\"a\" /* and */ \"b\"\n\"\" \"c\""), "abc");
    EXPECT_EQ(textOf("\"\\b\\t\\n\\f\\r\\\"\\'\\\\\""), "\b\t\n\f\r\"'\\");
    EXPECT_EQ(textOf("\"\\x41\\XE9\\x20ac1 \\x1\""),
              "A\xc3\xa9\xe2\x82\xac"
              "1 \x01");
    EXPECT_EQ(textOf("\"\xe2\x82\xac // \t /*\""), "\xe2\x82\xac // \t /*");
}

TEST(MofReaderTest, WrongTexts) {
    EXPECT_EQ(complaint("class A { string P =\n\"a; };"),
              "some.mof:2: the text is not closed on its line, expected \"");
    EXPECT_EQ(complaint("class A { string P = \"a\nb\"; };"),
              "some.mof:1: the text is not closed on its line, expected \"");
    EXPECT_THAT(valueComplaint("string", "\"\\q\""), StartsWith("some.mof:1: an unknown escape in the text, expected"));
    EXPECT_THAT(complaint("\"\\"), StartsWith("some.mof:1: an unknown escape"));
    EXPECT_EQ(valueComplaint("string", "\"\\xg\""), "some.mof:1: expected one to four hexadecimal digits after \\x");
    EXPECT_EQ(valueComplaint("string", "\"\\x0000\""), "some.mof:1: the escape \\x names no character");
    EXPECT_EQ(valueComplaint("string", "\"\\xd800\""), "some.mof:1: the escape \\x names no character");
    EXPECT_EQ(valueComplaint("string", "\"\xff\""), "some.mof:1: the text is no UTF-8: \\xff");
    EXPECT_EQ(valueComplaint("string", "\"\x1b\""), "some.mof:1: a control character in the text: \\x1b");
    EXPECT_EQ(valueComplaint("string", std::string("\"\0\"", 3)), "some.mof:1: a control character in the text: \\x00");
}

TEST(MofReaderTest, Integers) {
    const auto number = [](const std::string& type, const std::string& text) {
        const Literal literal = valueOf(type, text);
        return std::make_pair(literal.isNegative, literal.magnitude);
    };
    EXPECT_EQ(number("uint8", "0"), std::make_pair(false, std::uint64_t{0}));
    EXPECT_EQ(number("uint8", "+255"), std::make_pair(false, std::uint64_t{255}));
    EXPECT_EQ(number("sint8", "-128"), std::make_pair(true, std::uint64_t{128}));
    EXPECT_EQ(number("uint16", "0xFf"), std::make_pair(false, std::uint64_t{255}));
    EXPECT_EQ(number("sint16", "-0X10"), std::make_pair(true, std::uint64_t{16}));
    EXPECT_EQ(number("uint32", "017"), std::make_pair(false, std::uint64_t{15}));
    EXPECT_EQ(number("uint32", "0101b"), std::make_pair(false, std::uint64_t{5}));
    EXPECT_EQ(number("sint32", "-1B"), std::make_pair(true, std::uint64_t{1}));
    EXPECT_EQ(number("uint32", "0x1b"), std::make_pair(false, std::uint64_t{27}));
    EXPECT_EQ(number("uint64", "18446744073709551615"), std::make_pair(false, ~std::uint64_t{0}));
    EXPECT_EQ(number("sint64", "-9223372036854775808"), std::make_pair(true, std::uint64_t{1} << 63));
    EXPECT_EQ(number("char16", "65535"), std::make_pair(false, std::uint64_t{65535}));
}

TEST(MofReaderTest, WrongNumbers) {
    for (const char* text :
         {"12abc", "08", "0x", "2b", "0xg", "1.", "1.5.2", "1.5e", "18446744073709551616", "1.0e999"}) {
        EXPECT_EQ(valueComplaint("real64", text),
                  "some.mof:1: \"" + std::string(text) + "\" is no number, or too large a one");
    }
    EXPECT_EQ(valueComplaint("real64", "+"), "some.mof:1: \"+\" has no meaning here");
    EXPECT_EQ(valueComplaint("real64", std::string(100, '9')),
              "some.mof:1: \"" + std::string(40, '9') + "...\" is no number, or too large a one");
}

TEST(MofReaderTest, Reals) {
    EXPECT_EQ(valueOf("real64", "1.5").real, 1.5);
    EXPECT_EQ(valueOf("real32", "-.5e+1").real, -5.0);
    EXPECT_EQ(valueOf("real64", "+25.0E-1").real, 2.5);
    EXPECT_EQ(valueOf("real64", "3").magnitude, 3U);
}

TEST(MofReaderTest, OtherValues) {
    EXPECT_EQ(valueOf("boolean", "TRUE").magnitude, 1U);
    EXPECT_EQ(valueOf("boolean", "false").magnitude, 0U);
    EXPECT_EQ(valueOf("uint8", "NULL").kind, Literal::Kind::Null);
    EXPECT_EQ(valueOf("char16", "'a'").magnitude, 97U);
    EXPECT_EQ(valueOf("char16", "'\\''").magnitude, 39U);
    EXPECT_EQ(valueOf("char16", "'\xe2\x82\xac'").magnitude, 0x20acU);
    EXPECT_EQ(valueOf("datetime", "\"20260401080000.000000+000\"").kind, Literal::Kind::Text);
    EXPECT_TRUE(arrayValueOf("string", "{}").elements.empty());
    EXPECT_EQ(arrayValueOf("string", "{\"a\" \"b\", null}").elements[0].text, "ab");
    EXPECT_EQ(arrayValueOf("string", "null").kind, Literal::Kind::Null);
}

TEST(MofReaderTest, WrongValues) {
    EXPECT_EQ(valueComplaint("boolean", "yes"), "some.mof:1: expected a value, found \"yes\"");
    EXPECT_EQ(valueComplaint("string", ""), "some.mof:1: expected a value, found \";\"");
    EXPECT_EQ(valueComplaint("char16", "''"), "some.mof:1: expected one character between single quotes");
    EXPECT_EQ(valueComplaint("char16", "'ab'"), "some.mof:1: expected one character between single quotes");
    EXPECT_EQ(valueComplaint("char16", "'\xf0\x9f\x98\x80'"),
              "some.mof:1: the character is beyond the 16 bits of a char16");
    EXPECT_EQ(valueComplaint("char16", "'a"), "some.mof:1: the text is not closed on its line, expected '");
    EXPECT_EQ(valueComplaint("string", "{\"a\",}"), "some.mof:1: expected another value, found \"}\"");
    EXPECT_EQ(valueComplaint("string", "{\"a\" 1}"),
              "some.mof:1: expected \"}\" or a comma after the value, found \"1\"");
    EXPECT_EQ(valueComplaint("string", "{{}}"), "some.mof:1: expected a value, found \"{\"");
}

TEST(MofReaderTest, ValuesMustFitTheirTypes) {
    const std::vector<std::pair<std::string, std::string>> wrong{
        {"uint8", "256"},         {"uint8", "-1"},           {"sint8", "128"},
        {"sint8", "-129"},        {"uint16", "65536"},       {"sint16", "32768"},
        {"uint32", "4294967296"}, {"sint32", "-2147483649"}, {"sint64", "9223372036854775808"},
        {"uint64", "-1"},         {"uint8", "1.0"},          {"uint8", "\"1\""},
        {"string", "1"},          {"boolean", "1"},          {"boolean", "\"true\""},
        {"real32", "true"},       {"datetime", "0"},         {"uint8", "'a'"},
        {"string", "{\"a\"}"}};
    for (const auto& [type, value] : wrong) {
        EXPECT_EQ(valueComplaint(type, value), "some.mof:1: the value of P does not fit its type " + type) << value;
    }
    EXPECT_EQ(complaint("class A { uint8 P[] = {1, 256}; };"),
              "some.mof:1: the value of P does not fit its type uint8[]");
    EXPECT_EQ(complaint("class A { uint8 P[] = 1; };"), "some.mof:1: the value of P does not fit its type uint8[]");
}

TEST(MofReaderTest, QualifiersOfEarlierFilesCount) {
    const Schema qualifiers = read(
        "Qualifier Key : boolean = false, Scope (property, reference); Qualifier Note : string, Scope (any);"
        "Qualifier Out : boolean, Scope (parameter); Qualifier Static : boolean, Scope (method);"
        "Qualifier Association : boolean, Scope (association); Qualifier Version : string, Scope (class);");
    EXPECT_EQ(
        complaint("[Note (\"x\"), Version (\"1\")] class A { [Key, Note] string P; [Static] uint8 M([Out] uint8 q); };"
                  "[association, Version (\"1\")] class B { [Key] A ref P; };",
                  qualifiers),
        "");
    EXPECT_EQ(complaint("class A {\n[Kye] string P; };", qualifiers), "some.mof:2: the qualifier Kye is not declared");
    EXPECT_EQ(complaint("class A { [Key (\"yes\")] string P; };", qualifiers),
              "some.mof:1: the value of the qualifier Key does not fit its type boolean");
    EXPECT_THAT(complaint("[Key] class A {};", qualifiers),
                EndsWith("the qualifier Key is outside its scope at a declaration of kind class"));
    EXPECT_THAT(complaint("class A { [Out] string P; };", qualifiers), EndsWith("of kind property"));
    EXPECT_THAT(complaint("class A { [Static] A ref P; };", qualifiers), EndsWith("of kind reference"));
    EXPECT_THAT(complaint("class A { [Key] uint8 M(); };", qualifiers), EndsWith("of kind method"));
    EXPECT_THAT(complaint("class A { uint8 M([Key] uint8 P); };", qualifiers), EndsWith("of kind parameter"));
    EXPECT_EQ(complaint("class A { [Kye] string P; };"), "") << "nothing is declared that it could be compared with";
}

TEST(MofReaderTest, MembersIncludeInheritedOnes) {
    const Schema schema = read(
        "class A { [Key] string Id; uint8 Old; }; class B : A { string ID; uint16 More; }; class C : B { real32 Last; "
        "};");
    std::vector<std::string> seen;
    for (const mof::Member& member : schema.membersOf(*schema.findClass("C"))) {
        seen.push_back(member.name + (member.isKey ? "*" : "") + std::to_string(member.type));
    }
    const auto type = [](CMPIType each) { return std::to_string(each); };
    EXPECT_THAT(seen, ElementsAre("ID*" + type(CMPI_string), "Old" + type(CMPI_uint8), "More" + type(CMPI_uint16),
                                  "Last" + type(CMPI_real32)));
}

TEST(MofReaderTest, ErrorsAreOnePrintableLine) {
    EXPECT_EQ(complaint("\n\n\x1b[2J"), "some.mof:3: \"\\x1b\" has no meaning here");
    EXPECT_EQ(complaint("\xc3\xa9"), "some.mof:1: \"\xc3\xa9\" has no meaning here");
    EXPECT_EQ(complaint(std::string(1, '\0')), "some.mof:1: \"\\x00\" has no meaning here");
    EXPECT_EQ(complaint("class A\r\n{\r\n?"), "some.mof:3: \"?\" has no meaning here");
    EXPECT_THAT(complaint(std::string(1000, 'a')), EndsWith("found \"" + std::string(40, 'a') + "...\""));
    try {
        readMof("?", "a\nb.mof");
        ADD_FAILURE() << "it was read";
    } catch (const mof::MofError& error) {
        EXPECT_THAT(error.what(), StartsWith("a\\x0ab.mof:1: "));
    }
}

TEST(MofReaderTest, AnyBeginningOfATextIsReadOrRefused) {
    const std::string whole =
        "#pragma locale (\"en\")\nQualifier Q : string[2] = {\"a\"}, Scope (any), Flavor (ToSubclass);\n"
        "[Q {\"x\\x41\"} : ToSubclass] class A as $B { /* c */ [Q] uint8 P[3] = {1, 0x2}; char16 C = 'a'; "
        "uint8 M([Q] A ref R); real32 F = -1.5e+2; }; // end";
    for (std::size_t length = 0; length < whole.size(); ++length) {
        const std::string error = complaint(whole.substr(0, length));
        EXPECT_TRUE(error.empty() || error.rfind("some.mof:", 0) == 0) << length << ": " << error;
    }
    EXPECT_EQ(complaint(whole), "");
}

TEST(MofReaderTest, DeepNestingEndsInAnErrorNotInTheStack) {
    for (const char* opening : {"[", "{", "(", "class A { uint8 P = {", "[A {", "class A { uint8 M("}) {
        std::string text;
        for (int i = 0; i < 200000; ++i) text += opening;
        EXPECT_THAT(complaint(text), HasSubstr("expected "));
    }
}

}  // namespace
