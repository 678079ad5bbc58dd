// What stands behind a Broker: its function tables, and who owns the objects that it hands out.
#ifndef ZELSENSORS_BROKER_STATE_H
#define ZELSENSORS_BROKER_STATE_H

#include <atomic>
#include <cstddef>
#include <memory>
#include <mutex>
#include <optional>
#include <tuple>
#include <unordered_map>
#include <utility>

#include "broker/CallWatch.h"
#include "broker/Objects.h"
#include "broker/Pools.h"

namespace broker {

struct Broker::State {
    explicit State(BrokerOptions itsOptions);
    ~State();
    State(const State&) = delete;
    State& operator=(const State&) = delete;

    // An object with this broker's tables, which nobody owns yet.
    template <typename T, typename Content>
    std::unique_ptr<T> build(Content content) {
        return std::make_unique<T>(*this, table<TableOf<T>>(), std::move(content));
    }

    // Makes an object for the provider: owned by the calling thread's innermost pool, else by this state.
    template <typename T, typename Content>
    T* make(Content content) {
        auto object = build<T>(std::move(content));
        T* made = object.get();
        adopt(std::move(object));
        return made;
    }

    template <typename T>
    T* makeClone(const T& original) {
        auto object = build<T>(original.content);
        T* made = object.get();
        adoptClone(std::move(object));
        return made;
    }

    void adopt(std::unique_ptr<Object> object);
    void adoptClone(std::unique_ptr<Object> object);
    CMPIrc release(Object& object);  // refused (60) unless it is a clone

    // The table of a kind of object.
    template <typename Table>
    Table& table() {
        return std::get<Table>(objectTables);
    }
    // Whether an object of a kind was made by this broker; not for null.
    template <typename Cmpi>
    bool hasMade(const Cmpi* object) {
        return object->ft == &table<TableOf<Cmpi>>();
    }

    // A thread of the provider between prepareAttachThread and detachThread.
    struct AttachedThread {
        Pool pool;
        std::optional<PoolScope> scope;  // made by attachThread
    };
    CMPIContext* prepareThread(const ContextObject& context);
    CMPIrc attachThread(const CMPIContext* context);
    CMPIrc detachThread(const CMPIContext* context);

    const BrokerOptions options;
    CMPIBroker handle{};
    CMPIBrokerFT brokerTable{};
    CMPIBrokerEncFT encapsulationTable{};
    CMPIBrokerExtFT threadTable{};
    std::tuple<CMPIStringFT, CMPIObjectPathFT, CMPIInstanceFT, CMPIArrayFT, CMPIDateTimeFT, CMPIContextFT, CMPIArgsFT,
               CMPIResultFT>
        objectTables{};

    CallWatch watch{*this};

    std::atomic<std::size_t> liveObjects{0};
    mutable std::mutex ownedMutex;  // guards the three below
    Pool unowned;                   // made outside every request
    std::unordered_map<Object*, std::unique_ptr<Object>> clones;
    std::unordered_map<const CMPIContext*, std::unique_ptr<AttachedThread>> threads;

  private:
    AttachedThread* findThread(const CMPIContext* context);
};

}  // namespace broker

#endif
