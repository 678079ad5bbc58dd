#include "broker/Broker.h"

#include <utility>

#include "broker/State.h"
#include "broker/Values.h"

namespace broker {

Broker::Broker(BrokerOptions options) : m_state(std::make_unique<State>(std::move(options))) {}
Broker::~Broker() = default;

const CMPIBroker* Broker::handle() const {
    return &m_state->handle;
}

void Broker::planFault(const std::string& slot, unsigned nth, Fault fault, CMPIrc rc) {
    m_state->watch.planFault(slot, nth, fault, rc);
}
void Broker::clearFaults() {
    m_state->watch.clearFaults();
}
std::size_t Broker::faultsLeft() const {
    return m_state->watch.faultsLeft();
}

void Broker::startRecording() {
    m_state->watch.startRecording();
}
std::vector<RecordedCall> Broker::recordedCalls() const {
    return m_state->watch.recordedCalls();
}

std::size_t Broker::liveObjects() const {
    return m_state->liveObjects.load();
}

std::size_t Broker::liveClones() const {
    const std::lock_guard lock(m_state->ownedMutex);
    return m_state->clones.size();
}

struct Request::Objects {
    explicit Objects(Broker::State& itsState) : state(itsState), scope(itsState, pool) {}

    // Makes an object for the provider to be given: owned, but not counted.
    template <typename T, typename Content>
    T* give(Content content) {
        auto object = state.build<T>(std::move(content));
        T* made = object.get();
        pool.push_back(std::move(object));
        return made;
    }

    Broker::State& state;
    Pool pool;
    PoolScope scope;
    std::shared_ptr<Reply> reply = std::make_shared<Reply>();
    const CMPIContext* context = give<ContextObject>(
        NamedValues{{CMPIInitNameSpace, Value::ofText("root/cimv2")}, {CMPIInvocationFlags, Value::ofUnsigned(0)}});
    const CMPIResult* result = give<ResultObject>(reply);
};

Request::Request(Broker& broker) : m_objects(std::make_unique<Objects>(broker.state())) {}
Request::~Request() = default;

const CMPIContext* Request::context() const {
    return m_objects->context;
}
const CMPIResult* Request::result() const {
    return m_objects->result;
}

CMPIObjectPath* Request::makePath(const ObjectPath& path) {
    return m_objects->give<PathObject>(PathContent{path, true});
}

CMPIInstance* Request::makeInstance(const Instance& instance) {
    return m_objects->give<InstanceObject>(InstanceContent{instance, true, std::nullopt});
}

const Reply& Request::reply() const {
    return *m_objects->reply;
}

ObjectPath copyOut(const CMPIObjectPath* path) {
    return held<PathObject>(path)->content.path;
}
Instance copyOut(const CMPIInstance* instance) {
    return held<InstanceObject>(instance)->content.instance;
}

Status copyOut(const CMPIStatus& status) {
    Status copy;
    copy.rc = status.rc;
    if (status.msg != nullptr) copy.message = held<StringObject>(status.msg)->content;
    return copy;
}

}  // namespace broker
