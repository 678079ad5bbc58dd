// A verification's result as people and programs read it. Pure functions, thread-safe.
#ifndef ZELSENSORS_VERIFY_VERIFYFORMAT_H
#define ZELSENSORS_VERIFY_VERIFYFORMAT_H

#include <optional>
#include <string>

#include "verify/Verify.h"

namespace host {

// A line for each problem, and one for each class that sums it up.
std::string verificationText(const Verification& verification);

// One JSON object with a newline at its end:
//   {"command": "verify", "namespace": text, "simulated": boolean, "conforms": boolean,
//    "classes": [{"class": text, "names": number, "instances": number, "singles": number,
//                 "problems": [{"request": text, "path": text, "text": text}]}]}; a problem has a "cause" too
// where one is likely.
// "simulated" says whether the chip library is; null where that is not known. All is ASCII: other characters are
// escaped.
std::string verificationJson(const Verification& verification, std::optional<bool> isSimulated);

}  // namespace host

#endif
