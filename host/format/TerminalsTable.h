// The health of many terminals as people read it.
#ifndef ZELSENSORS_FORMAT_TERMINALSTABLE_H
#define ZELSENSORS_FORMAT_TERMINALSTABLE_H

#include <string>
#include <vector>

#include "format/SensorsTable.h"
#include "health/Terminals.h"

namespace host {

// A line for each terminal that answered, with its worst sensor; then a line for each that failed, which says why.
// Where a line is too wide, the name of the worst sensor is cut.
std::string terminalsTable(const std::vector<Terminal>& terminals, const TableLayout& layout);

}  // namespace host

#endif
