// The words that a scenario file may use in the place of CIM's numbers.
#ifndef ZELSENSORS_CHIPSIM_WORDS_H
#define ZELSENSORS_CHIPSIM_WORDS_H

#include <string_view>
#include <vector>

struct Word {
    std::string_view word;
    int number;
};

// Constant tables, the codes of CIM_Sensor.SensorType, CIM_NumericSensor.BaseUnits and CIM_NumericSensor.RateUnits.
const std::vector<Word>& sensorTypeWords();
const std::vector<Word>& baseUnitsWords();
const std::vector<Word>& rateUnitsWords();

#endif
