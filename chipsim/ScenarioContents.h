// For those who are not the simulated chip library: what a scenario describes.
#ifndef ZELSENSORS_CHIPSIM_SCENARIOCONTENTS_H
#define ZELSENSORS_CHIPSIM_SCENARIOCONTENTS_H

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

struct ScenarioSensor {
    unsigned handle = 0;
    std::string name;  // the label; bytes as they stand in the file
    unsigned short sensorType = 0;
    unsigned short baseUnits = 0;
    unsigned short rateUnits = 0;
    int unitModifier = 0;
    bool isLinear = true;
    std::string otherSensorTypeDescription;            // as the name
    std::vector<std::pair<const char*, int>> numbers;  // those that are available, by their keys, in one order for all
    int lowest = 0;                                    // of all readings
    int highest = 0;
};

struct ScenarioContents {
    std::vector<ScenarioSensor> sensors;  // in the order of enumeration
    // Of the terminal and its event log, but for the lines: keys of the file, and their values in its notation. The
    // same keys in one order for all.
    std::vector<std::pair<const char*, std::string>> settings;
    std::vector<std::string> faults;    // each with its keys and their values
    std::vector<std::string> eventLog;  // its lines
    std::vector<std::string> mistakes;  // as mistakesOfScenario(); where there are any, all else is empty
};

ScenarioContents contentsOfScenario(const std::string& path);

#endif
