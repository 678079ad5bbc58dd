// What no scenario can show: a chip library that throws exceptions, and how the provider enters it. This program is its
// own chip library: the loaded provider takes the program's symbols before those of the simulated one.
#include <array>
#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <stdexcept>
#include <thread>

#include "Provider.h"
#include "chip.h"

namespace {

std::string s_throwing;   // the operation that throws
std::string s_disturbed;  // the operation in which `s_disturbance` happens
std::function<void()> s_disturbance;

int s_chips = 0;
std::atomic<int> s_callsInside{0};
std::atomic<bool> s_hadTwoInside{false};

// Stays a moment in the library, so that another caller would be met.
class Visit {
  public:
    Visit() {
        if (s_callsInside.fetch_add(1) != 0) s_hadTwoInside = true;
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    ~Visit() { s_callsInside.fetch_sub(1); }
    Visit(const Visit&) = delete;
    Visit& operator=(const Visit&) = delete;
};

void perform(const std::string& operation) {
    const Visit visit;
    if (operation == s_disturbed) s_disturbance();
    if (operation == s_throwing) throw std::runtime_error(operation + " thrown");
    if (operation + " number" == s_throwing) throw 42;
}

}  // namespace

CChip::CChip() : m_state(nullptr) {
    perform("constructor");
    ++s_chips;
}

CChip::~CChip() {
    m_state = nullptr;
    --s_chips;
}

sscode CChip::Initialise() {
    perform("Initialise");
    return 0;
}

sscode CChip::EnumerateSensorHandles(CSensorHandleList& handles) {
    handles.push_back(1);
    perform("EnumerateSensorHandles");
    return 0;
}

sscode CChip::GetSensorInformation(unsigned int, CSensorInformation& information) {
    information.name = "CPU";
    perform("GetSensorInformation");
    return 0;
}

sscode CChip::ReadSensor(unsigned int, CSensorReading& reading) {
    reading.value = 50;
    perform("ReadSensor");
    return 0;
}

sscode CChip::GetSystemEventLog(CSystemEventLog& log) {
    log.lines = {"one"};
    perform("GetSystemEventLog");
    return 0;
}

CPOSSystem CPOSSystem::s_instance;

bool CPOSSystem::IsGrebel() {
    perform("IsGrebel");
    return false;
}

bool CPOSSystem::IsZan() {
    return false;
}

namespace {

using testing::Contains;
using testing::Each;
using testing::ElementsAre;
using testing::Not;
using testing::StartsWith;

class OwnChipTest : public ProviderTest {};

TEST_F(OwnChipTest, ExceptionWhileStartingStaysInTheFactory) {
    for (const char* operation : {"constructor", "Initialise", "Initialise number", "EnumerateSensorHandles",
                                  "GetSensorInformation", "ReadSensor", "IsGrebel"}) {
        SCOPED_TRACE(operation);
        inFreshProcess([operation] {
            s_throwing = operation;
            LoadedProvider loaded;  // checks that the factory answers a record and status 0
            s_throwing.clear();
            const Strings log = takeLog();
            EXPECT_THAT(log.back(), StartsWith("Error SensorProvider_Create_InstanceMI - "));
            EXPECT_THAT(log, Not(Contains("Info SensorProvider created and initialised")));
            EXPECT_EQ(loaded.provider.enumerateInstances(classPath(SENSOR_CLASS)).status.rc, 16);
            // The lock is free again.
            const broker::InstanceProvider again(loaded.library, "SensorProvider", loaded.broker);
            EXPECT_EQ(again.mi(), loaded.provider.mi());
        });
        sandbox::reset();
        sandbox::writeLogConfiguration("Level=4\n");
    }
}

TEST_F(OwnChipTest, ExceptionInARequestIsThatRequestsFailure) {
    inFreshProcess([] {
        LoadedProvider loaded;
        const broker::ObjectPath cpu = namedPath(SENSOR_CLASS, "CPU(00000001)");
        fakeclock::advanceMilliseconds(1000);
        s_throwing = "ReadSensor number";
        const broker::Reply failed = loaded.provider.getInstance(cpu);
        EXPECT_EQ(failed.status.rc, CMPI_RC_ERR_FAILED);
        EXPECT_EQ(failed.doneCalls, 1U);
        EXPECT_THAT(takeLog(), Contains("Error SensorProvider::getInstance -  Unknown Exception").Times(1));
        s_throwing = "GetSystemEventLog";
        EXPECT_EQ(loaded.provider.enumerateInstances(classPath(LOG_CLASS)).status.rc, CMPI_RC_ERR_FAILED);
        s_throwing.clear();
        EXPECT_EQ(loaded.provider.getInstance(cpu).status.rc, CMPI_RC_OK);
        EXPECT_EQ(loaded.provider.enumerateInstances(classPath(LOG_CLASS)).status.rc, CMPI_RC_OK);
    });
}

TEST_F(OwnChipTest, OneThreadAtATimeIsInTheChipLibrary) {
    inFreshProcess([] {
        LoadedProvider loaded;
        std::vector<std::thread> threads;
        for (int i = 0; i < 8; ++i)
            threads.emplace_back([&loaded, i] {
                const char* className = i % 2 == 0 ? SENSOR_CLASS : LOG_CLASS;
                for (int request = 0; request < 5; ++request) {
                    fakeclock::advanceMilliseconds(1000);
                    EXPECT_EQ(loaded.provider.enumerateInstances(classPath(className)).status.rc, CMPI_RC_OK);
                }
            });
        for (std::thread& thread : threads) thread.join();
        EXPECT_FALSE(s_hadTwoInside);
    });
}

// Where they waited for the lock, which the factory or the request around them holds, these would never end.
TEST_F(OwnChipTest, ReadsAreRefusedWithoutWaitingWhileTheProviderStarts) {
    inFreshProcess([] {
        LoadedProvider loaded;
        loaded.provider.cleanUp(false);
        std::vector<CMPIrc> answers;
        s_disturbed = "Initialise";
        s_disturbance = [&] {
            answers.push_back(loaded.provider.enumerateInstanceNames(classPath(SENSOR_CLASS)).status.rc);
            answers.push_back(loaded.provider.enumerateInstances(classPath(LOG_CLASS)).status.rc);
            answers.push_back(loaded.provider.getInstance(namedPath(SENSOR_CLASS, "CPU(00000001)")).status.rc);
        };
        const broker::InstanceProvider again(loaded.library, "SensorProvider", loaded.broker);
        EXPECT_THAT(answers, Each(CMPI_RC_ERR_METHOD_NOT_AVAILABLE));
        EXPECT_EQ(answers.size(), 3U);
    });
}

TEST_F(OwnChipTest, ChangesAndQueriesAreRefusedWithoutWaitingForARequest) {
    inFreshProcess([] {
        LoadedProvider loaded;
        const broker::ObjectPath cpu = namedPath(SENSOR_CLASS, "CPU(00000001)");
        std::vector<CMPIrc> answers;
        s_disturbed = "ReadSensor";
        s_disturbance = [&] {
            answers.push_back(loaded.provider.createInstance(cpu, {}).status.rc);
            answers.push_back(loaded.provider.modifyInstance(cpu, {}).status.rc);
            answers.push_back(loaded.provider.deleteInstance(cpu).status.rc);
            answers.push_back(loaded.provider.execQuery(cpu, "SELECT * FROM TQS_NumericSensor", "WQL").status.rc);
        };
        fakeclock::advanceMilliseconds(1000);
        EXPECT_EQ(loaded.provider.getInstance(cpu).status.rc, CMPI_RC_OK);
        EXPECT_THAT(answers, Each(CMPI_RC_ERR_NOT_SUPPORTED));
        EXPECT_EQ(answers.size(), 4U);
    });
}

TEST_F(OwnChipTest, FactoryReturnsOnlyWhenTheProviderIsReady) {
    inFreshProcess([] {
        broker::Broker broker;
        const broker::ProviderLibrary library(PROVIDER_LIBRARY);
        std::array<std::unique_ptr<broker::InstanceProvider>, 8> providers;  // live to the end of all requests
        std::vector<std::thread> threads;
        for (auto& provider : providers)
            threads.emplace_back([&broker, &library, &provider] {
                provider = std::make_unique<broker::InstanceProvider>(library, "SensorProvider", broker);
                EXPECT_EQ(provider->enumerateInstances(classPath(SENSOR_CLASS)).status.rc, CMPI_RC_OK);
            });
        for (std::thread& thread : threads) thread.join();
        EXPECT_EQ(s_chips, 1);
    });
}

TEST_F(OwnChipTest, CleanupDeletesTheChipObject) {
    inFreshProcess([] {
        LoadedProvider loaded;
        EXPECT_EQ(s_chips, 1);
        loaded.provider.cleanUp(true);
        EXPECT_EQ(s_chips, 0);
    });
}

}  // namespace
