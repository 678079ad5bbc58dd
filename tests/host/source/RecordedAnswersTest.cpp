// What object managers answered, against what the provider answers here with the same scenario.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <stdlib.h>

#include <algorithm>

#include "FakeClock.h"
#include "RawServer.h"
#include "RecordedExchanges.h"
#include "Sandbox.h"
#include "source/ChipLibrary.h"
#include "source/Server.h"
#include "source/Session.h"

namespace {

using broker::Instance;
using broker::NamedValue;
using broker::ObjectPath;
using broker::Reply;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

// By name, without those that are not set, and texts of one type.
std::vector<NamedValue> plain(std::vector<NamedValue> values, bool hasMovingReadings) {
    values.erase(std::remove_if(values.begin(), values.end(),
                                [&](const NamedValue& each) {
                                    return each.value.isNull || (hasMovingReadings && each.name == "CurrentReading");
                                }),
                 values.end());
    for (NamedValue& each : values) {
        if (each.value.type == CMPI_chars) each.value.type = CMPI_string;
        for (broker::Value& element : each.value.elements) {
            if (element.type == CMPI_chars) element.type = CMPI_string;
        }
        if (each.value.type == CMPI_charsA) each.value.type = CMPI_stringA;
    }
    std::sort(values.begin(), values.end(),
              [](const NamedValue& left, const NamedValue& right) { return left.name < right.name; });
    return values;
}

ObjectPath plain(ObjectPath path) {
    path.keys = plain(std::move(path.keys), false);
    return path;
}

class RecordedAnswersTest : public testing::Test {
  protected:
    void SetUp() override { REQUIRE_SANDBOX(); }

    static void compareAll(const std::string& scenario, std::size_t count);

    static Reply localReply(const std::string& scenario, const host::Request& request, bool isLate) {
        const std::string plainScenario = scenario.substr(0, scenario.find('-'));
        unsetenv("ZELCHIP_SCENARIO");
        if (plainScenario == "nodriver") setenv("ZELCHIP_SCENARIO", SCENARIOS "/no-driver.toml", 1);
        if (plainScenario == "odd") setenv("ZELCHIP_SCENARIO", CIM_XML "/odd.toml", 1);
        if (plainScenario == "fail") setenv("ZELCHIP_SCENARIO", CIM_XML "/fail.toml", 1);
        fakeclock::set({1000, 0});
        const host::ChipLibrary chip({CHIP, "", true});
        host::Session session(PROVIDER, "SensorProvider");
        if (isLate) fakeclock::advanceMilliseconds(1500);  // past the second in which a reading counts as new
        return ask(session, request);
    }

    static Reply managersReply(const Recorded& recorded, const host::Request& request) {
        const RawServer raw(recorded.answer());
        std::vector<std::string> warnings;
        host::ServerAccess access;
        access.url = raw.url();
        host::Server server(access, [&](const std::string& text) { warnings.push_back(text); });
        Reply reply = ask(server, request);
        EXPECT_THAT(warnings, IsEmpty());
        return reply;
    }

    // Where the manager answers without the provider, whose start has failed: it knows its classes and namespaces
    // itself. sfcb's own answer to a query is an enumeration.
    static std::optional<CMPIrc> managersOwnStatus(const Recorded& recorded) {
        if (recorded.scenario != "nodriver") return std::nullopt;
        if (recorded.operation == "wrong-class") return CMPI_RC_ERR_INVALID_CLASS;
        if (recorded.operation == "wrong-namespace") return CMPI_RC_ERR_INVALID_NAMESPACE;
        if (recorded.operation != "query" || recorded.manager != "sfcb") return std::nullopt;
        return CMPI_RC_ERR_METHOD_NOT_AVAILABLE;
    }

    static void compare(const Recorded& recorded) {
        const host::Request request = requestOf(recorded.scenario, recorded.operation);
        const bool isFailing = recorded.scenario.rfind("fail", 0) == 0 && recorded.operation == "instances";
        const Reply local = localReply(recorded.scenario, request, isFailing);
        const Reply remote = managersReply(recorded, request);
        if (recorded.operation == "query" && recorded.manager == "sfcb" && recorded.scenario != "nodriver") {
            EXPECT_EQ(local.status.rc, CMPI_RC_ERR_NOT_SUPPORTED);
            EXPECT_EQ(remote.status.rc, CMPI_RC_OK);  // sfcb answers by itself
            return;
        }
        EXPECT_EQ(remote.status.rc, managersOwnStatus(recorded).value_or(local.status.rc));
        EXPECT_EQ(remote.status.rc != CMPI_RC_OK, remote.status.message.has_value());
        if (isFailing) {
            EXPECT_THAT(local.instances, SizeIs(1));
            EXPECT_THAT(remote.instances, IsEmpty());  // both drop what came before an error
            return;
        }
        compareLists(remote, local, recorded.scenario.rfind("healthy", 0) == 0);
    }

    static void compareLists(const Reply& remote, const Reply& local, bool hasMovingReadings) {
        ASSERT_EQ(remote.paths.size(), local.paths.size());
        for (std::size_t i = 0; i < local.paths.size(); ++i) EXPECT_EQ(plain(remote.paths[i]), plain(local.paths[i]));
        ASSERT_EQ(remote.instances.size(), local.instances.size());
        for (std::size_t i = 0; i < local.instances.size(); ++i) {
            const Instance& here = local.instances[i];
            const Instance& there = remote.instances[i];
            EXPECT_EQ(plain(there.path), plain(here.path));
            const std::vector<NamedValue> properties = plain(there.properties, hasMovingReadings);
            EXPECT_THAT(properties, SizeIs(testing::Gt(6U)));
            EXPECT_EQ(properties, plain(here.properties, hasMovingReadings));
        }
    }
};

// Both managers' answers to all that is recorded: so many requests.
void RecordedAnswersTest::compareAll(const std::string& scenario, std::size_t count) {
    for (const char* manager : {"sfcb", "openpegasus"}) {
        const std::vector<Recorded> all = recordedOf(manager, scenario);
        EXPECT_THAT(all, SizeIs(count));
        for (const Recorded& recorded : all) {
            SCOPED_TRACE(recorded.manager + ' ' + recorded.scenario + ' ' + recorded.operation);
            compare(recorded);
        }
    }
}

TEST_F(RecordedAnswersTest, OfAHealthyTerminalAreThoseOfTheProvider) {
    compareAll("healthy", 14);
}

TEST_F(RecordedAnswersTest, WithOddTextsAreThoseOfTheProvider) {
    compareAll("odd", 14);
}

TEST_F(RecordedAnswersTest, OfAFailingSensorAreThoseOfTheProvider) {
    compareAll("fail", 14);
}

TEST_F(RecordedAnswersTest, OfAFailedStartAreThoseOfTheProvider) {
    compareAll("nodriver", 14);
}

TEST_F(RecordedAnswersTest, InChunksAreThoseOfTheProvider) {
    compareAll("healthy-chunked", 5);
    compareAll("fail-chunked", 3);
}

}  // namespace
