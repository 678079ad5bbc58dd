#include "FaultyStart.h"

#include <filesystem>

namespace {

void prepareTerminal() {
    sandbox::writeLogConfiguration("Level=4\n");
    sandbox::writeSensorConfiguration("NvmeReadings=1\n");
    fakeclock::set({1000, 0});
    drives::clear();
    drives::attach("/dev/nvme0", drives::Drive{}, 313);
}

}  // namespace

std::ostream& operator<<(std::ostream& stream, const RequestCase& requestCase) {
    return stream << requestCase.what;
}

const std::vector<RequestCase>& allRequestCases() {
    using Entry = RequestCase::Entry;
    static const std::vector<RequestCase> all = {
        {"names of sensors", Entry::Names, classPath(SENSOR_CLASS), CMPI_RC_OK, 3},
        {"name of the event log", Entry::Names, classPath(LOG_CLASS), CMPI_RC_OK, 1},
        {"instances of sensors", Entry::Instances, classPath(SENSOR_CLASS), CMPI_RC_OK, 3},
        {"instances of the event log", Entry::Instances, classPath(LOG_CLASS), CMPI_RC_OK, 1},
        {"one sensor", Entry::Instance, namedPath(SENSOR_CLASS, "Chassis intake fan number one(00000001)"), CMPI_RC_OK,
         1},
        {"a drive's sensor", Entry::Instance, namedPath(SENSOR_CLASS, "SSD1 Temperature(00000001)"), CMPI_RC_OK, 1},
        {"the event log", Entry::Instance, namedPath(LOG_CLASS, LOG_NAME), CMPI_RC_OK, 1},
        {"an unknown sensor", Entry::Instance, namedPath(SENSOR_CLASS, "Nobody(00000001)"), CMPI_RC_ERR_FAILED, 0},
        {"another class", Entry::Instances, classPath("CIM_NumericSensor"), CMPI_RC_ERR_INVALID_CLASS, 0},
        {"another namespace", Entry::Names, classPath(SENSOR_CLASS, "root/interop"), CMPI_RC_ERR_INVALID_NAMESPACE, 0},
    };
    return all;
}

CMPIStatus enter(const CMPIInstanceMI* mi, RequestCase::Entry entry, const broker::Request& request,
                 const CMPIObjectPath* path) {
    auto* self = const_cast<CMPIInstanceMI*>(mi);
    switch (entry) {
        case RequestCase::Entry::Names:
            return mi->ft->enumerateInstanceNames(self, request.context(), request.result(), path);
        case RequestCase::Entry::Instances:
            return mi->ft->enumerateInstances(self, request.context(), request.result(), path, nullptr);
        default:
            return mi->ft->getInstance(self, request.context(), request.result(), path, nullptr);
    }
}

void expectAnswered(broker::Broker& broker, const CMPIInstanceMI* mi, const RequestCase& requestCase) {
    fakeclock::advanceMilliseconds(3000);  // every reading is due
    const Answered answered = send(broker, mi, requestCase, [](const auto& call) { call(); });
    EXPECT_EQ(answered.status, requestCase.status) << requestCase;
    EXPECT_EQ(answered.doneCalls, 1U) << requestCase;
    EXPECT_EQ(answered.count, requestCase.count) << requestCase;
}

void expectAllAnswered(broker::Broker& broker, const CMPIInstanceMI* mi) {
    for (const RequestCase& requestCase : allRequestCases()) expectAnswered(broker, mi, requestCase);
}

void checkAndDeleteLog() {
    parseLog(sandbox::readLog());
    std::filesystem::remove("/var/log/tarn/tarn.log");
}

ProcessOutcome FaultyStartTest::onTheTerminal(const std::function<void()>& body) {
    return inFreshProcess([&body] {
        prepareTerminal();
        body();
    });
}
