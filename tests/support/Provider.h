// What the tests of the loaded provider share.
#ifndef ZELSENSORS_TESTS_PROVIDER_H
#define ZELSENSORS_TESTS_PROVIDER_H

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "CimText.h"
#include "FakeClock.h"
#include "FakeDrives.h"
#include "FreshProcess.h"
#include "LogLines.h"
#include "OutputCapture.h"
#include "Sandbox.h"
#include "broker/Broker.h"
#include "broker/ProviderLibrary.h"

std::string format(const char* form, ...) __attribute__((format(printf, 1, 2)));

// Scenario text for the simulated chip. A sensor gives its readings one per call, the first at start-up, and stays at
// the last; `more` holds further lines of its table.
std::string chipSensor(unsigned handle, const std::string& label, const std::vector<int>& readings,
                       const std::string& more = "");
std::string chipFault(const std::string& operation, const std::string& more);
// Makes it the scenario of the chips that this process makes from now on.
void useScenario(const std::string& toml);

constexpr char SENSOR_CLASS[] = "TQS_NumericSensor";
constexpr char LOG_CLASS[] = "TQS_SystemEventLog";
constexpr char LOG_NAME[] = "Quorvel POS System Event Log";

broker::ObjectPath classPath(const std::string& className, const std::string& nameSpace = "root/cimv2");
broker::ObjectPath namedPath(const std::string& className, const broker::Value& name);
broker::ObjectPath namedPath(const std::string& className, const std::string& name);

// The key "Name" of each.
Strings namesOf(const std::vector<broker::ObjectPath>& paths);
// One property's values over all instances: texts as they are, others as in describe() without their types.
Strings propertyOf(const broker::Reply& reply, const std::string& property);

// The provider, loaded and made by its factory.
struct LoadedProvider {
    explicit LoadedProvider(broker::BrokerOptions options = {});

    broker::Broker broker;
    broker::ProviderLibrary library;
    broker::InstanceProvider provider;
};

// "Debug SensorProvider::constructor": the log's lines since the last call, in this process.
Strings takeLog();
// So many of them, the last ones; fails the test where there are fewer.
Strings takeLastLog(std::size_t count);

// The log at its most detailed, and a process for each test: the library's state lives as long as it is loaded.
class ProviderTest : public testing::Test {
  protected:
    void SetUp() override;
    // Fails the test where the body failed. The clock stands at 1000 s when the body starts.
    static ProcessOutcome inFreshProcess(const std::function<void()>& body);
};

#endif
