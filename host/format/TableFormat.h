// Answers as people read them.
#ifndef ZELSENSORS_FORMAT_TABLEFORMAT_H
#define ZELSENSORS_FORMAT_TABLEFORMAT_H

#include <string>

#include "source/Answer.h"
#include "text/Charset.h"

namespace host {

// The whole answer as text of that charset, in lines. An answer with an error and without data gives an empty text; a
// partial list ends with a line that says so.
std::string tableText(const Answer& answer, Charset charset);

}  // namespace host

#endif
