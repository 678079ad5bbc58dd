#include "broker/Objects.h"

#include "broker/State.h"

namespace broker {

Object::~Object() {
    if (isCounted) state.liveObjects.fetch_sub(1, std::memory_order_relaxed);
}

}  // namespace broker
