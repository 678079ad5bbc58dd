// Whether what a provider returns is as the schema says. An object manager takes values by their declared types: a text
// where a number is declared makes one crash and another drop the value.
#ifndef ZELSENSORS_VERIFY_CONFORMANCE_H
#define ZELSENSORS_VERIFY_CONFORMANCE_H

#include <string>
#include <vector>

#include "broker/Model.h"
#include "mof/Schema.h"

namespace host {

// A class as the schema declares it, inherited properties included.
struct ExpectedClass {
    std::string nameSpace;
    std::string name;
    std::vector<mof::Member> members;

    const mof::Member* find(const std::string& member) const;  // null: there is none
};

// Each gives one text for each thing that is wrong, fit for a terminal; none where all is right.

// The name of an instance: namespace, class, and exactly the declared keys with their types.
std::vector<std::string> faultsOf(const broker::ObjectPath& path, const ExpectedClass& expected);

// An instance: its path, its properties' names and types, and the keys among them, which must be there and be those of
// the path. Declared properties that are not set are no fault: they are null.
std::vector<std::string> faultsOf(const broker::Instance& instance, const ExpectedClass& expected);

// Whether the text is UTF-8 made of characters that XML can carry: controls cannot, except tab, line feed and carriage
// return. Object managers write texts into XML as they are.
bool isFitForXml(const std::string& text);

}  // namespace host

#endif
