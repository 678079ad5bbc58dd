#include "source/Answer.h"

#include "broker/Names.h"
#include "text/Utf8.h"

namespace host {

std::string chipNote(const AnsweringChip& chip) {
    if (chip.library.empty()) return "Chip library: none";
    return (chip.isSimulated ? "Chip library: simulated, " : "Chip library: ") + printable(chip.library);
}

std::string statusText(const broker::Status& status) {
    std::string text = std::to_string(status.rc) + ' ' + broker::nameOfStatus(status.rc);
    if (status.message) text += ": " + printable(*status.message);
    return text;
}

}  // namespace host
