// The event log of a terminal, of which each line is taken once.
#ifndef ZELSENSORS_HEALTH_LOGFOLLOWER_H
#define ZELSENSORS_HEALTH_LOGFOLLOWER_H

#include <optional>
#include <string>
#include <vector>

#include "broker/Model.h"
#include "health/EventLines.h"
#include "source/Source.h"

namespace host {

class LogFollower {
  public:
    // Goes on behind the lines that have been seen already; without any, with the log's first. Asks the source for the
    // event log's class in the namespace; the source must outlive this object. Of the filter, `last` holds for the
    // first look that reads a log where nothing had been seen before.
    LogFollower(Source& source, const std::string& nameSpace, const LineFilter& filter,
                const std::optional<std::vector<std::string>>& seen);

    struct Look {
        std::vector<std::string> lines;  // that are new, see firstNewLine(), and wanted; bytes as they came
        broker::Status status;           // other than 0: the log could not be had
        bool isValid = true;             // false: the log says that it is not; none of its lines is taken
        bool hasChanged = false;         // what seen() gives
    };
    // Asks once; after status 16 again, from a source that has been restarted. Throws what the source throws.
    Look next();

    // All lines of the log as it was last read, wanted or not.
    const std::vector<std::string>& seen() const { return m_seen; }

  private:
    Source& m_source;
    broker::ObjectPath m_classPath;
    LineFilter m_filter;
    std::vector<std::string> m_seen;
};

}  // namespace host

#endif
