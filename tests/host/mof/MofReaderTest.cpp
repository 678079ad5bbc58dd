#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <set>

#include "FileContents.h"
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

std::string complaint(const std::string& text, const Schema& before = {}, const std::string& file = "some.mof") {
    try {
        readMof(text, file, before);
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

// Each file NAME.mof in the directory is refused with the message in NAME.txt, which begins with the file's name.
TEST(MofReaderTest, FaultyFileIsRefusedWithTheMessageBesideIt) {
    std::set<std::string> files;
    std::set<std::string> messages;
    for (const auto& entry : std::filesystem::directory_iterator(FAULTY_MOF))
        (entry.path().extension() == ".mof" ? files : messages).insert(entry.path().stem());
    EXPECT_EQ(files, messages);
    EXPECT_FALSE(files.empty());
    for (const std::string& name : files) {
        const std::string file = FAULTY_MOF "/" + name;
        EXPECT_EQ(complaint(contentsOf(file + ".mof"), {}, name + ".mof") + '\n', contentsOf(file + ".txt"));
    }
}

TEST(MofReaderTest, EmptyTextDeclaresNothing) {
    EXPECT_TRUE(read("").classes().empty());
    EXPECT_TRUE(read(" \t\r\n").classes().empty());
    EXPECT_TRUE(read("\xef\xbb\xbf").classes().empty());
}

TEST(MofReaderTest, CommentsAreSkippedAndTheirLinesCounted) {
    const Class declaration = onlyClass(
        "// class B {};\n/* class C {}; \n** / */ class /**/ A // after\n{ /* \" */ string P; // * /\n};//at the end");
    EXPECT_EQ(declaration.name, "A");
    ASSERT_EQ(declaration.properties.size(), 1U);
    EXPECT_EQ(declaration.properties[0].line, 4U);
}

TEST(MofReaderTest, PragmasAreSkipped) {
    EXPECT_EQ(onlyClass("#pragma locale (\"en_US\")\n# PRAGMA Namespace(\"root\" \"/cimv2\") class A {};").name, "A");
}

TEST(MofReaderTest, QualifierDeclarationsAreReadWithDefaultScopeAndFlavor) {
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

TEST(MofReaderTest, ClassIsReadWithAliasSuperclassAndQualifiers) {
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

TEST(MofReaderTest, PropertiesHaveTheirDeclaredTypes) {
    const Class declaration = onlyClass(
        "class A { boolean a; STRING b; char16 c; uint8 d; sint8 e; uint16 f; sint16 g; uint32 h; sint32 i;"
        " uint64 j; sint64 k; real32 l; real64 m; datetime n; };");
    std::vector<CMPIType> types;
    for (const Property& property : declaration.properties) types.push_back(property.type);
    EXPECT_THAT(types, ElementsAre(CMPI_boolean, CMPI_string, CMPI_char16, CMPI_uint8, CMPI_sint8, CMPI_uint16,
                                   CMPI_sint16, CMPI_uint32, CMPI_sint32, CMPI_uint64, CMPI_sint64, CMPI_real32,
                                   CMPI_real64, CMPI_dateTime));
}

TEST(MofReaderTest, ArraysKeepTheirSizeWhichIsAtLeastOne) {
    const Class declaration = onlyClass("class A { string a[]; uint8 b[0x10] = {1, 2}; };");
    EXPECT_EQ(declaration.properties[0].type, CMPI_stringA);
    EXPECT_FALSE(declaration.properties[0].arraySize);
    EXPECT_EQ(declaration.properties[1].type, CMPI_uint8A);
    EXPECT_EQ(declaration.properties[1].arraySize, 16U);
    for (const char* size : {"0", "-1", "1.5"}) {
        EXPECT_EQ(complaint("class A { string a[" + std::string(size) + "]; };"),
                  "some.mof:1: expected a number of elements, found \"" + std::string(size) + '"');
    }
}

TEST(MofReaderTest, ReferenceKeepsItsClassAndDefault) {
    const Class declaration = onlyClass("[Association] class A { [Key] CIM_Thing REF Thing = \"CIM_Thing.Id=1\"; };");
    EXPECT_EQ(declaration.properties[0].type, CMPI_ref);
    EXPECT_EQ(declaration.properties[0].referencedClass, "CIM_Thing");
    EXPECT_EQ(declaration.properties[0].defaultValue.value().text, "CIM_Thing.Id=1");
}

TEST(MofReaderTest, MethodsAreReadWithResultAndParameters) {
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

TEST(MofReaderTest, QualifiersInAListKeepValuesFlavorsAndLines) {
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

TEST(MofReaderTest, TextsAreJoinedAndTheirEscapesResolved) {
    EXPECT_EQ(textOf("\"a\" /* and */ \"b\"\n\"\" \"c\""), "abc");
    EXPECT_EQ(textOf("\"\\b\\t\\n\\f\\r\\\"\\'\\\\\""), "\b\t\n\f\r\"'\\");
    EXPECT_EQ(textOf("\"\\x41\\XE9\\x20ac1 \\x1\""),
              "A\xc3\xa9\xe2\x82\xac"
              "1 \x01");
    EXPECT_EQ(textOf("\"\xe2\x82\xac // \t /*\""), "\xe2\x82\xac // \t /*");
}

TEST(MofReaderTest, WrongTextsAreRefused) {
    EXPECT_THAT(valueComplaint("string", "\"\\q\""), StartsWith("some.mof:1: an unknown escape in the text, expected"));
    EXPECT_THAT(complaint("\"\\"), StartsWith("some.mof:1: an unknown escape"));
    EXPECT_EQ(valueComplaint("string", std::string("\"\0\"", 3)), "some.mof:1: a control character in the text: \\x00");
}

TEST(MofReaderTest, IntegersAreReadInEveryNotation) {
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

TEST(MofReaderTest, WrongNumbersAreRefused) {
    for (const char* text :
         {"12abc", "08", "0x", "2b", "0xg", "1.", "1.5.2", "1.5e", "18446744073709551616", "1.0e999"}) {
        EXPECT_EQ(valueComplaint("real64", text),
                  "some.mof:1: \"" + std::string(text) + "\" is no number, or too large a one");
    }
    EXPECT_EQ(valueComplaint("real64", std::string(100, '9')),
              "some.mof:1: \"" + std::string(40, '9') + "...\" is no number, or too large a one");
}

TEST(MofReaderTest, RealsAreReadWithSignPointAndExponent) {
    EXPECT_EQ(valueOf("real64", "1.5").real, 1.5);
    EXPECT_EQ(valueOf("real32", "-.5e+1").real, -5.0);
    EXPECT_EQ(valueOf("real64", "+25.0E-1").real, 2.5);
    EXPECT_EQ(valueOf("real64", "3").magnitude, 3U);
}

TEST(MofReaderTest, BooleansNullsCharactersAndDatesAreRead) {
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
    EXPECT_EQ(complaint(std::string(1, '\0')), "some.mof:1: \"\\x00\" has no meaning here");
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
