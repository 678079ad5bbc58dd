// Who owns what a thread makes: the innermost request that runs on it.
#ifndef ZELSENSORS_BROKER_POOLS_H
#define ZELSENSORS_BROKER_POOLS_H

#include <memory>
#include <vector>

#include "broker/Objects.h"

namespace broker {

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

// The calling thread's innermost pool of that broker; null: there is none.
Pool* innermostPool(const Broker::State& state);

}  // namespace broker

#endif
