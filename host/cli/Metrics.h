// The command metrics: rounds of a terminal's health as pages, and a file that always holds the last page.
#ifndef ZELSENSORS_CLI_METRICS_H
#define ZELSENSORS_CLI_METRICS_H

#include <chrono>
#include <optional>
#include <string>

#include "cli/Ending.h"
#include "cli/Trouble.h"
#include "format/MetricsFormat.h"
#include "source/Source.h"
#include "text/ReplacedFile.h"

namespace host {

class MetricsRounds {
  public:
    // Asks the source in the namespace; the source must outlive this object.
    MetricsRounds(Source& source, const std::string& nameSpace, const MetricsChoice& choice);

    struct Page {
        std::string text;                       // see MetricsPages
        std::optional<broker::Status> failure;  // of the sensors, else of the event log
    };
    // Asks once. A failure makes a page that says so. Throws what the source throws.
    Page next();

  private:
    SensorRounds m_sensors;
    EventLogRounds m_eventLog;
    MetricsPages m_pages;
};

// The file of the pages, which must not outlive who writes it: old values would be taken for new ones.
class PublishedFile {
  public:
    explicit PublishedFile(const std::string& path) : m_file(path) {}
    // Removes the file, unless it is to stay.
    ~PublishedFile();
    PublishedFile(const PublishedFile&) = delete;
    PublishedFile& operator=(const PublishedFile&) = delete;

    const ReplacedFile& file() const { return m_file; }
    void keep() { m_isKept = true; }

  private:
    ReplacedFile m_file;
    bool m_isKept = false;
};

// Makes a page at once and then at each multiple of the interval, and puts it into the file, until a signal asks for
// the end. A round that takes longer than the interval costs the multiples that it covers. Where a later page cannot be
// written the file is removed, and the next page is tried as usual. What lasts is reported when it begins, changes and
// ends. Throws OutputError for the first page that cannot be written, and what the rounds throw. At the end the file is
// still there. A request that does not return within seconds after the signal is left: the file is removed and the
// process ends with status 0.
void publishMetrics(MetricsRounds& rounds, std::chrono::nanoseconds interval, const ReplacedFile& file,
                    const TroubleListener& listener);

}  // namespace host

#endif
