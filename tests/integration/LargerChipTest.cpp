// The provider with a chip library that writes to more than the provider reads; under the address sanitizer each byte
// that it writes beyond the provider's records would be found.
#include "Provider.h"

namespace {

using testing::Contains;
using testing::ElementsAre;

class LargerChipTest : public ProviderTest {};

TEST_F(LargerChipTest, HasRoomForItsMembersAndFindsItZero) {
    inFreshProcess([] {
        LoadedProvider loaded;
        EXPECT_THAT(takeLog(), Contains("Info SensorProvider created and initialised"));

        fakeclock::advanceMilliseconds(1000);
        const broker::Reply all = loaded.provider.enumerateInstances(classPath(SENSOR_CLASS));
        EXPECT_EQ(all.status.rc, CMPI_RC_OK);
        EXPECT_THAT(propertyOf(all, "Name"), ElementsAre("Sensor 1(00000001)", "Sensor 2(00000002)"));
        EXPECT_THAT(propertyOf(all, "CurrentReading"), ElementsAre("41", "42"));
        EXPECT_THAT(propertyOf(all, "UpperThresholdNonCritical"), ElementsAre("80", "80"));

        fakeclock::advanceMilliseconds(1000);
        const broker::Reply one = loaded.provider.getInstance(namedPath(SENSOR_CLASS, "Sensor 2(00000002)"));
        EXPECT_EQ(one.status.rc, CMPI_RC_OK);
        EXPECT_THAT(propertyOf(one, "CurrentReading"), ElementsAre("42"));

        const broker::Reply log = loaded.provider.enumerateInstances(classPath(LOG_CLASS));
        EXPECT_EQ(log.status.rc, CMPI_RC_OK);
        ASSERT_EQ(log.instances.size(), 1U);
        EXPECT_EQ(log.instances[0].findProperty("LogLines")->elements.size(), 2U);
    });
}

TEST_F(LargerChipTest, ComesAndGoesWithEachProvider) {
    inFreshProcess([] {
        LoadedProvider loaded;
        for (int i = 0; i < 3; ++i) {
            loaded.provider.cleanUp(false);
            broker::InstanceProvider again(loaded.library, "SensorProvider", loaded.broker);
            EXPECT_EQ(again.enumerateInstances(classPath(SENSOR_CLASS)).status.rc, CMPI_RC_OK);
        }
    });
}

}  // namespace
