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

enum class FaultKind {
    OtherName,       // namespace, class, or how a member is spelled
    WrongKey,        // a key that is not declared, missing or null
    BlankAroundKey,  // by a manager only
    OtherType,
    UnfitText,
    NotDeclared,  // a property
    Missing,      // a property that a manager ought to send, be it without a value
    KeyPropertyNotSet,
    KeyPropertyDiffers,  // from the path's key
    Refused,             // the request
    WrongInstance,       // or not one
};

struct Fault {
    FaultKind kind;
    std::string text;  // fit for a terminal
};

// Who gave the answers. An object manager sends every property that its class declares, and knows no others.
enum class Via { Provider, Manager };

// Each gives one fault for each thing that is wrong; none where all is right.

// The name of an instance: namespace, class, and exactly the declared keys with their types.
std::vector<Fault> faultsOf(const broker::ObjectPath& path, const ExpectedClass& expected, Via via = Via::Provider);

// An instance: its path, its properties' names and types, and the keys among them, which must be there and be those of
// the path. Declared properties that are not set are no fault: they are null. (A manager sends those too.)
std::vector<Fault> faultsOf(const broker::Instance& instance, const ExpectedClass& expected, Via via = Via::Provider);

}  // namespace host

#endif
