// An answer together with its question, for those who show it.
#ifndef ZELSENSORS_SOURCE_ANSWER_H
#define ZELSENSORS_SOURCE_ANSWER_H

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "broker/Model.h"
#include "source/Request.h"

namespace host {

// The chip library that the readings come from.
struct AnsweringChip {
    std::string library;  // a file; empty: none was loaded
    bool isSimulated = false;
};

// "Chip library: simulated, FILE": people shall see whether values are real. Fit for a terminal.
std::string chipNote(const AnsweringChip& chip);

// Which lines of the event log the answer still has.
struct LineChoice {
    std::vector<std::size_t> places;  // in the log, counted from 1; one for each line
    std::size_t total = 0;            // how many there were
};

// A provider's answer, with what was asked.
struct Answer {
    Command command = Command::Instances;
    std::string nameSpace;
    std::string className;
    broker::Reply reply;
    std::optional<AnsweringChip> chip = {};  // where it is known
    std::optional<LineChoice> lines = {};    // none: all that there were
};

// "16 CMPI_RC_ERR_METHOD_NOT_AVAILABLE", with ": " and the message where there is one; fit for a terminal.
std::string statusText(const broker::Status& status);

}  // namespace host

#endif
