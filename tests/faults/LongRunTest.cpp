// Requests of all kinds for a long time, with all that can be made to fail failing now and then. The number of requests
// is that of the environment variable LONG_RUN_REQUESTS; see tools/long-run.
#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <iomanip>
#include <iostream>
#include <map>
#include <random>
#include <set>

#include "Provider.h"
#include "ResourceUsage.h"
#include "StreamsTo.h"

namespace {

namespace fs = std::filesystem;

constexpr unsigned SHORT_RUN = 20000;
constexpr unsigned EPOCHS = 10;  // the library is unloaded and loaded again between them, as when it has been idle
constexpr std::uintmax_t LOG_LIMIT = 65536;
constexpr std::uintmax_t LONGEST_LINE = 4096 + 64;
const fs::path LOG_FILE = "/var/log/tarn/tarn.log";

unsigned requestedLength() {
    const char* text = std::getenv("LONG_RUN_REQUESTS");
    return text == nullptr ? SHORT_RUN : static_cast<unsigned>(std::strtoul(text, nullptr, 10));
}

// Readings fail a few times in every few hundred, and the event log too.
std::string faultyScenario() {
    std::string scenario = "model = \"grebel\"\n";
    for (unsigned handle = 0; handle < 4; ++handle)
        scenario += chipSensor(handle, "Probe " + std::to_string(handle), {40, 41, 42, 43});
    scenario += "[event-log]\nlines = [\"one\", \"two\", \"three\"]\n";
    for (unsigned call = 100; call < 20000; call += 400) {
        const std::string range = "from-call = " + std::to_string(call) + "\ncalls = 5\n";
        scenario += chipFault("read", range + "status = 0x10005\n") + chipFault("event-log", range + "status = 7\n");
    }
    return scenario;
}

class LongRunTest : public ProviderTest {
  protected:
    // A number from 0 to one below.
    unsigned random(unsigned below) { return static_cast<unsigned>(m_random() % below); }

    void planFault(broker::Broker& broker) {
        static const char* const slots[] = {"getNameSpace",  "getClassName", "getKey",     "getCharPtr",
                                            "newObjectPath", "newInstance",  "newArray",   "setProperty",
                                            "addKey",        "setElementAt", "returnDone", "returnInstance"};
        switch (random(8)) {
            case 0:
                drives::failCall(1 + random(3), random(2) == 0 ? EIO : EINTR);
                break;
            case 1:
                fakeclock::failCall(1 + random(6), EINVAL);
                break;
            default:
                broker.planFault(slots[random(std::size(slots))], 1 + random(5), static_cast<broker::Fault>(random(3)));
        }
    }

    void meddleWithLog() {
        std::error_code ignored;
        switch (random(4)) {
            case 0:
                fs::remove_all(LOG_FILE, ignored);
                break;
            case 1:
                fs::rename(LOG_FILE, "/var/log/tarn/old.log", ignored);
                break;
            case 2:
                if (fs::is_regular_file(LOG_FILE)) fs::resize_file(LOG_FILE, 0, ignored);
                break;
            default:
                fs::remove_all(LOG_FILE, ignored);
                fs::create_directory(LOG_FILE, ignored);
        }
    }

    struct Sent {
        broker::Reply reply;
        std::set<int> statuses;  // the right ones while nothing but the chip fails
    };

    Sent sendAny(broker::InstanceProvider& provider) {
        const unsigned label = random(5);
        const unsigned handle = random(5);
        const std::string sensor = "Probe " + std::to_string(label) + "(0000000" + std::to_string(handle) + ")";
        switch (random(10)) {
            case 0:
                return {provider.enumerateInstanceNames(classPath(SENSOR_CLASS)), {0}};
            case 1:
                return {provider.enumerateInstances(classPath(SENSOR_CLASS)), {0, 1}};
            case 2:
                return {provider.enumerateInstanceNames(classPath(LOG_CLASS)), {0}};
            case 3:
                return {provider.enumerateInstances(classPath(LOG_CLASS)), {0, 1}};
            case 4:
                return {provider.getInstance(namedPath(LOG_CLASS, LOG_NAME)), {0, 1}};
            case 5:
                return {provider.getInstance(namedPath(SENSOR_CLASS, "SSD1 Temperature(00000001)")), {0}};
            case 6:
                return {provider.enumerateInstances(classPath("CIM_Sensor")), {5}};
            case 7:
                return {provider.deleteInstance(classPath(SENSOR_CLASS)), {7}};
            default:
                return {provider.getInstance(namedPath(SENSOR_CLASS, sensor)),
                        label == handle && label < 4 ? std::set<int>{0, 1} : std::set<int>{1}};
        }
    }

