#include "broker/Pools.h"

#include <algorithm>
#include <iterator>

namespace broker {
namespace {

struct ThreadPool {
    const Broker::State* state;
    Pool* pool;
};
// The pools of the calling thread, of all brokers, the innermost last.
thread_local std::vector<ThreadPool> s_pools;

}  // namespace

PoolScope::PoolScope(const Broker::State& state, Pool& pool) : m_pool(&pool) {
    s_pools.push_back({&state, &pool});
}

PoolScope::~PoolScope() {
    const auto found = std::find_if(s_pools.rbegin(), s_pools.rend(),
                                    [this](const ThreadPool& candidate) { return candidate.pool == m_pool; });
    if (found != s_pools.rend()) s_pools.erase(std::next(found).base());
}

Pool* innermostPool(const Broker::State& state) {
    const auto found = std::find_if(s_pools.rbegin(), s_pools.rend(),
                                    [&](const ThreadPool& candidate) { return candidate.state == &state; });
    return found == s_pools.rend() ? nullptr : found->pool;
}

}  // namespace broker
