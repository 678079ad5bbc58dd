// What the chip library raises ends where it concerns the provider. This program is its own chip library: the loaded
// provider takes the program's symbols before those of the simulated one.
#include <stdexcept>

#include "Provider.h"
#include "chip.h"

namespace {

std::string throwing;  // the operation that throws

void perform(const std::string& operation) {
    if (operation == throwing) throw std::runtime_error(operation + " raised");
    if (operation + " number" == throwing) throw 42;
}

}  // namespace

CChip::CChip() : m_state(nullptr) {
    perform("constructor");
}

CChip::~CChip() {
    m_state = nullptr;
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
using testing::ElementsAre;
using testing::Not;
using testing::StartsWith;

class ThrowingChipTest : public ProviderTest {};

TEST_F(ThrowingChipTest, ExceptionWhileStartingStaysInTheFactory) {
    for (const char* operation : {"constructor", "Initialise", "Initialise number", "EnumerateSensorHandles",
                                  "GetSensorInformation", "ReadSensor", "IsGrebel"}) {
        SCOPED_TRACE(operation);
        inFreshProcess([operation] {
            throwing = operation;
            LoadedProvider loaded;  // checks that the factory answers a record and status 0
            throwing.clear();
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

TEST_F(ThrowingChipTest, ExceptionInARequestIsThatRequestsFailure) {
    inFreshProcess([] {
        LoadedProvider loaded;
        const broker::ObjectPath cpu = namedPath(SENSOR_CLASS, "CPU(00000001)");
        fakeclock::advanceMilliseconds(1000);
        throwing = "ReadSensor number";
        const broker::Reply failed = loaded.provider.getInstance(cpu);
        EXPECT_EQ(failed.status.rc, CMPI_RC_ERR_FAILED);
        EXPECT_EQ(failed.doneCalls, 1U);
        EXPECT_THAT(takeLog(), Contains("Error SensorProvider::getInstance -  Unknown Exception").Times(1));
        throwing = "GetSystemEventLog";
        EXPECT_EQ(loaded.provider.enumerateInstances(classPath(LOG_CLASS)).status.rc, CMPI_RC_ERR_FAILED);
        throwing.clear();
        EXPECT_EQ(loaded.provider.getInstance(cpu).status.rc, CMPI_RC_OK);
        EXPECT_EQ(loaded.provider.enumerateInstances(classPath(LOG_CLASS)).status.rc, CMPI_RC_OK);
    });
}

}  // namespace
