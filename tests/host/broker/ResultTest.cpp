#include "BrokerFixture.h"

using broker::Value;

namespace {

class ResultTest : public BrokerTest {
  protected:
    const CMPIResult* result = request.result();
};

}  // namespace

TEST_F(ResultTest, PathsAndInstancesAreCopiedInOrder) {
    CMPIObjectPath* path = newPath("Test_A");
    CMPIInstance* instance = newInstance();
    EXPECT_EQ(CMPI_RC_OK, result->ft->returnObjectPath(result, path).rc);
    path->ft->setClassName(path, "Test_B");
    EXPECT_EQ(CMPI_RC_OK, result->ft->returnObjectPath(result, path).rc);
    EXPECT_EQ(CMPI_RC_OK, result->ft->returnInstance(result, instance).rc);
    instance->ft->setProperty(instance, "Late", chars("x"), CMPI_chars);
    ASSERT_EQ(2U, request.reply().paths.size());
    EXPECT_EQ("Test_A", request.reply().paths[0].className);
    EXPECT_EQ("Test_B", request.reply().paths[1].className);
    ASSERT_EQ(1U, request.reply().instances.size());
    EXPECT_TRUE(request.reply().instances[0].properties.empty());
}

TEST_F(ResultTest, DataIsCollected) {
    const CMPIValue number = uint32Value(4);
    EXPECT_EQ(CMPI_RC_OK, result->ft->returnData(result, &number, CMPI_uint32).rc);
    EXPECT_EQ(CMPI_RC_OK, result->ft->returnData(result, chars("text"), CMPI_chars).rc);
    EXPECT_EQ((std::vector<Value>{Value::ofUnsigned(4), Value::ofText("text", CMPI_chars)}), request.reply().data);
}

TEST_F(ResultTest, DoneIsCounted) {
    EXPECT_EQ(0U, request.reply().doneCalls);
    result->ft->returnDone(result);
    EXPECT_EQ(CMPI_RC_OK, result->ft->returnDone(result).rc);
    EXPECT_EQ(2U, request.reply().doneCalls);
}

TEST_F(ResultTest, NothingIsNoResult) {
    EXPECT_EQ(CMPI_RC_ERR_INVALID_HANDLE, result->ft->returnInstance(result, nullptr).rc);
    EXPECT_EQ(CMPI_RC_ERR_INVALID_HANDLE, result->ft->returnObjectPath(result, nullptr).rc);
}

TEST_F(ResultTest, CloneCollectsForTheSameRequest) {
    CMPIResult* clone = result->ft->clone(result, nullptr);
    clone->ft->returnDone(clone);
    EXPECT_EQ(1U, request.reply().doneCalls);
    EXPECT_EQ(CMPI_RC_OK, clone->ft->release(clone).rc);
}

TEST_F(ResultTest, ErrorsAreNotSupported) {
    EXPECT_EQ(CMPI_RC_ERR_NOT_SUPPORTED, result->ft->returnError(result, nullptr).rc);
}
