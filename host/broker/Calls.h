// How every function of a CMPI table runs: after the watch has met the call, and only with a broker or object to run
// on.
#ifndef ZELSENSORS_BROKER_CALLS_H
#define ZELSENSORS_BROKER_CALLS_H

#include <optional>
#include <type_traits>

#include "broker/State.h"

namespace broker {

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
template <typename Self, typename Body>
auto perform(Self* self, const Slot& slot, const CallArgument& argument, CMPIStatus* status, Body body) {
    using Answer = std::invoke_result_t<Body, CMPIrc&>;
    Answer answer = Answer();
    CMPIrc rc = CMPI_RC_ERR_INVALID_HANDLE;
    if (Broker::State* state = stateOf(self)) {
        const auto fault = state->watch.recordCall(slot, argument, std::is_pointer_v<Answer>);
        rc = fault.value_or(CMPI_RC_OK);
        if (!fault) answer = body(rc);
    }
    if (status != nullptr) *status = statusOf(rc);
    return answer;
}

// Runs a function that answers a status alone; the body answers its code.
template <typename Self, typename Body>
CMPIStatus performStatus(Self* self, const Slot& slot, const CallArgument& argument, Body body) {
    Broker::State* state = stateOf(self);
    if (state == nullptr) return statusOf(CMPI_RC_ERR_INVALID_HANDLE);
    const auto fault = state->watch.recordCall(slot, argument, false);
    return statusOf(fault ? *fault : body());
}

// The two functions that all objects have.
template <typename T, typename Cmpi>
CMPIStatus releaseObject(Cmpi* self) {
    T* object = held<T>(self);
    return performStatus(object, {TABLE_OF<T>, "release"}, {}, [&] { return object->state.release(*object); });
}

template <typename T, typename Cmpi>
Cmpi* cloneObject(const Cmpi* self, CMPIStatus* rc) {
    const T* object = held<T>(self);
    return perform(object, {TABLE_OF<T>, "clone"}, {}, rc, [&](CMPIrc&) { return object->state.makeClone(*object); });
}

}  // namespace broker

#endif
