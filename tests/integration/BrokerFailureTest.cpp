// Each request again and again, with another one of its calls into the broker failing each time.
#include <algorithm>
#include <map>
#include <ostream>
#include <set>

#include "Provider.h"

namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;

using Send = broker::Reply (*)(broker::InstanceProvider& provider);

const std::set<std::string> ANSWER_POINTERS = {"getNameSpace",  "getClassName", "getCharPtr",
                                               "newObjectPath", "newInstance",  "newArray"};
// Whether the broker takes these is not the provider's concern.
const std::set<std::string> UNCHECKED = {"addKey", "setElementAt", "returnInstance", "returnObjectPath", "returnDone"};

bool isReturn(const broker::RecordedCall& call) {
    return call.function == "returnInstance" || call.function == "returnObjectPath";
}

struct PlannedFault {
    std::string slot;
    unsigned nth;
    broker::Fault fault;
    std::size_t returnedBefore;

    bool isNoticed() const { return fault != broker::Fault::Refuse || UNCHECKED.count(slot) == 0; }
};

std::ostream& operator<<(std::ostream& stream, const PlannedFault& planned) {
    const char* words[] = {"refused", "null", "throwing"};
    return stream << planned.slot << " number " << planned.nth << " " << words[static_cast<int>(planned.fault)];
}

std::vector<PlannedFault> allFaults(const std::vector<broker::RecordedCall>& calls) {
    std::vector<PlannedFault> faults;
    std::map<std::string, unsigned> counts;
    std::size_t returned = 0;
    for (const broker::RecordedCall& call : calls) {
        const unsigned nth = ++counts[call.function];
        faults.push_back({call.function, nth, broker::Fault::Refuse, returned});
        faults.push_back({call.function, nth, broker::Fault::Throw, returned});
        if (ANSWER_POINTERS.count(call.function) != 0)
            faults.push_back({call.function, nth, broker::Fault::ReturnNull, returned});
        if (isReturn(call)) ++returned;
    }
    return faults;
}

class BrokerFailureTest : public ProviderTest {
  protected:
    // `word` is the request's in its log lines.
    static void expectEveryFailureHandled(Send send, const std::string& word) {
        inFreshProcess([send, &word] {
            useScenario(chipSensor(1, "CPU", {50}, "accuracy = 1") + chipSensor(2, "Fan", {900}) +
                        "[event-log]\nlines = [\"one\", \"two\"]\n");
            LoadedProvider loaded;
            loaded.broker.startRecording();
            const broker::Reply whole = send(loaded.provider);
            ASSERT_EQ(whole.status.rc, CMPI_RC_OK);
            const std::vector<PlannedFault> faults = allFaults(loaded.broker.recordedCalls());
            ASSERT_GE(faults.size(), 10U);
            for (const PlannedFault& planned : faults) {
                SCOPED_TRACE(testing::Message() << planned);
                expectFailureHandled(loaded, send, word, planned, whole);
                EXPECT_EQ(send(loaded.provider).instances, whole.instances);  // the next request works
                EXPECT_EQ(loaded.broker.liveObjects(), 0U);
            }
            EXPECT_EQ(loaded.broker.liveClones(), 0U);
        });
    }

  private:
    static void expectFailureHandled(LoadedProvider& loaded, Send send, const std::string& word,
                                     const PlannedFault& planned, const broker::Reply& whole) {
        takeLog();
        loaded.broker.startRecording();
        loaded.broker.planFault(planned.slot, planned.nth, planned.fault);
        const broker::Reply reply = send(loaded.provider);
        EXPECT_EQ(loaded.broker.faultsLeft(), 0U);
        EXPECT_EQ(loaded.broker.liveObjects(), 0U);
        EXPECT_THAT(describe(loaded.broker.recordedCalls()), Contains("returnDone").Times(1));
        const Strings log = takeLog();
        if (planned.isNoticed()) {
            EXPECT_EQ(reply.status.rc, CMPI_RC_ERR_FAILED);
            EXPECT_EQ(reply.paths.size() + reply.instances.size(), planned.returnedBefore);
            EXPECT_THAT(log, Contains("Error SensorProvider::" + word + " -  Unknown Exception").Times(1));
            const std::string noneFound =
                "Debug SensorProvider::" + word + " - No instance" + (word == "getInstance" ? " found" : "s found");
            EXPECT_THAT(log, Contains(noneFound).Times(planned.returnedBefore == 0 ? 1 : 0));
        } else {
            const std::size_t refusedReturns = planned.slot == "returnInstance" || planned.slot == "returnObjectPath";
            EXPECT_EQ(reply.status.rc, CMPI_RC_OK);
            EXPECT_EQ(reply.paths.size() + reply.instances.size(),
                      whole.paths.size() + whole.instances.size() - refusedReturns);
            EXPECT_THAT(log, Not(Contains(testing::StartsWith("Error"))));
        }
    }
};

TEST_F(BrokerFailureTest, NamesOfSensorsSurviveEveryFailure) {
    expectEveryFailureHandled(
        [](broker::InstanceProvider& provider) { return provider.enumerateInstanceNames(classPath(SENSOR_CLASS)); },
        "enumerateInstanceNames");
}

TEST_F(BrokerFailureTest, NameOfTheEventLogSurvivesEveryFailure) {
    expectEveryFailureHandled(
        [](broker::InstanceProvider& provider) { return provider.enumerateInstanceNames(classPath(LOG_CLASS)); },
        "enumerateInstanceNames");
}

TEST_F(BrokerFailureTest, InstancesOfSensorsSurviveEveryFailure) {
    expectEveryFailureHandled(
        [](broker::InstanceProvider& provider) { return provider.enumerateInstances(classPath(SENSOR_CLASS)); },
        "enumerateInstances");
}

TEST_F(BrokerFailureTest, EnumeratedEventLogSurvivesEveryFailure) {
    expectEveryFailureHandled(
        [](broker::InstanceProvider& provider) { return provider.enumerateInstances(classPath(LOG_CLASS)); },
        "enumerateInstances");
}

TEST_F(BrokerFailureTest, OneSensorSurvivesEveryFailure) {
    expectEveryFailureHandled(
        [](broker::InstanceProvider& provider) {
            return provider.getInstance(namedPath(SENSOR_CLASS, "Fan(00000002)"));
        },
        "getInstance");
}

TEST_F(BrokerFailureTest, SingleEventLogSurvivesEveryFailure) {
    expectEveryFailureHandled(
        [](broker::InstanceProvider& provider) { return provider.getInstance(namedPath(LOG_CLASS, LOG_NAME)); },
        "getInstance");
}

}  // namespace
