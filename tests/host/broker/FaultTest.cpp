#include "BrokerFixture.h"

using broker::Fault;
using FaultTest = BrokerTest;

TEST_F(FaultTest, RefusalHitsTheNthCallAlone) {
    broker.planFault("newString", 2, Fault::Refuse, CMPI_RC_ERR_ACCESS_DENIED);
    EXPECT_NE(nullptr, newString("first"));
    EXPECT_EQ(nullptr, mb->eft->newString(mb, "second", &status));
    EXPECT_EQ(CMPI_RC_ERR_ACCESS_DENIED, status.rc);
    EXPECT_NE(nullptr, newString("third"));
    EXPECT_EQ(0U, broker.faultsLeft());
}

TEST_F(FaultTest, RefusedCallHasNoEffect) {
    CMPIInstance* instance = newInstance();
    broker.planFault("setProperty", 1, Fault::Refuse);
    EXPECT_EQ(CMPI_RC_ERR_FAILED, instance->ft->setProperty(instance, "P", chars("x"), CMPI_chars).rc);
    EXPECT_EQ(0U, instance->ft->getPropertyCount(instance, nullptr));
}

TEST_F(FaultTest, CarelessNullComesWithStatusOk) {
    broker.planFault("newObjectPath", 1, Fault::ReturnNull, CMPI_RC_ERR_FAILED);
    status.rc = CMPI_RC_ERROR;
    EXPECT_EQ(nullptr, mb->eft->newObjectPath(mb, "ns", "Class", &status));
    EXPECT_EQ(CMPI_RC_OK, status.rc);
}

TEST_F(FaultTest, CarelessNullIsARefusalWhereNoPointerIsAnswered) {
    broker.planFault("returnDone", 1, Fault::ReturnNull, CMPI_RC_ERR_FAILED);
    EXPECT_EQ(CMPI_RC_ERR_FAILED, request.result()->ft->returnDone(request.result()).rc);
}

TEST_F(FaultTest, BrokerCanThrow) {
    CMPIObjectPath* path = newPath();
    broker.planFault("path.addKey", 1, Fault::Throw);
    EXPECT_THROW(path->ft->addKey(path, "Id", chars("x"), CMPI_chars), std::runtime_error);
    EXPECT_EQ(0U, path->ft->getKeyCount(path, nullptr));
}

TEST_F(FaultTest, QualifiedNamesHitOneTable) {
    CMPIObjectPath* path = newPath();
    CMPIString* string = newString("s");
    broker.planFault("string.clone", 1, Fault::Refuse);
    CMPIObjectPath* clone = path->ft->clone(path, nullptr);
    EXPECT_NE(nullptr, clone);
    EXPECT_EQ(nullptr, string->ft->clone(string, nullptr));
    clone->ft->release(clone);
    broker.planFault("clone", 2, Fault::Refuse);
    clone = path->ft->clone(path, nullptr);
    EXPECT_EQ(nullptr, string->ft->clone(string, nullptr));
    clone->ft->release(clone);
}

TEST_F(FaultTest, EveryPlanCountsTheSameCalls) {
    broker.planFault("newString", 1, Fault::Refuse, CMPI_RC_ERR_FAILED);
    broker.planFault("broker.newString", 2, Fault::Refuse, CMPI_RC_ERR_NOT_FOUND);
    broker.planFault("newArgs", 1, Fault::Refuse);
    mb->eft->newString(mb, "a", &status);
    EXPECT_EQ(CMPI_RC_ERR_FAILED, status.rc);
    mb->eft->newString(mb, "b", &status);
    EXPECT_EQ(CMPI_RC_ERR_NOT_FOUND, status.rc);
    EXPECT_EQ(1U, broker.faultsLeft());
    broker.clearFaults();
    EXPECT_EQ(0U, broker.faultsLeft());
    EXPECT_NE(nullptr, mb->eft->newArgs(mb, nullptr));
}

TEST_F(FaultTest, DataAndCountsAreRefusedToo) {
    const CMPIObjectPath* path = newPath();
    broker.planFault("getKeyCount", 1, Fault::Refuse, CMPI_RC_ERR_FAILED);
    broker.planFault("getKey", 1, Fault::Refuse, CMPI_RC_ERR_ACCESS_DENIED);
    EXPECT_EQ(0U, path->ft->getKeyCount(path, &status));
    EXPECT_EQ(CMPI_RC_ERR_FAILED, status.rc);
    path->ft->getKey(path, "Id", &status);
    EXPECT_EQ(CMPI_RC_ERR_ACCESS_DENIED, status.rc);
}

TEST_F(FaultTest, CopyingOutMeetsNoFault) {
    CMPIObjectPath* path = newPath("Test_A");
    CMPIInstance* instance = newInstance();
    const CMPIStatus failed{CMPI_RC_ERR_FAILED, newString("why")};
    for (const char* slot : {"getClassName", "getKeyCount", "getPropertyCount", "getObjectPath", "getCharPtr"}) {
        broker.planFault(slot, 1, Fault::Throw);
    }
    EXPECT_EQ("Test_A", broker::copyOut(path).className);
    EXPECT_EQ("Test_Class", broker::copyOut(instance).path.className);
    EXPECT_EQ("why", broker::copyOut(failed).message);
    EXPECT_EQ(5U, broker.faultsLeft());
}
