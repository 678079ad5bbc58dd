// What a sensor showed last, for the moments in which it cannot be read.
#ifndef ZELSENSORS_CHIPLINUX_LASTREADING_H
#define ZELSENSORS_CHIPLINUX_LASTREADING_H

#include <mutex>

#include "Mapping.h"
#include "Moment.h"

// Thread-safe.
class LastReading {
  public:
    // How long a reading stands in for those that fail.
    static constexpr std::chrono::seconds STANDS_IN{10};

    void keep(int value) {
        const Nanoseconds taken = now();
        const std::lock_guard<std::mutex> lock(m_guard);
        m_value = value;
        m_taken = taken;
    }

    // NOT_AVAILABLE where it is too old, or there was none.
    int recall() const {
        const std::lock_guard<std::mutex> lock(m_guard);
        return m_value != NOT_AVAILABLE && now() - m_taken <= STANDS_IN ? m_value : NOT_AVAILABLE;
    }

  private:
    mutable std::mutex m_guard;
    int m_value = NOT_AVAILABLE;
    Nanoseconds m_taken{0};
};

#endif
