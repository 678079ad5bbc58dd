// Whether the command line's wish for colours applies to an output.
#ifndef ZELSENSORS_CLI_COLOURING_H
#define ZELSENSORS_CLI_COLOURING_H

#include "cli/Options.h"
#include "text/Output.h"

namespace host {

bool isColoured(Colouring colouring, const Output& output);

}  // namespace host

#endif
