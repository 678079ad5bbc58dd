// The host's reader of MOF. The input is the file. It is either refused with one printable line of the form
// "file:line: what is wrong", whose line is one of the file's, or accepted. An accepted file's declarations are sound
// by themselves, and what must not matter does not: a comment at the end changes nothing, and a class put before it
// only moves the lines. Declared once more on top of themselves they are refused.
#include <mof/MofReader.h>
#include <text/Utf8.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <string_view>

#include "Property.h"

namespace {

constexpr char FILE_NAME[] = "input.mof";
constexpr char OTHER_CLASS[] = "class Fuzz_OfItsOwn {};\n";

long linesOf(const std::string& text) {
    return 1 + std::count(text.begin(), text.end(), '\n');
}

void checkMessage(const std::string& message, const std::string& contents) {
    const std::string start = std::string(FILE_NAME) + ":";
    require(message.rfind(start, 0) == 0, "a message begins with the file's name");
    const std::size_t digits = message.find_first_not_of("0123456789", start.size());
    require(digits != std::string::npos && digits > start.size() && digits - start.size() < 9,
            "the file's name is followed by a line's number");
    require(message.compare(digits, 2, ": ") == 0 && message.size() > digits + 2, "what is wrong follows the line");
    const long line = std::stol(message.substr(start.size(), digits - start.size()));
    require(line >= 1 && line <= linesOf(contents), "the line is one of the file's");
    requireSame(host::printable(message), message, "a message fit for a terminal");
}

// Nothing where it is refused; the message has been checked.
std::optional<mof::Schema> read(const std::string& contents, const mof::Schema& before = {}) {
    try {
        return mof::readMof(contents, FILE_NAME, before);
    } catch (const mof::MofError& error) {
        checkMessage(error.what(), contents);
        return std::nullopt;
    }
}

void checkElement(const mof::Element& element, long lines) {
    require(!element.name.empty(), "everything declared has a name");
    require(element.line >= 1 && element.line <= lines, "everything declared stands in the file");
    require(!element.defaultValue || mof::fits(*element.defaultValue, element.type), "a default fits its type");
    const bool isReference = (element.type & ~CMPI_ARRAY) == CMPI_ref;
    require(isReference != element.referencedClass.empty(), "a reference, and it alone, refers to a class");
    require(!element.arraySize || (element.type & CMPI_ARRAY) != 0, "an array alone has a size");
}

void checkClass(const mof::Schema& schema, const mof::Class& declaration, long lines) {
    mof::Names names;
    for (const mof::Property& property : declaration.properties) {
        checkElement(property, lines);
        require(names.insert(property.name).second, "a property is declared once");
    }
    for (const mof::Method& method : declaration.methods) {
        checkElement(method.result, lines);
        for (const mof::Parameter& parameter : method.parameters) checkElement(parameter, lines);
    }
    mof::Names members;
    for (const mof::Member& member : schema.membersOf(declaration)) {
        require(members.insert(member.name).second, "a member is listed once");
    }
    require(std::includes(members.begin(), members.end(), names.begin(), names.end(), mof::NameLess()),
            "a class's own properties are among its members");
}

void checkSchema(const mof::Schema& schema, long lines) {
    mof::Names earlier;
    for (const mof::Class& declaration : schema.classes()) {
        require(declaration.superclass.empty() || earlier.count(declaration.superclass) == 1,
                "superclasses come first");
        require(earlier.insert(declaration.name).second, "a class is declared once");
        require(schema.findClass(declaration.name) == &declaration, "a class is found by its name");
        checkClass(schema, declaration, lines);
    }
}

void requireAlike(const mof::Schema& one, const mof::Schema& other, std::size_t more) {
    requireSame(static_cast<long long>(other.classes().size()), static_cast<long long>(one.classes().size() + more),
                "the number of classes");
    requireSame(static_cast<long long>(other.qualifierCount()), static_cast<long long>(one.qualifierCount()),
                "the number of qualifiers");
    for (std::size_t i = 0; i < one.classes().size(); ++i) {
        const mof::Class& left = one.classes()[i];
        const mof::Class& right = other.classes()[i + more];
        requireSame(right.name, left.name, "a class's name");
        requireSame(right.line, left.line + more, "a class's line");
        require(left.properties.size() == right.properties.size() && left.methods.size() == right.methods.size(),
                "a class's size");
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string contents(data, data + size);
    const std::optional<mof::Schema> schema = read(contents);
    if (!schema) return 0;
    checkSchema(*schema, linesOf(contents));
    const std::optional<mof::Schema> commented = read(contents + "\n// class Fuzz_NotThere {}; /* \" ");
    require(commented.has_value(), "a comment at the end is accepted");
    requireAlike(*schema, *commented, 0);
    // The byte-order mark stands at the beginning of a file alone.
    const bool hasMark = contents.rfind("\xef\xbb\xbf", 0) == 0;
    if (!hasMark && schema->findClass("Fuzz_OfItsOwn") == nullptr) {
        const std::optional<mof::Schema> moved = read(OTHER_CLASS + contents);
        require(moved.has_value(), "a class before the others is accepted");
        requireAlike(*schema, *moved, 1);
    }
    const bool isEmpty = schema->classes().empty() && schema->qualifierCount() == 0;
    require(read(contents, *schema).has_value() == isEmpty, "what is declared already is refused");
    return 0;
}
