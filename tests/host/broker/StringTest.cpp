#include "BrokerFixture.h"

using StringTest = BrokerTest;

TEST_F(StringTest, TextIsCopiedAndIsTheHandle) {
    char text[] = "text";
    const CMPIString* string = mb->eft->newString(mb, text, &status);
    text[0] = 'T';
    EXPECT_EQ(CMPI_RC_OK, status.rc);
    EXPECT_STREQ("text", string->ft->getCharPtr(string, &status));
    EXPECT_EQ(string->hdl, string->ft->getCharPtr(string, nullptr));
}

TEST_F(StringTest, ShortTextOfACloneIsItsOwn) {
    CMPIString* string = newString("s");
    CMPIString* clone = string->ft->clone(string, nullptr);
    EXPECT_NE(string->hdl, clone->hdl);
    EXPECT_STREQ("s", clone->ft->getCharPtr(clone, nullptr));
    EXPECT_EQ(CMPI_RC_OK, clone->ft->release(clone).rc);
}

TEST_F(StringTest, NullTextIsRefused) {
    EXPECT_EQ(nullptr, mb->eft->newString(mb, nullptr, &status));
    EXPECT_EQ(CMPI_RC_ERR_INVALID_PARAMETER, status.rc);
}

TEST_F(StringTest, NullObjectIsAnInvalidHandle) {
    const CMPIStringFT* functions = newString("")->ft;
    EXPECT_EQ(nullptr, functions->getCharPtr(nullptr, &status));
    EXPECT_EQ(CMPI_RC_ERR_INVALID_HANDLE, status.rc);
    EXPECT_EQ(CMPI_RC_ERR_INVALID_HANDLE, functions->release(nullptr).rc);
    EXPECT_EQ(nullptr, functions->clone(nullptr, nullptr));
}
