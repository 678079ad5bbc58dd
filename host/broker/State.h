// What stands behind a Broker: its function tables, and every object that it hands out.
#ifndef ZELSENSORS_BROKER_STATE_H
#define ZELSENSORS_BROKER_STATE_H

#include <atomic>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <tuple>
#include <type_traits>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

#include "broker/Broker.h"

namespace broker {

// A function of a CMPI table. Both names are literals.
struct Slot {
    const char* table;  // "path", "instance", "broker" and so on
    const char* function;
};

// What a call carries, for the record.
struct Carried {
    const char* name = nullptr;
    const CMPIValue* value = nullptr;
    CMPIType type = CMPI_null;
};

// The text that a call carries, in the way in which CMPI passes characters.
inline Carried carriedText(const char* text) {
    return {nullptr, reinterpret_cast<const CMPIValue*>(text), CMPI_chars};
}

// The part of an object that its holder does not see.
class Object {
  public:
    explicit Object(Broker::State& itsState) : state(itsState) {}
    virtual ~Object();
    Object(const Object&) = delete;
    Object& operator=(const Object&) = delete;

    Broker::State& state;
    bool isCounted = false;  // among the live objects
    bool isClone = false;    // released by its holder
};

// An object as the provider holds it, starting with CMPI's two pointers, and what it says.
template <class Cmpi, class Content>
struct Held final : Cmpi, Object {
    Held(Broker::State& itsState, Content itsContent);
    Content content;
};

struct PathContent {
    ObjectPath path;
    bool keepsTypes = false;  // keys are handed out with the types that they were given
};

struct InstanceContent {
    Instance instance;
    bool keepsTypes = false;
    std::optional<std::vector<std::string>> filter;  // the properties that it takes; without a value, all
};

struct ArrayContent {
    CMPIType elementType = CMPI_null;
    std::vector<Value> elements;
};

using StringObject = Held<CMPIString, std::string>;
using PathObject = Held<CMPIObjectPath, PathContent>;
using InstanceObject = Held<CMPIInstance, InstanceContent>;
using ArrayObject = Held<CMPIArray, ArrayContent>;
using DateTimeObject = Held<CMPIDateTime, std::string>;  // the 25-character form
using ContextObject = Held<CMPIContext, std::vector<NamedValue>>;
using ArgsObject = Held<CMPIArgs, std::vector<NamedValue>>;
using ResultObject = Held<CMPIResult, std::shared_ptr<Reply>>;

// The name of an object's table in fault plans.
template <class T>
inline constexpr const char* kTableOf = nullptr;
template <>
inline constexpr const char* kTableOf<StringObject> = "string";
template <>
inline constexpr const char* kTableOf<PathObject> = "path";
template <>
inline constexpr const char* kTableOf<InstanceObject> = "instance";
template <>
inline constexpr const char* kTableOf<ArrayObject> = "array";
template <>
inline constexpr const char* kTableOf<DateTimeObject> = "dateTime";
template <>
inline constexpr const char* kTableOf<ContextObject> = "context";
template <>
inline constexpr const char* kTableOf<ArgsObject> = "args";
template <>
inline constexpr const char* kTableOf<ResultObject> = "result";

// Objects that are freed together. Used by one thread at a time.
using Pool = std::vector<std::unique_ptr<Object>>;

// Makes a pool the innermost of the calling thread while it lives.
class PoolScope {
  public:
    PoolScope(const Broker::State& state, Pool& pool);
    ~PoolScope();
    PoolScope(const PoolScope&) = delete;
    PoolScope& operator=(const PoolScope&) = delete;

  private:
    const Pool* m_pool;
};

struct Broker::State {
    explicit State(BrokerOptions itsOptions);
    ~State();
    State(const State&) = delete;
    State& operator=(const State&) = delete;

    // Makes an object for the provider: owned by the calling thread's innermost pool, else by this state.
    template <class T, class Content>
    T* make(Content content) {
        auto object = std::make_unique<T>(*this, std::move(content));
        T* made = object.get();
        adopt(std::move(object));
        return made;
    }

    template <class T>
    T* makeClone(const T& original) {
        auto object = std::make_unique<T>(*this, original.content);
        T* made = object.get();
        adoptClone(std::move(object));
        return made;
    }

    void adopt(std::unique_ptr<Object> object);
    void adoptClone(std::unique_ptr<Object> object);
    CMPIrc release(Object& object);  // refused (60) unless it is a clone

    // The table of a kind of object.
    template <class Table>
    Table& table() {
        return std::get<Table>(objectTables);
    }
    // Whether an object of a kind was made by this broker; not for null.
    template <class Cmpi>
    bool hasMade(const Cmpi* object) {
        return object->ft == &table<std::remove_const_t<std::remove_pointer_t<decltype(Cmpi::ft)>>>();
    }

