#include "BrokerFixture.h"
#include "broker/Names.h"

using broker::RecordedCall;
using broker::Value;

namespace broker {

bool operator==(const RecordedCall& left, const RecordedCall& right) {
    return left.function == right.function && left.name == right.name && left.value == right.value;
}
void PrintTo(const RecordedCall& call, std::ostream* out) {
    *out << call.function << "(" << call.name << ", " << nameOfType(call.value.type) << " " << call.value.text << ")";
}

}  // namespace broker

using RecordingTest = BrokerTest;

TEST_F(RecordingTest, CallsAreKeptInOrderWithNameAndValue) {
    newString("before");
    broker.startRecording();
    CMPIObjectPath* path = newPath("Test_A");
    const CMPIValue number = uint32Value(3);
    path->ft->addKey(path, "Number", &number, CMPI_uint32);
    CMPIInstance* instance = mb->eft->newInstance(mb, path, nullptr);
    instance->ft->setProperty(instance, "Text", chars("t"), CMPI_chars);
    instance->ft->setProperty(instance, "None", nullptr, CMPI_uint8);
    newString("made");
    request.result()->ft->returnDone(request.result());
    EXPECT_EQ((std::vector<RecordedCall>{{"newObjectPath", "Test_A", {}},
                                         {"addKey", "Number", Value::ofUnsigned(3)},
                                         {"newInstance", "", {}},
                                         {"setProperty", "Text", Value::ofText("t", CMPI_chars)},
                                         {"setProperty", "None", {}},
                                         {"newString", "", Value::ofText("made", CMPI_chars)},
                                         {"returnDone", "", {}}}),
              broker.recordedCalls());
}

TEST_F(RecordingTest, ReturnedObjectsAreRecordedAsValues) {
    CMPIObjectPath* path = newPath("Test_A");
    broker.startRecording();
    request.result()->ft->returnObjectPath(request.result(), path);
    const auto calls = broker.recordedCalls();
    ASSERT_EQ(1U, calls.size());
    EXPECT_EQ(CMPI_ref, calls[0].value.type);
    EXPECT_EQ(broker::copyOut(path), *calls[0].value.path);
}

TEST_F(RecordingTest, StartingAgainForgetsEarlierCalls) {
    broker.startRecording();
    newString("first");
    broker.startRecording();
    EXPECT_TRUE(broker.recordedCalls().empty());
    newString("second");
    EXPECT_EQ(1U, broker.recordedCalls().size());
}

TEST_F(RecordingTest, RefusedCallsAreRecordedAndCopyingOutIsNot) {
    broker.startRecording();
    broker.planFault("newArgs", 1, broker::Fault::Refuse);
    mb->eft->newArgs(mb, nullptr);
    broker::copyOut(request.makePath({}));
    EXPECT_EQ((std::vector<RecordedCall>{{"newArgs", "", {}}}), broker.recordedCalls());
}

TEST_F(RecordingTest, RecordingGoesOnAfterTheLastFault) {
    broker.startRecording();
    broker.planFault("newArgs", 1, broker::Fault::Refuse);
    mb->eft->newArgs(mb, nullptr);
    broker.clearFaults();
    newString("after");
    EXPECT_EQ(2U, broker.recordedCalls().size());
}
