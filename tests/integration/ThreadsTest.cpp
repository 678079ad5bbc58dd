#include <set>

#include "OnThreads.h"
#include "Provider.h"

namespace {

using testing::Contains;

constexpr unsigned THREAD_COUNT = 8;

class ThreadsTest : public ProviderTest {};

TEST_F(ThreadsTest, FactoryCalledByAllAtOnceMakesOneProvider) {
    inFreshProcess([] {
        useScenario(chipSensor(1, "CPU", {50}));
        broker::Broker broker;
        const broker::ProviderLibrary library(PROVIDER_LIBRARY);
        std::vector<CMPIInstanceMI*> records(THREAD_COUNT);
        onThreads(THREAD_COUNT, [&](unsigned i) {
            CMPIStatus status = {CMPI_RC_ERR_FAILED, nullptr};
            const broker::Request request(broker);
            records[i] = library.factory("SensorProvider")(broker.handle(), request.context(), &status);
            EXPECT_EQ(status.rc, CMPI_RC_OK);
        });
        EXPECT_EQ(std::set<CMPIInstanceMI*>(records.begin(), records.end()).size(), 1U);
        EXPECT_THAT(takeLog(), Contains("Info SensorProvider created and initialised").Times(1));
        records[0]->ft->cleanup(records[0], nullptr, 1);
    });
}

void expectAnswer(const broker::Reply& reply, std::size_t count) {
    EXPECT_EQ(reply.status.rc, CMPI_RC_OK);
    EXPECT_EQ(reply.doneCalls, 1U);
    EXPECT_EQ(reply.paths.size() + reply.instances.size(), count);
}

TEST_F(ThreadsTest, MixedRequestsOfEightThreadsAreAllAnswered) {
    inFreshProcess([] {
        useScenario(chipSensor(1, "CPU", {50, 51, 52}) + chipSensor(2, "Fan", {900, 901, 902}) +
                    "[event-log]\nlines = [\"one\", \"two\"]\n");
        LoadedProvider loaded;
        onThreads(THREAD_COUNT, [&](unsigned thread) {
            for (unsigned i = 0; i < 50; ++i) {
                broker::InstanceProvider& provider = loaded.provider;
                switch ((thread + i) % 6) {
                    case 0:
                        expectAnswer(provider.enumerateInstanceNames(classPath(SENSOR_CLASS)), 2);
                        break;
                    case 1:
                        expectAnswer(provider.enumerateInstances(classPath(SENSOR_CLASS)), 2);
                        break;
                    case 2:
                        expectAnswer(provider.getInstance(namedPath(SENSOR_CLASS, "Fan(00000002)")), 1);
                        break;
                    case 3:
                        expectAnswer(provider.enumerateInstances(classPath(LOG_CLASS)), 1);
                        break;
                    case 4:
                        expectAnswer(provider.getInstance(namedPath(LOG_CLASS, LOG_NAME)), 1);
                        break;
                    default:
                        fakeclock::advanceMilliseconds(500);
                        EXPECT_EQ(provider.deleteInstance(classPath(SENSOR_CLASS)).status.rc, 7);
                }
            }
        });
        EXPECT_EQ(loaded.broker.liveObjects(), 0U);
        takeLog();  // every line of the log is whole
    });
}

}  // namespace
