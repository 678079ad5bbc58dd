#include "broker/CallWatch.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

#include "broker/Values.h"

namespace broker {
namespace {

bool isMeant(const std::string& planned, const Slot& slot) {
    return planned == slot.function || planned == std::string(slot.table) + "." + slot.function;
}

}  // namespace

void CallWatch::planFault(const std::string& slot, unsigned nth, Fault fault, CMPIrc rc) {
    const std::lock_guard lock(m_mutex);
    m_plans.push_back({slot, std::max(nth, 1U), fault, rc});
    updateIsWatching();
}

void CallWatch::clearFaults() {
    const std::lock_guard lock(m_mutex);
    m_plans.clear();
    updateIsWatching();
}

std::size_t CallWatch::faultsLeft() const {
    const std::lock_guard lock(m_mutex);
    return m_plans.size();
}

void CallWatch::startRecording() {
    const std::lock_guard lock(m_mutex);
    m_calls.clear();
    m_isRecording = true;
    updateIsWatching();
}

std::vector<RecordedCall> CallWatch::recordedCalls() const {
    const std::lock_guard lock(m_mutex);
    return m_calls;
}

void CallWatch::updateIsWatching() {
    m_isWatching = m_isRecording || !m_plans.empty();
}

std::optional<CMPIrc> CallWatch::recordWatched(const Slot& slot, const CallArgument& argument, bool answersPointer) {
    RecordedCall call{slot.function, argument.name == nullptr ? "" : argument.name, Value{}};
    if (argument.value != nullptr) toModel(m_state, argument.value, argument.type, call.value);
    std::optional<Plan> plan;
    {
        const std::lock_guard lock(m_mutex);
        if (m_isRecording) m_calls.push_back(std::move(call));
        plan = duePlan(slot);
        updateIsWatching();
    }
    if (!plan) return std::nullopt;
    if (plan->fault == Fault::Throw) {
        throw std::runtime_error(std::string("planned fault in ") + slot.table + "." + slot.function);
    }
    return plan->fault == Fault::ReturnNull && answersPointer ? CMPI_RC_OK : plan->rc;
}

// Counts the call in all plans for the slot, takes out those that are due, and gives the first of them.
std::optional<CallWatch::Plan> CallWatch::duePlan(const Slot& slot) {
    std::optional<Plan> due;
    for (auto plan = m_plans.begin(); plan != m_plans.end();) {
        if (!isMeant(plan->slot, slot) || --plan->callsToGo > 0) {
            ++plan;
            continue;
        }
        if (!due) due = *plan;
        plan = m_plans.erase(plan);
    }
    return due;
}

}  // namespace broker
