#include "verify/Causes.h"

namespace host {

std::string likelyCause(FaultKind kind) {
    switch (kind) {
        case FaultKind::OtherType:
        case FaultKind::NotDeclared:
        case FaultKind::Missing:
        case FaultKind::OtherName:
        case FaultKind::WrongKey:
            return "the manager has another version of the class; it sends what its own class declares, with the types "
                   "of that, and drops the rest";
        case FaultKind::KeyPropertyNotSet:
            return "the provider does not set it, or with another type: a manager empties such a property";
        case FaultKind::BlankAroundKey:
        case FaultKind::KeyPropertyDiffers:
            return "managers trim the blanks around a key in a request, so that this instance cannot be asked for";
        case FaultKind::UnfitText:
            return "the provider's text; a manager passes it on unchecked, and other clients may refuse the whole "
                   "answer";
        case FaultKind::Refused:
            return "the provider, or the manager before it asks the provider; the log on that machine says which";
        case FaultKind::WrongInstance:
            return "the manager changed the key of the request, as it does with blanks around it";
    }
    return "";
}

}  // namespace host