    void sendOne(LoadedProvider& loaded) {
        fakeclock::advanceMilliseconds(random(400));
        const bool isDisturbed = random(8) == 0;
        if (isDisturbed) planFault(loaded.broker);
        if (random(300) == 0) meddleWithLog();
        const auto [reply, statuses] = sendAny(loaded.provider);
        const int status = reply.status.rc;
        ++m_answers[status];
        const unsigned done = status == CMPI_RC_ERR_NOT_SUPPORTED ? 0 : 1;
        if (isDisturbed) {
            ASSERT_THAT(status, testing::AnyOf(0, 1, 5, 7));
            ASSERT_LE(reply.doneCalls, done);
        } else {
            ASSERT_EQ(statuses.count(status), 1U) << status << ", and not " << testing::PrintToString(statuses);
            ASSERT_EQ(reply.doneCalls, done);
        }
        ASSERT_EQ(loaded.broker.liveObjects(), 0U);
        loaded.broker.clearFaults();
        drives::failCall(0, 0);
        fakeclock::failCall(0, 0);
        if (fs::is_regular_file(LOG_FILE)) m_longestLog = std::max(m_longestLog, fs::file_size(LOG_FILE));
    }

    void runEpoch(unsigned requests) {
        const StreamsTo silence(StreamsTo::nowhere());
        fs::remove_all(LOG_FILE);
        LoadedProvider loaded;
        for (unsigned i = 0; i < requests && !HasFatalFailure(); ++i) sendOne(loaded);
        // Once nothing fails any longer, all is as it was.
        for (int i = 0; i < 20; ++i) loaded.provider.enumerateInstances(classPath(SENSOR_CLASS));
        EXPECT_EQ(namesOf(loaded.provider.enumerateInstanceNames(classPath(SENSOR_CLASS)).paths).size(), 5U);
    }

    std::mt19937 m_random{20260209};
    std::map<int, unsigned> m_answers;
    std::uintmax_t m_longestLog = 0;
};

TEST_F(LongRunTest, ManyRequestsWithFaultsGainNothing) {
    sandbox::writeLogConfiguration("Level=4\nMaxLength=" + std::to_string(LOG_LIMIT) + "\n");
    sandbox::writeSensorConfiguration("NvmeReadings=1\n");
    useScenario(faultyScenario());
    fakeclock::set({1000, 0});
    drives::attach("/dev/nvme0", drives::Drive{}, 313);
    const unsigned perEpoch = requestedLength() / EPOCHS;
    ResourceUsage settled{};
    for (unsigned epoch = 1; epoch <= EPOCHS && !HasFatalFailure(); ++epoch) {
        runEpoch(perEpoch);
        const ResourceUsage now = ResourceUsage::now();
        std::cout << std::setw(8) << epoch * perEpoch << " requests: " << now << std::endl;
        if (epoch == 2) settled = now;
        if (epoch > 2) expectNoneGained(settled, now);
    }
    for (const auto& [status, count] : m_answers) std::cout << "status " << status << ": " << count << " times\n";
    std::cout << "longest log: " << m_longestLog << " bytes\n";
    EXPECT_LE(m_longestLog, LOG_LIMIT + LONGEST_LINE);
    EXPECT_GT(m_longestLog, 0U);
    EXPECT_GT(m_answers[0], m_answers[1]);
    EXPECT_GT(m_answers[1], 0U);
    drives::clear();
    fakeclock::useReal();
}

}  // namespace
