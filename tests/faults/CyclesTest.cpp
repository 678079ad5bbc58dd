// Loading, starting, serving, stopping, starting again and unloading, over and over.
#include <filesystem>

#include "Provider.h"
#include "ResourceUsage.h"
#include "StreamsTo.h"

namespace {

constexpr int WARM_UP = 50;
constexpr int CYCLES = 1000;

class CyclesTest : public ProviderTest {
  protected:
    static void expectService(broker::InstanceProvider& provider) {
        const broker::Reply sensors = provider.enumerateInstances(classPath(SENSOR_CLASS));
        ASSERT_EQ(sensors.status.rc, CMPI_RC_OK);
        ASSERT_EQ(sensors.instances.size(), 2U);
        ASSERT_EQ(provider.getInstance(namedPath(LOG_CLASS, LOG_NAME)).instances.size(), 1U);
    }

    static void runOnce(broker::Broker& broker) {
        std::filesystem::remove("/var/log/tarn/tarn.log");
        const broker::ProviderLibrary library(PROVIDER_LIBRARY);
        for (const bool terminating : {false, true}) {
            broker::InstanceProvider provider(library, "SensorProvider", broker);
            expectService(provider);
            provider.cleanUp(terminating);
        }
    }
};

TEST_F(CyclesTest, NothingIsGainedByLoadingAndUnloading) {
    useScenario(chipSensor(1, "CPU", {50}) + chipSensor(2, "Fan", {900}) + "[event-log]\nlines = [\"one\"]\n");
    broker::Broker broker;
    ResourceUsage before{};
    {
        const StreamsTo silence(StreamsTo::nowhere());
        for (int i = 0; i < CYCLES + WARM_UP && !HasFailure(); ++i) {
            if (i == WARM_UP) before = ResourceUsage::now();
            runOnce(broker);
        }
    }
    ResourceUsage after = ResourceUsage::now();
    // Those that hold the silenced streams.
    after.descriptors += 2;
    std::cout << "before: " << before << "\nafter " << CYCLES << " cycles: " << after << "\n";
    expectNoneGained(before, after);
}

}  // namespace
