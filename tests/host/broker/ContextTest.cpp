#include "BrokerFixture.h"

namespace {

class ContextTest : public BrokerTest {
  protected:
    const CMPIContext* context = request.context();
};

}  // namespace

TEST_F(ContextTest, RequestBringsNameSpaceAndFlags) {
    const CMPIData nameSpace = context->ft->getEntry(context, CMPIInitNameSpace, &status);
    EXPECT_EQ(CMPI_RC_OK, status.rc);
    EXPECT_EQ("root/cimv2", textOf(nameSpace.value.string));
    const CMPIData flags = context->ft->getEntry(context, CMPIInvocationFlags, nullptr);
    EXPECT_EQ(CMPI_uint32, flags.type);
    EXPECT_EQ(0U, flags.value.uint32);
    EXPECT_EQ(2U, context->ft->getEntryCount(context, nullptr));
}

TEST_F(ContextTest, EntriesAreAddedOrReplaced) {
    const CMPIValue one = uint32Value(1);
    EXPECT_EQ(CMPI_RC_OK, context->ft->addEntry(context, CMPIInvocationFlags, &one, CMPI_uint32).rc);
    EXPECT_EQ(CMPI_RC_OK, context->ft->addEntry(context, CMPIPrincipal, chars("till"), CMPI_chars).rc);
    EXPECT_EQ(1U, context->ft->getEntry(context, CMPIInvocationFlags, nullptr).value.uint32);
    CMPIString* name = nullptr;
    EXPECT_EQ("till", textOf(context->ft->getEntryAt(context, 2, &name, nullptr).value.string));
    EXPECT_EQ("CMPIPrincipal", textOf(name));
    EXPECT_EQ(CMPI_RC_ERR_INVALID_PARAMETER, context->ft->addEntry(context, nullptr, &one, CMPI_uint32).rc);
}

TEST_F(ContextTest, MissingEntriesAreNoSuchProperty) {
    context->ft->getEntry(context, CMPIRole, &status);
    EXPECT_EQ(CMPI_RC_ERR_NO_SUCH_PROPERTY, status.rc);
    status = {};
    context->ft->getEntryAt(context, 2, nullptr, &status);
    EXPECT_EQ(CMPI_RC_ERR_NO_SUCH_PROPERTY, status.rc);
}

TEST_F(ContextTest, CloneKeepsTheEntries) {
    CMPIContext* clone = context->ft->clone(context, nullptr);
    EXPECT_EQ(2U, clone->ft->getEntryCount(clone, nullptr));
    EXPECT_EQ(CMPI_RC_OK, clone->ft->release(clone).rc);
}
