#include <dlfcn.h>
#include <gmock/gmock.h>

#include "broker/ProviderLibrary.h"

using broker::Broker;
using broker::InstanceProvider;
using broker::LoadError;
using broker::ObjectPath;
using broker::ProviderLibrary;
using broker::Reply;
using broker::Value;
using testing::HasSubstr;

namespace {

const ObjectPath PATH{"", "root/cimv2", "Test_Class", {{"Id", Value::ofText("seven")}}};

class EchoTest : public testing::Test {
  protected:
    // How often the library was cleaned up. Found in the global scope, where a loaded provider's symbols are.
    static int cleanups(bool terminating) {
        return static_cast<const int*>(dlsym(RTLD_DEFAULT, "echoCleanups"))[terminating ? 1 : 0];
    }

    Broker broker;
    ProviderLibrary library{TEST_PROVIDER};
};

template <typename Action>
std::string loadErrorOf(Action action) {
    try {
        action();
    } catch (const LoadError& error) {
        return error.what();
    }
    return "(none)";
}

}  // namespace

TEST(ProviderLibraryTest, MissingLibraryIsALoadErrorWithThePath) {
    EXPECT_THAT(loadErrorOf([] { ProviderLibrary("/nowhere/libnone.so"); }),
                HasSubstr("cannot load /nowhere/libnone.so: "));
}

TEST_F(EchoTest, MissingFactoryIsALoadErrorWithItsName) {
    EXPECT_EQ(TEST_PROVIDER " has no None_Create_InstanceMI",
              loadErrorOf([&] { InstanceProvider(library, "None", broker); }));
}

TEST_F(EchoTest, FactoryThatAnswersNullIsALoadError) {
    EXPECT_EQ("the factory of Null in " TEST_PROVIDER " answered null",
              loadErrorOf([&] { InstanceProvider(library, "Null", broker); }));
}

TEST_F(EchoTest, FactoryThatAnswersAStatusIsALoadError) {
    EXPECT_EQ("the factory of Failing in " TEST_PROVIDER " answered CMPI_RC_ERR_ACCESS_DENIED: out of order",
              loadErrorOf([&] { InstanceProvider(library, "Failing", broker); }));
    EXPECT_EQ(0U, broker.liveObjects());
}

TEST_F(EchoTest, FactoryIsCalledInARequestOfItsOwn) {
    const InstanceProvider echo(library, "Echo", broker);
    EXPECT_EQ(0U, broker.liveObjects());
    EXPECT_STREQ("Echo", echo.mi()->ft->miName);
}

TEST_F(EchoTest, NamesAreCollected) {
    InstanceProvider echo(library, "Echo", broker);
    const Reply reply = echo.enumerateInstanceNames(PATH);
    EXPECT_EQ(CMPI_RC_OK, reply.status.rc);
    EXPECT_EQ(std::nullopt, reply.status.message);
    EXPECT_EQ((std::vector<ObjectPath>{{"", "root/echo", "Test_Class", {{"Id", Value::ofText("1", CMPI_chars)}}},
                                       {"", "root/echo", "Test_Class", {{"Id", Value::ofText("2", CMPI_chars)}}}}),
              reply.paths);
    EXPECT_EQ(1U, reply.doneCalls);
    EXPECT_EQ(0U, broker.liveObjects());
}

TEST_F(EchoTest, PropertiesAreListedOrNullForAll) {
    InstanceProvider echo(library, "Echo", broker);
    const Reply all = echo.enumerateInstances(PATH);
    ASSERT_EQ(1U, all.instances.size());
    EXPECT_EQ((std::vector<broker::NamedValue>{{"NameSpace", Value::ofText("root/cimv2")},
                                               {"All", Value::null(CMPI_string)}}),
              all.instances[0].properties);
    const Reply listed = echo.enumerateInstances(PATH, {"A", "B"});
    ASSERT_EQ(1U, listed.instances.size());
    EXPECT_EQ((std::vector<broker::NamedValue>{{"NameSpace", Value::ofText("root/cimv2")},
                                               {"A", Value::null(CMPI_string)},
                                               {"B", Value::null(CMPI_string)}}),
              listed.instances[0].properties);
}

TEST_F(EchoTest, StatusOutlivesTheRequest) {
    InstanceProvider echo(library, "Echo", broker);
    const Reply reply = echo.getInstance(PATH);
    EXPECT_EQ(CMPI_RC_ERR_NOT_FOUND, reply.status.rc);
    EXPECT_EQ("no seven", reply.status.message);
    EXPECT_EQ("no sevenP", echo.getInstance(PATH, {"P"}).status.message);
    const Reply query = echo.execQuery(PATH, "select *", "WQL");
    EXPECT_EQ(CMPI_RC_ERR_INVALID_QUERY, query.status.rc);
    EXPECT_EQ("WQL: select *", query.status.message);
}

TEST_F(EchoTest, InstancesArePassedIn) {
    InstanceProvider echo(library, "Echo", broker);
    const broker::Instance instance{PATH, {{"Count", Value::ofUnsigned(3)}}};
    const Reply created = echo.createInstance(PATH, instance);
    EXPECT_EQ((std::vector<ObjectPath>{PATH}), created.paths);
    EXPECT_EQ((std::vector<broker::Instance>{instance}), created.instances);
    const Reply modified = echo.modifyInstance(PATH, instance);
    EXPECT_EQ((std::vector<broker::Instance>{instance}), modified.instances);
    EXPECT_EQ("all", modified.status.message);
    EXPECT_EQ("Count", echo.modifyInstance(PATH, instance, {"Count"}).status.message);
}

TEST_F(EchoTest, DestructorCleansUpAndClonesAreGone) {
    {
        InstanceProvider echo(library, "Echo", broker);
        EXPECT_EQ(CMPI_RC_OK, echo.deleteInstance(PATH).status.rc);
        EXPECT_EQ(1U, broker.liveClones());
    }
    EXPECT_EQ(1, cleanups(true));
    EXPECT_EQ(0U, broker.liveClones());
}

TEST_F(EchoTest, CleanUpIsRepeatedOnlyWhenItWasPutOff) {
    {
        InstanceProvider echo(library, "Echo", broker);
        EXPECT_EQ(CMPI_RC_DO_NOT_UNLOAD, echo.cleanUp(false).rc);
        EXPECT_EQ(CMPI_RC_OK, echo.cleanUp(true).rc);
    }
    EXPECT_EQ(1, cleanups(false));
    EXPECT_EQ(1, cleanups(true));
    { InstanceProvider(library, "Echo", broker).cleanUp(false); }
    EXPECT_EQ(1, cleanups(false));
    EXPECT_EQ(1, cleanups(true));
}
