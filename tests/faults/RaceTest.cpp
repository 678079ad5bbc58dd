// Eight threads at once, for the thread sanitizer above all. A process is not forked and no function is replaced that
// the sanitizer keeps an eye on.
#include <atomic>
#include <filesystem>
#include <fstream>
#include <set>
#include <thread>

#include "OnThreads.h"
#include "Provider.h"
#include "log.h"

namespace {

namespace fs = std::filesystem;
using testing::Contains;

constexpr unsigned THREADS = 8;
constexpr char LOG_FILE[] = "/var/log/tarn/tarn.log";

std::string threeSensorsAndALog() {
    std::string scenario = "[event-log]\nlines = [\"one\", \"two\"]\n";
    for (unsigned handle = 1; handle <= 3; ++handle) scenario += chipSensor(handle, "Probe", {40, 41, 42, 43, 44, 45});
    return scenario;
}

class RaceTest : public ProviderTest {};

void expectWholeSensors(const broker::Reply& reply, const Strings& names) {
    EXPECT_EQ(reply.status.rc, CMPI_RC_OK);
    EXPECT_EQ(reply.doneCalls, 1U);
    EXPECT_EQ(propertyOf(reply, "Name"), names);
    for (const std::string& reading : propertyOf(reply, "CurrentReading")) {
        EXPECT_GE(std::stoi(reading), 40);
        EXPECT_LE(std::stoi(reading), 45);
    }
    for (const broker::Instance& instance : reply.instances) EXPECT_GE(instance.properties.size(), 14U);
}

void expectWholeLog(const broker::Reply& reply) {
    EXPECT_EQ(reply.status.rc, CMPI_RC_OK);
    EXPECT_EQ(reply.doneCalls, 1U);
    EXPECT_EQ(propertyOf(reply, "LogLines"), Strings{"['one', 'two']"});
}

// One of the things that an object manager does with a provider at any time.
void act(unsigned choice, const broker::ProviderLibrary& library, broker::Broker& broker) {
    // A thread of its own calls the factory for a class before it sends requests for it. Cleanup comes once, at the
    // end.
    const broker::Request factoryCall(broker);
    CMPIStatus status{CMPI_RC_ERR_FAILED, nullptr};
    CMPIInstanceMI* mi = library.factory("SensorProvider")(broker.handle(), factoryCall.context(), &status);
    EXPECT_EQ(status.rc, CMPI_RC_OK);
    const auto request = [&](auto function, const broker::ObjectPath& path, auto... properties) {
        broker::Request own(broker);
        const CMPIStatus answered = function(mi, own.context(), own.result(), own.makePath(path), properties...);
        broker::Reply reply = own.reply();
        reply.status = broker::copyOut(answered);
        return reply;
    };
    const Strings all = {"Probe(00000001)", "Probe(00000002)", "Probe(00000003)"};
    const char** const every = nullptr;
    switch (choice % 7) {
        case 0:
            EXPECT_EQ(namesOf(request(mi->ft->enumerateInstanceNames, classPath(SENSOR_CLASS)).paths), all);
            break;
        case 1:
            expectWholeSensors(request(mi->ft->enumerateInstances, classPath(SENSOR_CLASS), every), all);
            break;
        case 2:
            expectWholeSensors(request(mi->ft->getInstance, namedPath(SENSOR_CLASS, all[1]), every), {all[1]});
            break;
        case 3:
            expectWholeLog(request(mi->ft->enumerateInstances, classPath(LOG_CLASS), every));
            break;
        case 4:
            expectWholeLog(request(mi->ft->getInstance, namedPath(LOG_CLASS, LOG_NAME), every));
            break;
        case 5:
            EXPECT_EQ(namesOf(request(mi->ft->enumerateInstanceNames, classPath(LOG_CLASS)).paths), Strings{LOG_NAME});
            break;
        default:
            fakeclock::advanceMilliseconds(700);
            EXPECT_EQ(request(mi->ft->deleteInstance, classPath(SENSOR_CLASS)).status.rc, CMPI_RC_ERR_NOT_SUPPORTED);
    }
}

TEST_F(RaceTest, FactoriesRequestsAndTheFirstLogLineComeTogether) {
    useScenario(threeSensorsAndALog());
    fakeclock::set({1000, 0});
    for (unsigned round = 0; round < 10; ++round) {
        broker::Broker broker;
        OutputCapture output(STDOUT_FILENO);
        OutputCapture error(STDERR_FILENO);
        {
            const broker::ProviderLibrary library(PROVIDER_LIBRARY);
            onThreads(THREADS, [&](unsigned thread) {
                for (unsigned i = 0; i < 14; ++i) act(thread * 3 + i, library, broker);
            });
            EXPECT_EQ(broker.liveObjects(), 0U);
            broker::InstanceProvider(library, "SensorProvider", broker).cleanUp(true);
        }
        const std::string said = output.take();
        EXPECT_EQ(said.find("Logger created\n"), said.rfind("Logger created\n")) << "the sink was made twice";
        EXPECT_NE(said.find("Logger created\n"), std::string::npos);
        if (HasFailure()) std::cerr << said;  // which failures were written to
        EXPECT_THAT(takeLog(), Contains("Info SensorProvider created and initialised").Times(1));
    }
    fakeclock::useReal();
}

TEST_F(RaceTest, ManyThreadsLogWhileTheFileComesAndGoes) {
    OutputCapture output(STDOUT_FILENO);
    std::atomic<bool> over{false};
    std::thread meddler([&] {
        for (unsigned i = 0; !over; ++i) {
            std::error_code ignored;
            if (i % 3 == 0) fs::remove(LOG_FILE, ignored);
            if (i % 3 == 1) fs::rename(LOG_FILE, "/var/log/tarn/old.log", ignored);
            if (i % 3 == 2) fs::resize_file(LOG_FILE, 0, ignored);
            std::this_thread::yield();
        }
    });
    onThreads(THREADS, [](unsigned thread) {
        for (unsigned i = 0; i < 100; ++i) {
            Log(LOG_INFO, "thread %u, formatted line %u", thread, i);
            WLog(LOG_INFO, L"thread %u, wide line %u", thread, i);
            LogQuick(LOG_INFO, "a quick line");
        }
    });
    over = true;
    meddler.join();
    if (HasFailure()) std::cerr << output.take();
    output.take();
    fs::remove(LOG_FILE);
    fs::remove("/var/log/tarn/old.log");  // where the open stream may lead
    LogQuick(LOG_INFO, "the last line");
    EXPECT_THAT(messagesAt("Info"), testing::ElementsAre("the last line"));
    EXPECT_EQ(output.take(), "link count=0\n");
}

}  // namespace
