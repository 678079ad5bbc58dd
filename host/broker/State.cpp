#include "broker/State.h"

#include <algorithm>
#include <stdexcept>

#include "broker/Values.h"

namespace broker {
namespace {

struct ThreadPool {
    const Broker::State* state;
    Pool* pool;
};
// The pools of the calling thread, of all brokers, the innermost last.
thread_local std::vector<ThreadPool> t_pools;

Pool* innermostPool(const Broker::State& state) {
    const auto found = std::find_if(t_pools.rbegin(), t_pools.rend(),
                                    [&](const ThreadPool& candidate) { return candidate.state == &state; });
    return found == t_pools.rend() ? nullptr : found->pool;
}

bool isMeant(const std::string& planned, const Slot& slot) {
    return planned == slot.function || planned == std::string(slot.table) + "." + slot.function;
}

}  // namespace

Object::~Object() {
    if (isCounted) state.liveObjects.fetch_sub(1, std::memory_order_relaxed);
}

PoolScope::PoolScope(const Broker::State& state, Pool& pool) : m_pool(&pool) {
    t_pools.push_back({&state, &pool});
}

PoolScope::~PoolScope() {
    const auto found = std::find_if(t_pools.rbegin(), t_pools.rend(),
                                    [this](const ThreadPool& candidate) { return candidate.pool == m_pool; });
    if (found != t_pools.rend()) t_pools.erase(std::next(found).base());
}

Broker::State::State(BrokerOptions itsOptions) : options(std::move(itsOptions)) {
    fillBrokerTable(brokerTable, options);
    fillEncapsulationTable(encapsulationTable, options);
    fillThreadTable(threadTable, options);
    std::apply([this](auto&... each) { (fillTable(each, options), ...); }, objectTables);
    handle.hdl = this;
    handle.bft = &brokerTable;
    handle.eft = &encapsulationTable;
    handle.xft = &threadTable;
}

Broker::State::~State() {
    // Objects count themselves out of this state as they go, and a thread's scope leaves its list.
    threads.clear();
    clones.clear();
    strays.clear();
}

void Broker::State::adopt(std::unique_ptr<Object> object) {
    object->isCounted = true;
    liveObjects.fetch_add(1, std::memory_order_relaxed);
    if (Pool* pool = innermostPool(*this)) {
        pool->push_back(std::move(object));
        return;
    }
    const std::lock_guard lock(ownedMutex);
    strays.push_back(std::move(object));
}

void Broker::State::adoptClone(std::unique_ptr<Object> object) {
    object->isClone = true;
    const std::lock_guard lock(ownedMutex);
    Object* key = object.get();
    clones.emplace(key, std::move(object));
}

CMPIrc Broker::State::release(Object& object) {
    if (!object.isClone) return CMPI_RC_ERR_INVALID_HANDLE;
    const std::lock_guard lock(ownedMutex);
    clones.erase(&object);
    return CMPI_RC_OK;
}

void Broker::State::updateWatched() {
    watched = isRecording || !plans.empty();
}

std::optional<CMPIrc> Broker::State::meetWatched(const Slot& slot, const Carried& carried, bool answersPointer) {
    RecordedCall call{slot.function, carried.name == nullptr ? "" : carried.name, Value{}};
    if (carried.value != nullptr) toModel(*this, carried.value, carried.type, call.value);
    std::optional<Plan> plan;
    {
        const std::lock_guard lock(watchMutex);
        if (isRecording) calls.push_back(std::move(call));
        plan = duePlan(slot);
        updateWatched();
    }
    if (!plan) return std::nullopt;
    if (plan->fault == Fault::Throw) {
        throw std::runtime_error(std::string("planned fault in ") + slot.table + "." + slot.function);
    }
    return plan->fault == Fault::ReturnNull && answersPointer ? CMPI_RC_OK : plan->rc;
}

// Counts the call in all plans for the slot, takes out those that are due, and gives the first of them.
std::optional<Broker::State::Plan> Broker::State::duePlan(const Slot& slot) {
    std::optional<Plan> due;
    for (auto plan = plans.begin(); plan != plans.end();) {
        if (!isMeant(plan->slot, slot) || --plan->callsToGo > 0) {
            ++plan;
            continue;
        }
        if (!due) due = *plan;
        plan = plans.erase(plan);
    }
    return due;
}

CMPIContext* Broker::State::prepareThread(const ContextObject& context) {
    auto thread = std::make_unique<AttachedThread>();
    auto copy = std::make_unique<ContextObject>(*this, context.content);
    CMPIContext* key = copy.get();
    copy->isCounted = true;
    liveObjects.fetch_add(1, std::memory_order_relaxed);
    thread->pool.push_back(std::move(copy));
    const std::lock_guard lock(ownedMutex);
    threads.emplace(key, std::move(thread));
    return key;
}

Broker::State::AttachedThread* Broker::State::findThread(const CMPIContext* context) {
    const std::lock_guard lock(ownedMutex);
    const auto found = threads.find(context);
    return found == threads.end() ? nullptr : found->second.get();
}

CMPIrc Broker::State::attachThread(const CMPIContext* context) {
    AttachedThread* thread = findThread(context);
    if (thread == nullptr || thread->scope) return CMPI_RC_ERR_INVALID_HANDLE;
    thread->scope.emplace(*this, thread->pool);
    return CMPI_RC_OK;
}

CMPIrc Broker::State::detachThread(const CMPIContext* context) {
    AttachedThread* thread = findThread(context);
    if (thread == nullptr || !thread->scope) return CMPI_RC_ERR_INVALID_HANDLE;
    thread->scope.reset();
    const std::lock_guard lock(ownedMutex);
    threads.erase(context);
    return CMPI_RC_OK;
}

}  // namespace broker
