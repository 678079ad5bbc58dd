#include <algorithm>

#include "Provider.h"

namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;

constexpr char UNKNOWN_EXCEPTION_IN_GET[] = "Error SensorProvider::getInstance -  Unknown Exception";
constexpr char NO_SUCH_INSTANCE[] = "Debug SensorProvider::getInstance - No instance found";

std::string opening(const std::string& className) {
    return "Debug SensorProvider::getInstance - Object path: class = " + className + ", namespace = root/cimv2";
}

std::string nameLine(const std::string& name) {
    return "Debug SensorProvider::getInstance - Object path: instance name = '" + name + "'";
}

void expectFailure(const broker::Reply& reply) {
    EXPECT_EQ(reply.status.rc, CMPI_RC_ERR_FAILED);
    EXPECT_FALSE(reply.status.message.has_value());
    EXPECT_EQ(reply.doneCalls, 1U);
    EXPECT_THAT(reply.instances, IsEmpty());
}

class GetInstanceTest : public ProviderTest {
  protected:
    void SetUp() override {
        ProviderTest::SetUp();
        if (!IsSkipped()) useScenario(chipSensor(1, "CPU", {50, 51, 52}) + chipSensor(2, "Fan", {900, 901}));
    }
};

TEST_F(GetInstanceTest, GivesTheSensorOfThatNameAsAnEnumerationDoes) {
    inFreshProcess([] {
        LoadedProvider loaded;
        const broker::Reply all = loaded.provider.enumerateInstances(classPath(SENSOR_CLASS));
        ASSERT_EQ(all.instances.size(), 2U);
        takeLog();
        loaded.broker.startRecording();
        const broker::Reply reply = loaded.provider.getInstance(namedPath(SENSOR_CLASS, "Fan(00000002)"), {"Caption"});
        EXPECT_EQ(reply.status.rc, CMPI_RC_OK);
        EXPECT_FALSE(reply.status.message.has_value());
        EXPECT_EQ(reply.doneCalls, 1U);
        EXPECT_EQ(reply.instances, std::vector<broker::Instance>{all.instances[1]});
        Strings calls = describe(loaded.broker.recordedCalls());
        ASSERT_GT(calls.size(), 9U);
        // The key is fetched for each sensor that it is compared with.
        EXPECT_THAT(
            Strings(calls.begin(), calls.begin() + 9),
            ElementsAre("getNameSpace", "getClassName", "getKey Name", "getCharPtr", "getKey Name", "getCharPtr",
                        "newObjectPath TQS_NumericSensor", "addKey Name=chars 'Fan(00000002)'", "newInstance"));
        EXPECT_THAT(Strings(calls.end() - 2, calls.end()),
                    ElementsAre("returnInstance instance 'Fan(00000002)'", "returnDone"));
        const void* provider = loaded.provider.mi()->hdl;
        EXPECT_THAT(takeLog(),
                    ElementsAre(format("Debug drvGetInstance - provider=%p", provider), opening(SENSOR_CLASS),
                                nameLine("Fan(00000002)"), nameLine("Fan(00000002)"),
                                "Debug SensorProvider::UpdateReading (Sensor)",
                                "Trace SensorProvider::UpdateReading - No need to update sensor 0x00000002 yet"));
        EXPECT_EQ(loaded.broker.liveObjects(), 0U);
    });
}

TEST_F(GetInstanceTest, NameAsCharactersWorksLikeAString) {
    inFreshProcess([] {
        LoadedProvider loaded;
        const broker::Reply fromString = loaded.provider.getInstance(namedPath(SENSOR_CLASS, "CPU(00000001)"));
        loaded.broker.startRecording();
        const broker::Reply fromChars =
            loaded.provider.getInstance(namedPath(SENSOR_CLASS, broker::Value::ofText("CPU(00000001)", CMPI_chars)));
        EXPECT_THAT(describe(loaded.broker.recordedCalls()), Not(Contains("getCharPtr")));
        EXPECT_EQ(fromChars.status.rc, CMPI_RC_OK);
        ASSERT_EQ(fromChars.instances.size(), 1U);
        EXPECT_EQ(fromChars.instances, fromString.instances);
    });
}

