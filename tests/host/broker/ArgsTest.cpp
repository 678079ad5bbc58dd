#include "BrokerFixture.h"

using ArgsTest = BrokerTest;

TEST_F(ArgsTest, ArgumentsAreAddedReplacedAndRead) {
    CMPIArgs* args = mb->eft->newArgs(mb, &status);
    EXPECT_EQ(CMPI_RC_OK, status.rc);
    EXPECT_EQ(0U, args->ft->getArgCount(args, nullptr));
    EXPECT_EQ(CMPI_RC_OK, args->ft->addArg(args, "First", chars("a"), CMPI_chars).rc);
    EXPECT_EQ(CMPI_RC_OK, args->ft->addArg(args, "Second", nullptr, CMPI_uint8).rc);
    EXPECT_EQ(CMPI_RC_OK, args->ft->addArg(args, "first", chars("b"), CMPI_chars).rc);
    EXPECT_EQ(2U, args->ft->getArgCount(args, nullptr));
    EXPECT_EQ("b", textOf(args->ft->getArg(args, "FIRST", nullptr).value.string));
    CMPIString* name = nullptr;
    EXPECT_EQ(CMPI_nullValue, args->ft->getArgAt(args, 1, &name, nullptr).state);
    EXPECT_EQ("Second", textOf(name));
    args->ft->getArg(args, "Third", &status);
    EXPECT_EQ(CMPI_RC_ERR_NO_SUCH_PROPERTY, status.rc);
}

TEST_F(ArgsTest, CloneIsReleased) {
    CMPIArgs* args = mb->eft->newArgs(mb, nullptr);
    args->ft->addArg(args, "First", chars("a"), CMPI_chars);
    CMPIArgs* clone = args->ft->clone(args, nullptr);
    EXPECT_EQ(1U, clone->ft->getArgCount(clone, nullptr));
    EXPECT_EQ(CMPI_RC_OK, clone->ft->release(clone).rc);
}
