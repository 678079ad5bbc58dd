// What the three read requests do alike before they look for anything: namespace and class.
#include "Provider.h"

namespace {

using testing::ElementsAre;

struct RequestKind {
    const char* entry;
    const char* opening;       // a format: class, then namespace
    const char* thrownStatus;  // the beginning
    const char* unknownException;
    const char* noneFound;
    broker::Reply (*send)(broker::InstanceProvider& provider, const broker::ObjectPath& path);
    CMPIStatus (*call)(CMPIInstanceMI* mi, const broker::Request& request, const CMPIObjectPath* path);
};

const RequestKind KINDS[] = {
    {"drvEnumInstanceNames",
     "Debug SensorProvider::enumInstanceNames - Reference object path: class = %s, namespace = %s\n",
     "Error SensorProvider::enumerateInstanceNames - CMPIStatus ",
     "Error SensorProvider::enumerateInstanceNames -  Unknown Exception",
     "Debug SensorProvider::enumerateInstanceNames - No instances found",
     [](broker::InstanceProvider& provider, const broker::ObjectPath& path) {
         return provider.enumerateInstanceNames(path);
     },
     [](CMPIInstanceMI* mi, const broker::Request& request, const CMPIObjectPath* path) {
         return mi->ft->enumerateInstanceNames(mi, request.context(), request.result(), path);
     }},
    {"drvEnumInstances", "Debug SensorProvider::enumInstances - Reference object path: class = %s, namespace = %s\n",
     "Error SensorProvider::enumerateInstances - CMPIStatus ",
     "Error SensorProvider::enumerateInstances -  Unknown Exception",
     "Debug SensorProvider::enumerateInstances - No instances found",
     [](broker::InstanceProvider& provider, const broker::ObjectPath& path) {
         return provider.enumerateInstances(path);
     },
     [](CMPIInstanceMI* mi, const broker::Request& request, const CMPIObjectPath* path) {
         return mi->ft->enumerateInstances(mi, request.context(), request.result(), path, nullptr);
     }},
    {"drvGetInstance", "Debug SensorProvider::getInstance - Object path: class = %s, namespace = %s",
     "Error SensorProvider::getInstance - CMPIStatus ", "Error SensorProvider::getInstance -  Unknown Exception",
     "Debug SensorProvider::getInstance - No instance found",
     [](broker::InstanceProvider& provider, const broker::ObjectPath& path) { return provider.getInstance(path); },
     [](CMPIInstanceMI* mi, const broker::Request& request, const CMPIObjectPath* path) {
         return mi->ft->getInstance(mi, request.context(), request.result(), path, nullptr);
     }},
};

std::string replaced(const char* form, const std::string& className, const std::string& nameSpace) {
    std::string text = form;
    text.replace(text.find("%s"), 2, className);
    return text.replace(text.find("%s"), 2, nameSpace);
}

broker::ObjectPath cpuIn(const std::string& className, const std::string& nameSpace) {
    broker::ObjectPath path = namedPath(className, "CPU(00000001)");
    path.nameSpace = nameSpace;
    return path;
}

class RequestOpeningTest : public ProviderTest {
  protected:
    // The request ends at once with this status, having logged its opening alone.
    static void expectRefusal(const std::string& className, const std::string& nameSpace, CMPIrc rc) {
        inFreshProcess([&] {
            useScenario(chipSensor(1, "CPU", {50}));
            LoadedProvider loaded;
            const void* provider = loaded.provider.mi()->hdl;
            for (const RequestKind& kind : KINDS) {
                takeLog();
                const broker::Reply reply = kind.send(loaded.provider, cpuIn(className, nameSpace));
                EXPECT_EQ(reply.status.rc, rc) << kind.entry;
                EXPECT_FALSE(reply.status.message.has_value()) << kind.entry;
                EXPECT_EQ(reply.doneCalls, 1U) << kind.entry;
                EXPECT_TRUE(reply.paths.empty() && reply.instances.empty()) << kind.entry;
                EXPECT_THAT(takeLog(), ElementsAre(format("Debug %s - provider=%p", kind.entry, provider),
                                                   replaced(kind.opening, className, nameSpace)));
            }
        });
    }
};

TEST_F(RequestOpeningTest, NamespaceIsTakenInAnyCase) {
    inFreshProcess([] {
        useScenario(chipSensor(1, "CPU", {50}));
        LoadedProvider loaded;
        for (const RequestKind& kind : KINDS) {
            const broker::Reply reply = kind.send(loaded.provider, cpuIn(SENSOR_CLASS, "ROOT/CIMV2"));
            EXPECT_EQ(reply.status.rc, CMPI_RC_OK) << kind.entry;
            EXPECT_EQ(reply.paths.size() + reply.instances.size(), 1U) << kind.entry;
        }
    });
}

TEST_F(RequestOpeningTest, OtherNamespaceIsRefused) {
    expectRefusal(SENSOR_CLASS, "root/cimv22", CMPI_RC_ERR_INVALID_NAMESPACE);
}

TEST_F(RequestOpeningTest, EachCharacterOfTheNamespaceCounts) {
    inFreshProcess([] {
        LoadedProvider loaded;
        const std::string nameSpace = "root/cimv2";
        for (std::size_t i = 0; i < nameSpace.size(); ++i) {
            std::string other = nameSpace;
            other[i] = '_';
            const std::string shorter = nameSpace.substr(0, i);
            for (const RequestKind& kind : KINDS) {
                EXPECT_EQ(kind.send(loaded.provider, cpuIn(SENSOR_CLASS, other)).status.rc, 3) << other;
                EXPECT_EQ(kind.send(loaded.provider, cpuIn(SENSOR_CLASS, shorter)).status.rc, 3) << shorter;
            }
        }
    });
}

TEST_F(RequestOpeningTest, ClassInAnotherCaseIsUnknown) {
    expectRefusal("TQS_numericSensor", "root/cimv2", CMPI_RC_ERR_INVALID_CLASS);
}

TEST_F(RequestOpeningTest, NamespaceIsLookedAtBeforeTheClass) {
    expectRefusal("No_Such", "interop", CMPI_RC_ERR_INVALID_NAMESPACE);
}

// A path whose namespace or class name is not there, or has no text.
CMPIString* noString(const CMPIObjectPath*, CMPIStatus*) {
    return nullptr;
}

CMPIString* noText(const CMPIObjectPath*, CMPIStatus*) {
    static CMPIString empty{};
    return &empty;
}

TEST_F(RequestOpeningTest, MissingNamespaceOrClassTextIsAFailure) {
    inFreshProcess([] {
        useScenario(chipSensor(1, "CPU", {50}));
        LoadedProvider loaded;
        for (const RequestKind& kind : KINDS) {
            for (const auto function : {noString, noText}) {
                for (const auto slot : {&CMPIObjectPathFT::getNameSpace, &CMPIObjectPathFT::getClassName}) {
                    takeLog();
                    broker::Request request(loaded.broker);
                    CMPIObjectPath* path = request.makePath(cpuIn(SENSOR_CLASS, "root/cimv2"));
                    CMPIObjectPathFT table = *path->ft;
                    table.*slot = function;
                    path->ft = &table;
                    const CMPIStatus status = kind.call(loaded.provider.mi(), request, path);
                    EXPECT_EQ(status.rc, CMPI_RC_ERR_FAILED);
                    EXPECT_EQ(request.reply().doneCalls, 1U);
                    EXPECT_THAT(takeLastLog(2), ElementsAre(kind.unknownException, kind.noneFound));
                }
            }
        }
    });
}

// As brokers do that write the status without looking whether a record was given.
const CMPIObjectPathFT* s_wholePath = nullptr;

CMPIString* nameSpaceWithStatus(const CMPIObjectPath* path, CMPIStatus* status) {
    *status = {CMPI_RC_ERR_ACCESS_DENIED, nullptr};
    return s_wholePath->getNameSpace(path, nullptr);
}

CMPIString* classNameWithStatus(const CMPIObjectPath* path, CMPIStatus* status) {
    *status = {CMPI_RC_ERR_ACCESS_DENIED, nullptr};
    return s_wholePath->getClassName(path, nullptr);
}

TEST_F(RequestOpeningTest, BrokerIsGivenAStatusRecordWhichIsNotLookedAt) {
    inFreshProcess([] {
        useScenario(chipSensor(1, "CPU", {50}));
        LoadedProvider loaded;
        for (const RequestKind& kind : KINDS) {
            broker::Request request(loaded.broker);
            CMPIObjectPath* path = request.makePath(cpuIn(SENSOR_CLASS, "root/cimv2"));
            s_wholePath = path->ft;
            CMPIObjectPathFT table = *path->ft;
            table.getNameSpace = nameSpaceWithStatus;
            table.getClassName = classNameWithStatus;
            path->ft = &table;
            EXPECT_EQ(kind.call(loaded.provider.mi(), request, path).rc, CMPI_RC_OK) << kind.entry;
            EXPECT_EQ(request.reply().paths.size() + request.reply().instances.size(), 1U) << kind.entry;
        }
    });
}

CMPIString* s_thrownMessage = nullptr;

CMPIString* throwStatusObject(const CMPIObjectPath*, CMPIStatus*) {
    throw CMPIStatus{CMPI_RC_ERR_ACCESS_DENIED, s_thrownMessage};
}

TEST_F(RequestOpeningTest, StatusObjectThatIsThrownIsLoggedWithCodeAndText) {
    inFreshProcess([] {
        useScenario(chipSensor(1, "CPU", {50}));
        LoadedProvider loaded;
        for (const RequestKind& kind : KINDS) {
            CMPIString withoutText = {nullptr, nullptr};
            CMPIString* const withText = CMNewString(loaded.broker.handle(), "keep out", nullptr);
            for (CMPIString* message : {withText, &withoutText, static_cast<CMPIString*>(nullptr)}) {
                takeLog();
                broker::Request request(loaded.broker);
                s_thrownMessage = message;
                CMPIObjectPath* path = request.makePath(cpuIn(SENSOR_CLASS, "root/cimv2"));
                CMPIObjectPathFT table = *path->ft;
                table.getClassName = throwStatusObject;
                path->ft = &table;
                const CMPIStatus status = kind.call(loaded.provider.mi(), request, path);
                EXPECT_EQ(status.rc, CMPI_RC_ERR_FAILED);
                EXPECT_EQ(request.reply().doneCalls, 1U);
                EXPECT_THAT(takeLastLog(2),
                            ElementsAre(std::string(kind.thrownStatus) + (message == withText ? "2, keep out" : "2, "),
                                        kind.noneFound));
            }
        }
    });
}

// A result that takes one path or instance, and throws a status object with the next.
const CMPIResultFT* s_wholeResult = nullptr;
unsigned s_taken = 0;

void refuseAfterOne() {
    if (++s_taken > 1) throw CMPIStatus{CMPI_RC_ERR_ACCESS_DENIED, nullptr};
}

CMPIStatus takeOnePath(const CMPIResult* result, const CMPIObjectPath* path) {
    refuseAfterOne();
    return s_wholeResult->returnObjectPath(result, path);
}

CMPIStatus takeOneInstance(const CMPIResult* result, const CMPIInstance* instance) {
    refuseAfterOne();
    return s_wholeResult->returnInstance(result, instance);
}

TEST_F(RequestOpeningTest, StatusObjectThatIsThrownLaterKeepsWhatWasReturned) {
    inFreshProcess([] {
        useScenario(chipSensor(1, "CPU", {50}) + chipSensor(2, "Fan", {900}));
        LoadedProvider loaded;
        for (const RequestKind& kind : {KINDS[0], KINDS[1]}) {
            takeLog();
            broker::Request request(loaded.broker);
            auto* result = const_cast<CMPIResult*>(request.result());  // the broker made it changeable
            s_wholeResult = result->ft;
            s_taken = 0;
            CMPIResultFT table = *result->ft;
            table.returnObjectPath = takeOnePath;
            table.returnInstance = takeOneInstance;
            result->ft = &table;
            const CMPIStatus status =
                kind.call(loaded.provider.mi(), request, request.makePath(cpuIn(SENSOR_CLASS, "root/cimv2")));
            EXPECT_EQ(status.rc, CMPI_RC_ERR_FAILED) << kind.entry;
            const broker::Reply reply = request.reply();
            EXPECT_EQ(reply.doneCalls, 1U) << kind.entry;
            EXPECT_EQ(reply.paths.size() + reply.instances.size(), 1U) << kind.entry;
            EXPECT_EQ(takeLog().back(), std::string(kind.thrownStatus) + "2, ") << kind.entry;
            result->ft = s_wholeResult;
        }
    });
}

}  // namespace