TEST_F(GetInstanceTest, WorksWithEveryHabitOfBrokers) {
    inFreshProcess([] {
        useScenario(chipSensor(1, "CPU", {50}) + "[event-log]\nlines = [\"one\", \"\"]\n");
        broker::BrokerOptions strict;
        strict.strictElementTypes = true;
        strict.refusesNullElements = true;
        broker::BrokerOptions plain;
        plain.charsStayChars = true;
        plain.integerKeysAsSint64 = true;
        for (const broker::BrokerOptions& options : {strict, plain}) {
            LoadedProvider loaded(options);
            // Paths go back to the provider as it gave them.
            for (const char* className : {SENSOR_CLASS, LOG_CLASS}) {
                const broker::Reply names = loaded.provider.enumerateInstanceNames(classPath(className));
                ASSERT_EQ(names.paths.size(), 1U);
                const broker::Reply reply = loaded.provider.getInstance(names.paths[0]);
                EXPECT_EQ(reply.status.rc, CMPI_RC_OK);
                EXPECT_EQ(reply.instances.size(), 1U);
                EXPECT_THAT(propertyOf(reply, "LogLines"),
                            ElementsAre(std::string(className) == LOG_CLASS ? "['one', '']" : "absent"));
            }
        }
    });
}

TEST_F(GetInstanceTest, SecondRequestWithinTheIntervalReadsNothing) {
    inFreshProcess([] {
        LoadedProvider loaded;
        const broker::ObjectPath cpu = namedPath(SENSOR_CLASS, "CPU(00000001)");
        fakeclock::advanceMilliseconds(1000);
        takeLog();
        EXPECT_THAT(propertyOf(loaded.provider.getInstance(cpu), "CurrentReading"), ElementsAre("51"));
        EXPECT_THAT(takeLastLog(2),
                    ElementsAre(nameLine("CPU(00000001)"), "Debug SensorProvider::UpdateReading (Sensor)"));
        fakeclock::advanceMilliseconds(999);
        EXPECT_THAT(propertyOf(loaded.provider.getInstance(cpu), "CurrentReading"), ElementsAre("51"));
        EXPECT_EQ(takeLog().back(), "Trace SensorProvider::UpdateReading - No need to update sensor 0x00000001 yet");
        fakeclock::advanceMilliseconds(1);
        EXPECT_THAT(propertyOf(loaded.provider.getInstance(cpu), "CurrentReading"), ElementsAre("52"));
    });
}

TEST_F(GetInstanceTest, ReadsOnlyTheSensorAskedFor) {
    inFreshProcess([] {
        LoadedProvider loaded;
        fakeclock::advanceMilliseconds(1000);
        OutputCapture error(STDERR_FILENO);
        EXPECT_THAT(propertyOf(loaded.provider.getInstance(namedPath(SENSOR_CLASS, "Fan(00000002)")), "CurrentReading"),
                    ElementsAre("901"));
        EXPECT_EQ(error.take(), "now=1001:0us, prev=1000:0us\nread sensor - diff was 1000, update interval is 1000\n");
    });
}

TEST_F(GetInstanceTest, UnknownNameIsAPlainFailure) {
    inFreshProcess([] {
        LoadedProvider loaded;
        for (const std::string name : {"cpu(00000001)", "CPU(00000001) ", "CPU"}) {
            takeLog();
            expectFailure(loaded.provider.getInstance(namedPath(SENSOR_CLASS, name)));
            EXPECT_THAT(takeLastLog(3), ElementsAre(nameLine(name), nameLine(name), NO_SUCH_INSTANCE));
        }
    });
}

TEST_F(GetInstanceTest, WithoutSensorsTheKeyIsNotLookedAt) {
    inFreshProcess([] {
        useScenario("");
        LoadedProvider loaded;
        takeLog();
        expectFailure(loaded.provider.getInstance(classPath(SENSOR_CLASS)));
        EXPECT_THAT(takeLastLog(2), ElementsAre(opening(SENSOR_CLASS), NO_SUCH_INSTANCE));
    });
}

