// What goes wrong while rounds go on, reported when it begins, changes or ends: a log shall not fill with the same
// line.
#ifndef ZELSENSORS_CLI_TROUBLE_H
#define ZELSENSORS_CLI_TROUBLE_H

#include <functional>
#include <string>

#include "broker/Model.h"

namespace host {

// Who hears of it.
struct TroubleListener {
    std::function<void(const broker::Status&)> failure;  // the provider's answer was an error
    std::function<void(const std::string&)> line;        // anything else, in one line
};

// One thing that can go wrong.
class Trouble {
  public:
    using Report = std::function<void(const std::string&)>;
    // `report` gets each text that differs from the one before.
    explicit Trouble(Report report);

    // An empty text: nothing is wrong now, as at the start.
    void now(const std::string& text);

  private:
    Report m_report;
    std::string m_last;
};

}  // namespace host

#endif
