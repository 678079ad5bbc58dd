// An answer together with its question, for those who show it.
#ifndef ZELSENSORS_SOURCE_ANSWER_H
#define ZELSENSORS_SOURCE_ANSWER_H

#include <string>

#include "broker/Model.h"
#include "source/Request.h"

namespace host {

// A provider's answer, with what was asked.
struct Answer {
    Command command = Command::Instances;
    std::string nameSpace;
    std::string className;
    broker::Reply reply;
};

// "16 CMPI_RC_ERR_METHOD_NOT_AVAILABLE", with ": " and the message where there is one; fit for a terminal.
std::string statusText(const broker::Status& status);

}  // namespace host

#endif
