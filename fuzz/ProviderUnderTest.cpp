#include "ProviderUnderTest.h"

#include "Property.h"

extern "C" CMPIInstanceMI* SensorProvider_Create_InstanceMI(const CMPIBroker* broker, const CMPIContext* context,
                                                            CMPIStatus* status);

namespace {

CMPIInstanceMI* make(broker::Broker& broker) {
    const broker::Request request(broker);
    CMPIStatus status = {CMPI_RC_ERR_FAILED, nullptr};
    CMPIInstanceMI* mi = SensorProvider_Create_InstanceMI(broker.handle(), request.context(), &status);
    require(mi != nullptr && status.rc == CMPI_RC_OK, "the factory succeeds whatever happens");
    return mi;
}

CMPIStatus call(CMPIInstanceMI* mi, ProviderUnderTest::Operation operation, broker::Request& request,
                const CMPIObjectPath* path) {
    switch (operation) {
        case ProviderUnderTest::Operation::Names:
            return mi->ft->enumerateInstanceNames(mi, request.context(), request.result(), path);
        case ProviderUnderTest::Operation::Instances:
            return mi->ft->enumerateInstances(mi, request.context(), request.result(), path, nullptr);
        case ProviderUnderTest::Operation::Get:
            break;
    }
    return mi->ft->getInstance(mi, request.context(), request.result(), path, nullptr);
}

}  // namespace

ProviderUnderTest::ProviderUnderTest(broker::Broker& broker) : m_broker(broker), m_mi(make(broker)) {}

ProviderUnderTest::~ProviderUnderTest() {
    if (!m_isCleanedUp) cleanUp();
}

broker::Reply ProviderUnderTest::ask(Operation operation, const broker::ObjectPath& path) {
    broker::Reply reply;
    {
        broker::Request request(m_broker);
        const CMPIStatus status = call(m_mi, operation, request, request.makePath(path));
        reply = request.reply();
        reply.status = broker::copyOut(status);
    }
    requireSame(static_cast<long long>(m_broker.liveObjects()), 0, "the number of objects left after a request");
    requireSame(static_cast<long long>(m_broker.liveClones()), 0, "the number of clones left after a request");
    require(!reply.status.message, "a status carries no message");
    require(reply.data.empty(), "no bare values are returned");
    return reply;
}

void ProviderUnderTest::cleanUp() {
    const broker::Request request(m_broker);
    const CMPIStatus status = m_mi->ft->cleanup(m_mi, request.context(), 1);
    requireSame(status.rc, 0, "the status of the cleanup");
    m_isCleanedUp = true;
}
