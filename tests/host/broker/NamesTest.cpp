#include <gtest/gtest.h>

#include "broker/Names.h"

TEST(NamesTest, CompareWithoutRegardToCase) {
    EXPECT_TRUE(broker::sameName("DeviceID", "deviceid"));
    EXPECT_FALSE(broker::sameName("DeviceID", "DeviceIDs"));
    EXPECT_FALSE(broker::sameName("a[", "a{"));
}

TEST(NamesTest, StatusesHaveTheirCmpiNames) {
    EXPECT_EQ("CMPI_RC_OK", broker::nameOfStatus(0));
    EXPECT_EQ("CMPI_RC_ERR_FAILED", broker::nameOfStatus(1));
    EXPECT_EQ("CMPI_RC_ERR_NO_SUCH_PROPERTY", broker::nameOfStatus(12));
    EXPECT_EQ("CMPI_RC_DO_NOT_UNLOAD", broker::nameOfStatus(50));
    EXPECT_EQ("CMPI_RC_ERROR", broker::nameOfStatus(200));
    EXPECT_EQ("CMPI_RC_77", broker::nameOfStatus(77));
}

TEST(NamesTest, TypesHaveTheirMofNames) {
    EXPECT_EQ("sint32", broker::nameOfType(CMPI_sint32));
    EXPECT_EQ("string", broker::nameOfType(CMPI_chars));
    EXPECT_EQ("datetime", broker::nameOfType(CMPI_dateTime));
    EXPECT_EQ("uint8[]", broker::nameOfType(CMPI_uint8A));
    EXPECT_EQ("type6400", broker::nameOfType(CMPI_ptr));
}