TEST_F(GetInstanceTest, OtherKeysAreIgnored) {
    inFreshProcess([] {
        LoadedProvider loaded;
        broker::ObjectPath path = classPath(SENSOR_CLASS);
        path.keys = {{"DeviceID", broker::Value::ofText("00000002")}, {"Name", broker::Value::ofText("CPU(00000001)")}};
        EXPECT_THAT(propertyOf(loaded.provider.getInstance(path), "DeviceID"), ElementsAre("00000001"));
    });
}

TEST_F(GetInstanceTest, FailedReadingFindsNothing) {
    inFreshProcess([] {
        useScenario(chipSensor(1, "CPU", {50, 51, 52}) + chipFault("read", "from-call = 2\ncalls = 1\nstatus = 7"));
        LoadedProvider loaded;
        const broker::ObjectPath cpu = namedPath(SENSOR_CLASS, "CPU(00000001)");
        fakeclock::advanceMilliseconds(1000);
        takeLog();
        expectFailure(loaded.provider.getInstance(cpu));
        EXPECT_THAT(takeLastLog(3),
                    ElementsAre("Error SensorProvider::UpdateReading - failed to read sensor 0x00000001, "
                                "sscode=0x00000007",
                                UNKNOWN_EXCEPTION_IN_GET, NO_SUCH_INSTANCE));
        EXPECT_THAT(propertyOf(loaded.provider.getInstance(cpu), "CurrentReading"), ElementsAre("50"));
    });
}

TEST_F(GetInstanceTest, GivesTheEventLogReadAnew) {
    inFreshProcess([] {
        useScenario("[event-log]\nlines = [\"one\", \"two\"]\n" +
                    chipFault("event-log", "from-call = 2\ncalls = 1\nstatus = 0xbad"));
        LoadedProvider loaded;
        const broker::ObjectPath path = namedPath(LOG_CLASS, LOG_NAME);
        takeLog();
        loaded.broker.startRecording();
        const broker::Reply reply = loaded.provider.getInstance(path);
        EXPECT_EQ(reply.status.rc, CMPI_RC_OK);
        EXPECT_EQ(reply.doneCalls, 1U);
        EXPECT_THAT(propertyOf(reply, "LogLines"), ElementsAre("['one', 'two']"));
        const Strings calls = describe(loaded.broker.recordedCalls());
        EXPECT_EQ(std::count(calls.begin(), calls.end(), "getKey Name"), 1);
        EXPECT_THAT(takeLastLog(2), ElementsAre(nameLine(LOG_NAME), "Debug SensorProvider::GetSystemEventLog"));

        expectFailure(loaded.provider.getInstance(path));
        EXPECT_THAT(takeLastLog(3), ElementsAre("Error SensorProvider::GetSystemEventLog - failed to get log "
                                                "information, sscode=0x00000bad",
                                                UNKNOWN_EXCEPTION_IN_GET, NO_SUCH_INSTANCE));
        EXPECT_EQ(loaded.provider.getInstance(path).instances, reply.instances);
    });
}

TEST_F(GetInstanceTest, EventLogOfAnotherNameIsNotFoundAndNotRead) {
    inFreshProcess([] {
        LoadedProvider loaded;
        takeLog();
        expectFailure(loaded.provider.getInstance(namedPath(LOG_CLASS, "quorvel POS System Event Log")));
        EXPECT_THAT(takeLastLog(2), ElementsAre(nameLine("quorvel POS System Event Log"), NO_SUCH_INSTANCE));
    });
}

// Paths whose key "Name" is not a text.
class OddKeyTest : public GetInstanceTest {
  protected:
    static void expectRefused(LoadedProvider& loaded, const broker::ObjectPath& path) {
        takeLog();
        expectFailure(loaded.provider.getInstance(path));
        EXPECT_THAT(takeLastLog(3), ElementsAre(opening(path.className), UNKNOWN_EXCEPTION_IN_GET, NO_SUCH_INSTANCE));
    }

