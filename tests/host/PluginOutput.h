// A monitoring plugin's output, read as strictly as the Monitoring Plugins Development Guidelines allow.
#ifndef ZELSENSORS_TESTS_HOST_PLUGINOUTPUT_H
#define ZELSENSORS_TESTS_HOST_PLUGINOUTPUT_H

#include <map>
#include <string>
#include <vector>

struct PerformanceValue {
    std::string label;
    std::string value;  // a decimal number, or U
    std::string unit;
    std::string warning, critical, least, most;
};

struct PluginOutput {
    std::string text;                  // of the first line, before the performance data
    std::vector<std::string> details;  // the lines after the first
    std::vector<PerformanceValue> data;
    std::map<std::string, PerformanceValue> dataOf;  // by label
};

// Throws std::runtime_error for what breaks the guidelines.
PluginOutput readPluginOutput(const std::string& output);

// Whether a value within that range is a reason to alert. Throws std::runtime_error for what is no range.
bool alerts(const std::string& range, double value);

#endif
