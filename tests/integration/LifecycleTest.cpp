#include <unistd.h>

#include "Provider.h"

namespace {

using testing::AllOf;
using testing::Contains;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

constexpr char BANNER[] =
    "Info Quorvel POS Sensor Drivers for Linux TARNL Version 3.10.15, Built Tue Sep  5 22:35:48 2023";
constexpr char CREATED[] = "Info SensorProvider created and initialised";

class LifecycleTest : public ProviderTest {
  protected:
    static std::string brokerLine(const broker::Broker& broker, int version = 200) {
        const void* address = broker.handle();
        return format("SensorProvider_Create_InstanceMI, broker=%p, version=%i", address, version);
    }
};

TEST_F(LifecycleTest, FactoryMakesAndInitialisesTheProvider) {
    inFreshProcess([] {
        useScenario(chipSensor(1, "CPU", {50}));
        broker::Broker broker;
        const broker::ProviderLibrary library(PROVIDER_LIBRARY);
        OutputCapture error(STDERR_FILENO);
        const broker::InstanceProvider provider(library, "SensorProvider", broker);
        EXPECT_EQ(error.take(), brokerLine(broker) + format("\nSensorProvider_Create_InstanceMI - pid=%i\n", getpid()));
        EXPECT_THAT(takeLog(), ElementsAre(BANNER, "Debug " + brokerLine(broker), "Debug SensorProvider::constructor",
                                           "Debug SensorProvider::initialise",
                                           "Debug SensorProvider::InitSensorProvider", CREATED));
    });
}

TEST_F(LifecycleTest, RecordHasTheVersionsNameAndEntries) {
    inFreshProcess([] {
        useScenario("");
        const LoadedProvider loaded;
        const CMPIInstanceMI* mi = loaded.provider.mi();
        ASSERT_NE(mi, nullptr);
        EXPECT_NE(mi->hdl, nullptr);
        EXPECT_EQ(mi->ft->ftVersion, 100);
        EXPECT_EQ(mi->ft->miVersion, 100);
        EXPECT_STREQ(mi->ft->miName, "instanceSensorProvider");
        EXPECT_NE(mi->ft->cleanup, nullptr);
        EXPECT_NE(mi->ft->enumerateInstanceNames, nullptr);
        EXPECT_NE(mi->ft->enumerateInstances, nullptr);
        EXPECT_NE(mi->ft->getInstance, nullptr);
        EXPECT_NE(mi->ft->createInstance, nullptr);
        EXPECT_NE(mi->ft->modifyInstance, nullptr);
        EXPECT_NE(mi->ft->deleteInstance, nullptr);
        EXPECT_NE(mi->ft->execQuery, nullptr);
    });
}

TEST_F(LifecycleTest, FactoryAnswersSuccessWhateverTheStatusHeld) {
    inFreshProcess([] {
        useScenario("");
        broker::Broker broker;
        const broker::ProviderLibrary library(PROVIDER_LIBRARY);
        CMPIStatus status = {CMPI_RC_ERR_FAILED, nullptr};
        CMPIInstanceMI* mi = library.factory("SensorProvider")(broker.handle(), nullptr, &status);
        EXPECT_EQ(status.rc, CMPI_RC_OK);
        EXPECT_EQ(library.factory("SensorProvider")(broker.handle(), nullptr, nullptr), mi);
        mi->ft->cleanup(mi, nullptr, 1);
    });
}

TEST_F(LifecycleTest, FirstLogCallMakesTheSink) {
    inFreshProcess([] {
        useScenario("");
        sandbox::writeLogConfiguration("Level=0\n");
        OutputCapture output(STDOUT_FILENO);
        const LoadedProvider loaded;
        EXPECT_EQ(output.take(), "Logger created\n");
    });
}

TEST_F(LifecycleTest, BrokerAndTableVersionsDoNotMatter) {
    for (const int version : {0, 1, 100}) {
        inFreshProcess([version] {
            useScenario(chipSensor(1, "CPU", {50}));
            broker::BrokerOptions options;
            options.brokerVersion = 0;
            options.tableVersion = version;
            options.hasLevel200Slots = false;
            LoadedProvider loaded(options);
            EXPECT_THAT(takeLog(), Contains("Debug " + brokerLine(loaded.broker, version)));
            EXPECT_EQ(loaded.provider.enumerateInstanceNames(classPath(SENSOR_CLASS)).status.rc, CMPI_RC_OK);
            EXPECT_EQ(loaded.provider.enumerateInstances(classPath(LOG_CLASS)).status.rc, CMPI_RC_OK);
            EXPECT_EQ(loaded.provider.getInstance(namedPath(SENSOR_CLASS, "CPU(00000001)")).status.rc, CMPI_RC_OK);
        });
        sandbox::reset();
        sandbox::writeLogConfiguration("Level=4\n");
    }
}

TEST_F(LifecycleTest, SecondFactoryCallHandsOutTheSameRecordAndMakesNothing) {
    inFreshProcess([] {
        useScenario(chipSensor(1, "CPU", {50}));
        LoadedProvider loaded;
        const void* handle = loaded.provider.mi()->hdl;
        takeLog();
        broker::InstanceProvider again(loaded.library, "SensorProvider", loaded.broker);
        EXPECT_EQ(again.mi(), loaded.provider.mi());
        EXPECT_EQ(again.mi()->hdl, handle);
        EXPECT_THAT(takeLog(), ElementsAre(BANNER, "Debug " + brokerLine(loaded.broker)));
    });
}

TEST_F(LifecycleTest, MissingServiceDriverEndsTheStart) {
    inFreshProcess([] {
        useScenario(chipSensor(1, "CPU", {50}) + chipFault("initialise", "calls = 1\nstatus = 0x0000beef"));
        const LoadedProvider loaded;
        EXPECT_THAT(takeLastLog(2), ElementsAre("Debug SensorProvider::initialise",
                                                "Error SensorProvider::initialize - Initialise Service Driver failed - "
                                                "sscode=0x0000beef"));
    });
}

TEST_F(LifecycleTest, WithoutTheServiceDriverEveryReadIsRefused) {
    inFreshProcess([] {
        useScenario(chipSensor(1, "CPU", {50}) + chipFault("initialise", "calls = 1\nstatus = 1"));
        LoadedProvider loaded;
        takeLog();
        OutputCapture error(STDERR_FILENO);
        const auto expectRefusal = [&](const broker::Reply& reply, const char* entry, const char* namedEntry) {
            EXPECT_EQ(reply.status.rc, CMPI_RC_ERR_METHOD_NOT_AVAILABLE);
            EXPECT_FALSE(reply.status.message.has_value());
            EXPECT_EQ(reply.doneCalls, 0U);
            const std::string refusal = " - provider not initialised - is the kernel driver loaded?";
            EXPECT_THAT(takeLog(), ElementsAre(format("Debug %s - provider=%p", entry, loaded.provider.mi()->hdl),
                                               "Error " + (namedEntry + refusal)));
        };
        expectRefusal(loaded.provider.enumerateInstanceNames(classPath(SENSOR_CLASS)), "drvEnumInstanceNames",
                      "drvEnumInstanceNames");
        EXPECT_EQ(error.take(), format("drvEnumInstanceNames - provider=%p\n", loaded.provider.mi()->hdl));
        expectRefusal(loaded.provider.enumerateInstances(classPath(SENSOR_CLASS)), "drvEnumInstances",
                      "drvEnumInstances");
        expectRefusal(loaded.provider.getInstance(namedPath(SENSOR_CLASS, "CPU(00000001)")), "drvGetInstance",
                      "drvEnumInstanceNames");
        EXPECT_EQ(error.take(), "");
    });
}

TEST_F(LifecycleTest, ProviderThatFailedToStartStaysDeadUntilCleanup) {
    inFreshProcess([] {
        useScenario(chipFault("initialise", "status = 1"));
        LoadedProvider loaded;
        useScenario(chipSensor(1, "CPU", {50}));
        {
            broker::InstanceProvider again(loaded.library, "SensorProvider", loaded.broker);
            EXPECT_EQ(again.enumerateInstances(classPath(SENSOR_CLASS)).status.rc, CMPI_RC_ERR_METHOD_NOT_AVAILABLE);
            takeLog();
        }
        EXPECT_THAT(takeLog(), Contains("Debug deleting Chip object"));  // it was kept
        broker::InstanceProvider anew(loaded.library, "SensorProvider", loaded.broker);
        EXPECT_EQ(anew.enumerateInstances(classPath(SENSOR_CLASS)).status.rc, CMPI_RC_OK);
    });
}

TEST_F(LifecycleTest, CleanupDestroysTheProvider) {
    inFreshProcess([] {
        useScenario(chipSensor(1, "CPU", {50}));
        LoadedProvider loaded;
        const void* provider = loaded.provider.mi()->hdl;
        takeLog();
        OutputCapture error(STDERR_FILENO);
        const broker::Status status = loaded.provider.cleanUp(true);
        EXPECT_EQ(status.rc, CMPI_RC_OK);
        EXPECT_FALSE(status.message.has_value());
        EXPECT_EQ(error.take(), format("drvInstanceCleanup - provider=%p, terminating=1\n", provider));
        EXPECT_THAT(takeLog(), ElementsAre(format("Debug drvInstanceCleanup - provider=%p, terminating=1", provider),
                                           StartsWith("Debug SensorProvider::destructor - chip=0x0x"),
                                           "Debug deleting Chip object", "Info SensorProvider - provider destroyed"));
    });
}

TEST_F(LifecycleTest, CleanupWithoutTerminatingDestroysTooAndTheFactoryBuildsAnew) {
    inFreshProcess([] {
        useScenario(chipSensor(1, "CPU", {50}));
        LoadedProvider loaded;
        loaded.provider.cleanUp(false);
        EXPECT_THAT(takeLog(),
                    AllOf(Contains(EndsWith(", terminating=0")), Contains("Info SensorProvider - provider destroyed")));
        useScenario(chipSensor(2, "Fan", {900}));
        broker::InstanceProvider again(loaded.library, "SensorProvider", loaded.broker);
        EXPECT_EQ(again.mi(), loaded.provider.mi());
        EXPECT_THAT(takeLog(), Contains(CREATED));
        EXPECT_THAT(namesOf(again.enumerateInstanceNames(classPath(SENSOR_CLASS)).paths), ElementsAre("Fan(00000002)"));
    });
}

TEST_F(LifecycleTest, RecordKeepsItsHandleUntilTheNextProviderIsMade) {
    inFreshProcess([] {
        useScenario(chipSensor(1, "CPU", {50}));
        LoadedProvider loaded;
        const void* first = loaded.provider.mi()->hdl;
        EXPECT_NE(first, nullptr);
        loaded.provider.cleanUp(true);
        EXPECT_EQ(loaded.provider.mi()->hdl, first);
        takeLog();
        broker::InstanceProvider again(loaded.library, "SensorProvider", loaded.broker);
        again.enumerateInstances(classPath(SENSOR_CLASS));
        EXPECT_THAT(takeLog(), Contains(format("Debug drvEnumInstances - provider=%p", again.mi()->hdl)));
    });
}

TEST_F(LifecycleTest, AfterCleanupReadsAreRefusedAndCleanupIsHarmless) {
    inFreshProcess([] {
        useScenario(chipSensor(1, "CPU", {50}));
        LoadedProvider loaded;
        loaded.provider.cleanUp(true);
        takeLog();
        EXPECT_EQ(loaded.provider.enumerateInstanceNames(classPath(SENSOR_CLASS)).status.rc, 16);
        EXPECT_EQ(loaded.provider.enumerateInstances(classPath(SENSOR_CLASS)).status.rc, 16);
        EXPECT_EQ(loaded.provider.getInstance(namedPath(LOG_CLASS, LOG_NAME)).status.rc, 16);
        takeLog();
        EXPECT_EQ(loaded.provider.cleanUp(true).rc, CMPI_RC_OK);
        EXPECT_THAT(takeLog(), ElementsAre("Debug drvInstanceCleanup - provider=(nil), terminating=1"));
    });
}

class RefusalTest : public ProviderTest {
  protected:
    // What the request writes to standard output; its status must be the refusal.
    template <typename Request>
    static std::string refusal(Request request) {
        OutputCapture output(STDOUT_FILENO);
        OutputCapture error(STDERR_FILENO);
        const broker::Reply reply = request();
        EXPECT_EQ(reply.status.rc, CMPI_RC_ERR_NOT_SUPPORTED);
        EXPECT_FALSE(reply.status.message.has_value());
        EXPECT_EQ(reply.doneCalls, 0U);
        EXPECT_EQ(error.take(), "");
        return output.take();
    }

