#include "source/Answer.h"

#include "broker/Names.h"
#include "text/Utf8.h"

namespace host {

std::string statusText(const broker::Status& status) {
    std::string text = std::to_string(status.rc) + ' ' + broker::nameOfStatus(status.rc);
    if (status.message) text += ": " + printable(*status.message);
    return text;
}

}  // namespace host
