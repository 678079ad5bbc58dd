// The words that a scenario file may use in the place of CIM's numbers.
#ifndef ZELSENSORS_CHIPSIM_WORDS_H
#define ZELSENSORS_CHIPSIM_WORDS_H

#include <cstddef>
#include <string_view>

struct Word {
    std::string_view word;
    int number;
};

// The words of a constant table, which must outlive the list.
class WordList {
  public:
    template <std::size_t count>
    constexpr WordList(const Word (&words)[count]) : m_words(words), m_count(count) {}

    const Word* begin() const { return m_words; }
    const Word* end() const { return m_words + m_count; }

  private:
    const Word* m_words;
    std::size_t m_count;
};

// Constant tables, the codes of CIM_Sensor.SensorType, CIM_NumericSensor.BaseUnits and CIM_NumericSensor.RateUnits.
WordList sensorTypeWords();
WordList baseUnitsWords();
WordList rateUnitsWords();

#endif
