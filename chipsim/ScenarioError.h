// The one exception of reading a scenario.
#ifndef ZELSENSORS_CHIPSIM_SCENARIOERROR_H
#define ZELSENSORS_CHIPSIM_SCENARIOERROR_H

#include <stdexcept>

// Why a scenario cannot be used: a line of text, "file:line: what is wrong, expected what", for each mistake, in the
// order of the file's lines, without a newline at the end.
class ScenarioError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

#endif
