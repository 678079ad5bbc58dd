// How a sensor's reading moves, read from its scenario table.
#ifndef ZELSENSORS_CHIPSIM_MOVEMENTREADER_H
#define ZELSENSORS_CHIPSIM_MOVEMENTREADER_H

#include <cstdint>
#include <memory>
#include <optional>

#include "Movement.h"
#include "TableReader.h"

enum class MovementKind;

// Reads from a [[sensor]] table how the sensor's reading moves.
class MovementReader {
  public:
    // Takes down mistakes inside the table `reading`; throws Mistake where there is no such table. `times` are those of
    // the file's recording: null where it has none.
    MovementReader(const TableReader& sensor, std::uint64_t seed, std::shared_ptr<const RecordedTimes> times);

    // For one of the table's sensors: `copy` counts them from 0. Not after mistakes.
    Movement movementOf(unsigned handle, std::uint64_t copy) const;

  private:
    void readSteps(const TableReader& reading);
    void readValues(const TableReader& reading, MovementKind kind);
    void readRecorded(const TableReader& reading);

    std::uint64_t m_seed;
    std::shared_ptr<const RecordedTimes> m_times;
    Movement m_movement;
    std::optional<WalkBounds> m_walk;  // each copy walks on its own
};

#endif