    // Records the call where calls are recorded, and gives what a planned fault makes it answer: nothing when it is to
    // go on. Throws std::runtime_error where that is planned.
    std::optional<CMPIrc> meet(const Slot& slot, const Carried& carried, bool answersPointer) {
        if (!watched.load(std::memory_order_relaxed)) return std::nullopt;
        return meetWatched(slot, carried, answersPointer);
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

    struct Plan {
        std::string slot;
        unsigned callsToGo;  // 1: the next call is the one
        Fault fault;
        CMPIrc rc;
    };
    std::atomic<bool> watched{false};  // calls are recorded or faults are planned
    mutable std::mutex watchMutex;     // guards the three below
    bool isRecording = false;
    std::vector<RecordedCall> calls;
    std::vector<Plan> plans;
    void updateWatched();  // with watchMutex held

    std::atomic<std::size_t> liveObjects{0};
    mutable std::mutex ownedMutex;  // guards the three below
    Pool strays;                    // made outside every request
    std::unordered_map<Object*, std::unique_ptr<Object>> clones;
    std::unordered_map<const CMPIContext*, std::unique_ptr<AttachedThread>> threads;

  private:
    std::optional<CMPIrc> meetWatched(const Slot& slot, const Carried& carried, bool answersPointer);
    std::optional<Plan> duePlan(const Slot& slot);
    AttachedThread* findThread(const CMPIContext* context);
};

template <class Cmpi, class Content>
Held<Cmpi, Content>::Held(Broker::State& itsState, Content itsContent)
    : Cmpi{}, Object(itsState), content(std::move(itsContent)) {
    if constexpr (std::is_same_v<Cmpi, CMPIString>) {
        this->hdl = content.data();  // old programs read the text there
    } else {
        this->hdl = this;
    }
    this->ft = &itsState.table<std::remove_const_t<std::remove_pointer_t<decltype(Cmpi::ft)>>>();
}

// The object behind what a provider holds; null for null. CMPI declares objects const that it changes, but none is.
template <class T, class Cmpi>
T* held(const Cmpi* object) {
    return static_cast<T*>(const_cast<Cmpi*>(object));
}

inline Broker::State* stateOf(const CMPIBroker* handle) {
    return handle == nullptr ? nullptr : static_cast<Broker::State*>(const_cast<void*>(handle->hdl));
}
inline Broker::State* stateOf(Broker::State* state) {
    return state;
}
inline Broker::State* stateOf(const Object* object) {
    return object == nullptr ? nullptr : &object->state;
}

inline CMPIStatus statusOf(CMPIrc rc) {
    CMPIStatus status{};
    status.rc = rc;
    return status;
}

// Runs a function that answers a value and, through a pointer that may be null, a status. `self` is the object or
// broker that it was called on; the body, which sets the code where it fails, is only run with one.
template <class Self, class Body>
auto perform(Self* self, const Slot& slot, const Carried& carried, CMPIStatus* status, Body body) {
    using Answer = std::invoke_result_t<Body, CMPIrc&>;
    Answer answer = Answer();
    CMPIrc rc = CMPI_RC_ERR_INVALID_HANDLE;
    if (Broker::State* state = stateOf(self)) {
        const auto fault = state->meet(slot, carried, std::is_pointer_v<Answer>);
        rc = fault.value_or(CMPI_RC_OK);
        if (!fault) answer = body(rc);
    }
    if (status != nullptr) *status = statusOf(rc);
    return answer;
}

// Runs a function that answers a status alone; the body answers its code.
template <class Self, class Body>
CMPIStatus performStatus(Self* self, const Slot& slot, const Carried& carried, Body body) {
    Broker::State* state = stateOf(self);
    if (state == nullptr) return statusOf(CMPI_RC_ERR_INVALID_HANDLE);
    const auto fault = state->meet(slot, carried, false);
    return statusOf(fault ? *fault : body());
}

// The two functions that all objects have.
template <class T, class Cmpi>
CMPIStatus releaseObject(Cmpi* self) {
    T* object = held<T>(self);
    return performStatus(object, {kTableOf<T>, "release"}, {}, [&] { return object->state.release(*object); });
}

template <class T, class Cmpi>
Cmpi* cloneObject(const Cmpi* self, CMPIStatus* rc) {
    const T* object = held<T>(self);
    return perform(object, {kTableOf<T>, "clone"}, {}, rc, [&](CMPIrc&) { return object->state.makeClone(*object); });
}

// Fills the tables as the options say.
void fillBrokerTable(CMPIBrokerFT& table, const BrokerOptions& options);
void fillEncapsulationTable(CMPIBrokerEncFT& table, const BrokerOptions& options);
void fillThreadTable(CMPIBrokerExtFT& table, const BrokerOptions& options);
void fillTable(CMPIStringFT& table, const BrokerOptions& options);
void fillTable(CMPIObjectPathFT& table, const BrokerOptions& options);
void fillTable(CMPIInstanceFT& table, const BrokerOptions& options);
void fillTable(CMPIArrayFT& table, const BrokerOptions& options);
void fillTable(CMPIDateTimeFT& table, const BrokerOptions& options);
void fillTable(CMPIContextFT& table, const BrokerOptions& options);
void fillTable(CMPIArgsFT& table, const BrokerOptions& options);
void fillTable(CMPIResultFT& table, const BrokerOptions& options);

}  // namespace broker

#endif
