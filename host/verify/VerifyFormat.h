// A verification's result as people and programs read it. Pure functions, thread-safe.
#ifndef ZELSENSORS_VERIFY_VERIFYFORMAT_H
#define ZELSENSORS_VERIFY_VERIFYFORMAT_H

#include <string>

#include "verify/Verify.h"

namespace host {

// A line for each problem, and one for each class that sums it up.
std::string verificationText(const Verification& verification);

// One JSON object with a newline at its end:
//   {"command": "verify", "namespace": text, "conforms": boolean,
//    "classes": [{"class": text, "names": number, "instances": number, "singles": number,
//                 "problems": [{"request": text, "path": text, "text": text}]}]}
// All is ASCII: other characters are escaped.
std::string verificationJson(const Verification& verification);

}  // namespace host

#endif
