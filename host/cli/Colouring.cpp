#include "cli/Colouring.h"

namespace host {

bool isColoured(Colouring colouring, const Output& output) {
    return colouring == Colouring::Always || (colouring == Colouring::Auto && output.takesColour());
}

}  // namespace host
