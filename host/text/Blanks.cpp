#include "text/Blanks.h"

#include <algorithm>

namespace host {

std::string_view withoutBlanks(std::string_view text) {
    constexpr const char* blanks = " \t\r\n";
    text.remove_prefix(std::min(text.find_first_not_of(blanks), text.size()));
    return text.substr(0, text.find_last_not_of(blanks) + 1);
}

}  // namespace host