    static void expectRefusals(broker::InstanceProvider& provider) {
        const broker::ObjectPath path = namedPath(SENSOR_CLASS, "CPU(00000001)");
        broker::Instance instance;
        instance.path = path;
        takeLog();
        EXPECT_EQ(refusal([&] { return provider.createInstance(path, instance); }),
                  "drvCreateInstance - Unsupported\n");
        EXPECT_EQ(refusal([&] { return provider.modifyInstance(path, instance); }),
                  "drvModifyInstance - Unsupported\n");
        EXPECT_EQ(refusal([&] { return provider.deleteInstance(path); }), "drvDeleteInstance - Unsupported\n");
        EXPECT_EQ(refusal([&] { return provider.execQuery(path, "select * from TQS_NumericSensor", "WQL"); }),
                  "drvExecQuery - Unsupported\n");
        EXPECT_THAT(takeLog(), IsEmpty());
    }
};

TEST_F(RefusalTest, ChangesAndQueriesAreUnsupported) {
    inFreshProcess([] {
        useScenario(chipSensor(1, "CPU", {50}));
        LoadedProvider loaded;
        expectRefusals(loaded.provider);
    });
}

TEST_F(RefusalTest, ChangesAndQueriesAreUnsupportedWithoutAProviderToo) {
    inFreshProcess([] {
        useScenario("");
        LoadedProvider loaded;
        loaded.provider.cleanUp(true);
        expectRefusals(loaded.provider);
    });
}

}  // namespace
