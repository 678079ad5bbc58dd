// What an object manager does to a provider's answers, as the likely cause of what is wrong with them.
#ifndef ZELSENSORS_VERIFY_CAUSES_H
#define ZELSENSORS_VERIFY_CAUSES_H

#include <string>

#include "verify/Conformance.h"

namespace host {

// Without a full stop; of answers that came from a manager.
std::string likelyCause(FaultKind kind);

}  // namespace host

#endif
