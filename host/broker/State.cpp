#include "broker/State.h"

#include <utility>

#include "broker/Tables.h"

namespace broker {

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
    unowned.clear();
}

void Broker::State::adopt(std::unique_ptr<Object> object) {
    object->isCounted = true;
    liveObjects.fetch_add(1, std::memory_order_relaxed);
    if (Pool* pool = innermostPool(*this)) {
        pool->push_back(std::move(object));
        return;
    }
    const std::lock_guard lock(ownedMutex);
    unowned.push_back(std::move(object));
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

CMPIContext* Broker::State::prepareThread(const ContextObject& context) {
    auto thread = std::make_unique<AttachedThread>();
    auto copy = build<ContextObject>(context.content);
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
