// Blanks around a text. A pure function, thread-safe.
#ifndef ZELSENSORS_TEXT_BLANKS_H
#define ZELSENSORS_TEXT_BLANKS_H

#include <string_view>

namespace host {

// The text without the blanks, tabs and line ends at its beginning and end; it views what was given.
std::string_view withoutBlanks(std::string_view text);

}  // namespace host

#endif