    // The same with a path whose getKey answers this.
    static void expectRefused(LoadedProvider& loaded, const CMPIData& answer, CMPIrc answeredStatus = CMPI_RC_OK) {
        static CMPIData key;
        static CMPIrc rc;
        key = answer;
        rc = answeredStatus;
        for (const char* className : {SENSOR_CLASS, LOG_CLASS}) {
            takeLog();
            broker::Request request(loaded.broker);
            CMPIObjectPath* path = request.makePath(namedPath(className, "CPU(00000001)"));
            CMPIObjectPathFT table = *path->ft;
            table.getKey = [](const CMPIObjectPath*, const char*, CMPIStatus* status) {
                if (status != nullptr) *status = {rc, nullptr};
                return key;
            };
            path->ft = &table;
            CMPIInstanceMI* mi = loaded.provider.mi();
            const CMPIStatus status = mi->ft->getInstance(mi, request.context(), request.result(), path, nullptr);
            EXPECT_EQ(status.rc, CMPI_RC_ERR_FAILED);
            EXPECT_EQ(request.reply().doneCalls, 1U);
            EXPECT_THAT(takeLastLog(3), ElementsAre(opening(className), UNKNOWN_EXCEPTION_IN_GET, NO_SUCH_INSTANCE));
        }
    }

    static CMPIData data(CMPIType type, CMPIValueState state = CMPI_goodValue | CMPI_keyValue) {
        CMPIData answer{};
        answer.type = type;
        answer.state = state;
        return answer;
    }
};

TEST_F(OddKeyTest, MissingKeyIsAFailure) {
    inFreshProcess([] {
        for (const CMPIrc notFound : {CMPI_RC_ERR_NO_SUCH_PROPERTY, CMPI_RC_ERR_NOT_FOUND}) {
            broker::BrokerOptions options;
            options.notFound = notFound;
            LoadedProvider loaded(options);
            expectRefused(loaded, classPath(SENSOR_CLASS));
            expectRefused(loaded, classPath(LOG_CLASS));
        }
    });
}

TEST_F(OddKeyTest, NumberIsAFailure) {
    inFreshProcess([] {
        LoadedProvider loaded;
        for (const broker::Value& number :
             {broker::Value::ofUnsigned(1), broker::Value::ofSigned(-1, CMPI_sint64), broker::Value::ofBoolean(true)}) {
            expectRefused(loaded, namedPath(SENSOR_CLASS, number));
            expectRefused(loaded, namedPath(LOG_CLASS, number));
        }
    });
}

TEST_F(OddKeyTest, EmptyTextWithoutAStringIsAFailure) {
    inFreshProcess([] {
        LoadedProvider loaded;
        expectRefused(loaded, data(CMPI_string));
        expectRefused(loaded, data(CMPI_chars));
    });
}

TEST_F(OddKeyTest, StringWithoutTextIsAFailure) {
    inFreshProcess([] {
        LoadedProvider loaded;
        static CMPIStringFT table{};
        table.getCharPtr = [](const CMPIString*, CMPIStatus*) -> const char* { return nullptr; };
        CMPIString string{};
        string.ft = &table;
        CMPIData key = data(CMPI_string);
        key.value.string = &string;
        expectRefused(loaded, key);
    });
}

TEST_F(OddKeyTest, NullStateIsAFailureWhateverTheValueHolds) {
    inFreshProcess([] {
        LoadedProvider loaded;
        CMPIData key = data(CMPI_chars, CMPI_nullValue | CMPI_keyValue);
        static char text[] = "CPU(00000001)";
        key.value.chars = text;
        expectRefused(loaded, key);
    });
}

TEST_F(OddKeyTest, FailedStatusIsAFailureWhateverTheValueHolds) {
    inFreshProcess([] {
        LoadedProvider loaded;
        CMPIData key = data(CMPI_chars);
        static char text[] = "CPU(00000001)";
        key.value.chars = text;
        expectRefused(loaded, key, CMPI_RC_ERR_NOT_FOUND);
    });
}

TEST_F(OddKeyTest, EmptyTextIsAnUnknownName) {
    inFreshProcess([] {
        LoadedProvider loaded;
        takeLog();
        expectFailure(loaded.provider.getInstance(namedPath(SENSOR_CLASS, broker::Value::ofText("", CMPI_chars))));
        EXPECT_THAT(takeLastLog(3), ElementsAre(nameLine(""), nameLine(""), NO_SUCH_INSTANCE));
    });
}

}  // namespace
