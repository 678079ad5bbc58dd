// What the broker's user asks of the provider's calls: to be recorded, or to fail.
#ifndef ZELSENSORS_BROKER_CALLWATCH_H
#define ZELSENSORS_BROKER_CALLWATCH_H

#include <atomic>
#include <cstddef>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "broker/Broker.h"

namespace broker {

// A function of a CMPI table. Both names are literals.
struct Slot {
    const char* table;  // "path", "instance", "broker" and so on
    const char* function;
};

// What a call carries, for the record.
struct CallArgument {
    const char* name = nullptr;
    const CMPIValue* value = nullptr;
    CMPIType type = CMPI_null;
};

// The text that a call carries, in the way in which CMPI passes characters.
inline CallArgument textArgument(const char* text) {
    return {nullptr, reinterpret_cast<const CMPIValue*>(text), CMPI_chars};
}

// Several threads may use it at a time.
class CallWatch {
  public:
    explicit CallWatch(Broker::State& state) : m_state(state) {}

    // As in Broker.
    void planFault(const std::string& slot, unsigned nth, Fault fault, CMPIrc rc);
    void clearFaults();
    std::size_t faultsLeft() const;
    void startRecording();
    std::vector<RecordedCall> recordedCalls() const;

    // Records the call where calls are recorded, and gives what a planned fault makes it answer: nothing when it is to
    // go on. Throws std::runtime_error where that is planned.
    std::optional<CMPIrc> recordCall(const Slot& slot, const CallArgument& argument, bool answersPointer) {
        if (!m_isWatching.load(std::memory_order_relaxed)) return std::nullopt;
        return recordWatched(slot, argument, answersPointer);
    }

  private:
    struct Plan {
        std::string slot;
        unsigned callsToGo;  // 1: the next call is the one
        Fault fault;
        CMPIrc rc;
    };
    std::optional<CMPIrc> recordWatched(const Slot& slot, const CallArgument& argument, bool answersPointer);
    // Both with the mutex held.
    std::optional<Plan> duePlan(const Slot& slot);
    void updateIsWatching();

    Broker::State& m_state;
    std::atomic<bool> m_isWatching{false};  // calls are recorded or faults are planned
    mutable std::mutex m_mutex;             // guards what follows
    bool m_isRecording = false;
    std::vector<RecordedCall> m_calls;
    std::vector<Plan> m_plans;
};

}  // namespace broker

#endif
