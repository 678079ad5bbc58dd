// The health of a terminal as a page of metrics, in Prometheus' text format 0.0.4. docs/metrics.md lists the metrics;
// their names and labels are an interface.
#ifndef ZELSENSORS_FORMAT_METRICSFORMAT_H
#define ZELSENSORS_FORMAT_METRICSFORMAT_H

#include <chrono>
#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "health/EventLog.h"
#include "health/SensorRounds.h"

namespace host {

// What one round found.
struct MetricsRound {
    Round sensors;
    EventLogRound eventLog;
    std::chrono::duration<double> sensorsDuration{0};  // the time that asking for them took
    std::chrono::duration<double> eventLogDuration{0};
};

struct MetricsChoice {
    std::optional<bool> isChipSimulated = false;  // none: not known
    bool hasThresholds = true;
};

// The pages of one terminal, one after the other. Of what failed, a page says that it failed and nothing else; what is
// not known is left out. Of sensors with the same name the first is shown. A page ends in a newline, is UTF-8
// throughout and has no series twice, whatever the provider gave.
class MetricsPages {
  public:
    explicit MetricsPages(const MetricsChoice& choice);
    ~MetricsPages();
    MetricsPages(const MetricsPages&) = delete;
    MetricsPages& operator=(const MetricsPages&) = delete;

    // The page depends on the round alone. What is as it was in the last one, as thresholds mostly are, takes little
    // time.
    std::string next(const MetricsRound& round);

  private:
    class Family;

    Family& family(std::size_t number);
    void addSensors(const std::vector<Sensor>& sensors, const std::vector<std::string>& labels);
    void addReading(const Sensor& sensor, const std::string& label);
    void addThresholds(const Sensor& sensor, const std::string& label);
    void addEventLog(const EventLogRound& round);
    void addScrape(const char* collector, bool isSuccess, CMPIrc status, std::chrono::duration<double> duration);

    MetricsChoice m_choice;
    std::vector<Family> m_families;
};

}  // namespace host

#endif
