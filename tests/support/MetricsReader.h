// A strict reader of Prometheus' text format 0.0.4, as plain as it gets: what it takes, every reader of the format
// takes.
#ifndef ZELSENSORS_TESTS_METRICSREADER_H
#define ZELSENSORS_TESTS_METRICSREADER_H

#include <map>
#include <string>
#include <vector>

struct MetricsSample {
    std::string family;
    std::map<std::string, std::string> labels;  // without escapes
    std::string value;                          // as it is written
    double number = 0;
};

struct MetricsFamily {
    std::string name;
    std::string help;
    std::string type;  // "gauge" or "counter"
    std::vector<MetricsSample> samples;
};

// The families in the page's order; one at least, each with a HELP line, a TYPE line and a sample. Throws
// std::runtime_error, which names the line, for anything that the format does not allow, and for what it allows and
// nobody needs: NaN and infinities, times, control characters, blank and other lines.
std::vector<MetricsFamily> readMetrics(const std::string& page);

// The sample of that name and labels; an empty value where there is none.
MetricsSample sampleIn(const std::vector<MetricsFamily>& families, const std::string& name,
                       const std::map<std::string, std::string>& labels = {});

#endif
