#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "FakeSource.h"
#include "Instances.h"
#include "mof/MofReader.h"
#include "verify/SchemaError.h"
#include "verify/Verify.h"
#include "verify/VerifyFormat.h"

namespace {

using broker::ObjectPath;
using broker::Reply;
using broker::Value;
using host::Verification;
using host::verificationText;
using testing::ElementsAre;

constexpr const char* THING = "class Thing { [Key] string Name; sint32 Reading; };";

broker::Instance thingOf(const std::string& name, int reading) {
    return instanceOf("Thing", name, {{"Name", Value::ofText(name)}, {"Reading", Value::ofSigned(reading)}});
}

Reply pathsOf(std::vector<broker::Instance> instances) {
    Reply reply;
    for (broker::Instance& instance : instances) reply.paths.push_back(std::move(instance.path));
    return reply;
}

// A provider of two things, each of whose answers a test may replace.
class VerifyTest : public testing::Test {
  protected:
    Verification verified(const std::string& mof = THING, host::Via via = host::Via::Provider) {
        const auto noted = [this](const char* request, const Reply& reply) {
            return [this, request, &reply](const ObjectPath& path) {
                m_asked.push_back(std::string(request) + ' ' + path.nameSpace + ':' + path.className);
                for (const broker::NamedValue& key : path.keys) {
                    m_asked.back() += '.' + key.name + '=' + key.value.text + ' ' + std::to_string(key.value.type);
                }
                if (request != std::string("get") || !reply.instances.empty() || reply.status.rc != 0) return reply;
                return replyOf(CMPI_RC_OK, {thingOf(path.keys.at(0).value.text, 1)});
            };
        };
        FakeSource source;
        source.names = noted("names", m_names);
        source.instances = noted("instances", m_instances);
        source.get = noted("get", m_get);
        return verify(mof::readMof(mof, "t.mof"), "root/cimv2", source, via);
    }

    Reply m_names = pathsOf({thingOf("a", 1), thingOf("b", 2)});
    Reply m_instances = replyOf(CMPI_RC_OK, {thingOf("a", 1), thingOf("b", 2)});
    Reply m_get;  // while it is empty, the instance that is asked for
    std::vector<std::string> m_asked;
};

TEST_F(VerifyTest, AsksForNamesInstancesAndEachSingleInstance) {
    m_names.paths[1].keys[0].value.type = CMPI_chars;
    const Verification verification = verified();
    const std::string type = ' ' + std::to_string(CMPI_string);
    EXPECT_THAT(m_asked, ElementsAre("names root/cimv2:Thing", "instances root/cimv2:Thing",
                                     "get root/cimv2:Thing.Name=a" + type, "get root/cimv2:Thing.Name=b" + type));
    EXPECT_TRUE(verification.conforms());
    EXPECT_FALSE(verification.firstFailure);
    EXPECT_EQ(verificationText(verification), "Thing: 2 names, 2 instances, 2 single requests, 0 problems\n");
}

TEST_F(VerifyTest, AbstractClassesAreNotAskedFor) {
    verified("[Abstract] class Base { [Key] string Name; }; class Thing : Base { sint32 Reading; };");
    EXPECT_EQ(m_asked.front(), "names root/cimv2:Thing");
    EXPECT_THROW(verified("[Abstract] class Base {};"), host::SchemaError);
    EXPECT_THROW(verified(""), host::SchemaError);
}

TEST_F(VerifyTest, FaultInANameIsAProblem) {
    m_names.paths[0].nameSpace = "root/other";
    EXPECT_EQ(verificationText(verified()),
              "names root/other:Thing.Name=\"a\": the namespace is not root/cimv2\n"
              "Thing: 2 names, 2 instances, 2 single requests, 1 problem\n");
}

TEST_F(VerifyTest, FaultInAnEnumeratedInstanceIsAProblem) {
    m_instances.instances[1].properties[1].value = Value::ofText("2");
    const Verification verification = verified();
    EXPECT_FALSE(verification.conforms());
    EXPECT_EQ(verificationText(verification),
              "instances root/cimv2:Thing.Name=\"b\": property Reading is string, declared as sint32\n"
              "Thing: 2 names, 2 instances, 2 single requests, 1 problem\n");
}

TEST_F(VerifyTest, FaultInASingleInstanceIsAProblem) {
    m_names.paths.pop_back();
    m_get = replyOf(CMPI_RC_OK, {thingOf("a", 1)});
    m_get.instances[0].properties.push_back({"Colour", Value::ofText("red")});
    EXPECT_EQ(verificationText(verified()),
              "get root/cimv2:Thing.Name=\"a\": property Colour is not declared\n"
              "Thing: 1 name, 2 instances, 1 single request, 1 problem\n");
}

TEST_F(VerifyTest, OtherInstanceThanAskedForIsAProblem) {
    m_get = replyOf(CMPI_RC_OK, {thingOf("a", 1)});
    EXPECT_THAT(verificationText(verified()),
                testing::StartsWith("get root/cimv2:Thing.Name=\"a\": another instance was asked for: "
                                    "root/cimv2:Thing.Name=\"b\"\nThing: "));
}

TEST_F(VerifyTest, SingleRequestWithoutExactlyOneInstanceIsAProblem) {
    m_names.paths.pop_back();
    m_get = replyOf(CMPI_RC_OK, {thingOf("a", 1), thingOf("a", 1)});
    EXPECT_THAT(
        verificationText(verified()),
        testing::StartsWith("get root/cimv2:Thing.Name=\"a\": the answer has 2 instances instead of one\nThing: "));
}

TEST_F(VerifyTest, FailedRequestsAreProblemsAndTheFirstIsKept) {
    m_names.status = {CMPI_RC_ERR_FAILED, "no \x1b"};
    m_names.paths.pop_back();
    m_instances = {{CMPI_RC_ERR_NOT_SUPPORTED, std::nullopt}, {}, {}, {}, 0};
    m_get.status.rc = CMPI_RC_ERR_NOT_FOUND;
    const Verification verification = verified();
    EXPECT_EQ(verification.firstFailure.value().rc, CMPI_RC_ERR_FAILED);
    EXPECT_EQ(verificationText(verification),
              "names root/cimv2:Thing: the provider answered 1 CMPI_RC_ERR_FAILED: no \\x1b\n"
              "instances root/cimv2:Thing: the provider answered 7 CMPI_RC_ERR_NOT_SUPPORTED\n"
              "get root/cimv2:Thing.Name=\"a\": the provider answered 6 CMPI_RC_ERR_NOT_FOUND\n"
              "Thing: 1 name, 0 instances, 1 single request, 3 problems\n");
}

TEST_F(VerifyTest, JsonListsClassesWithTheirProblems) {
    m_names.paths[0].className = "Th\xffing\xc2\xb0";
    const std::string text = verificationJson(verified(), true);
    EXPECT_EQ(nlohmann::json::parse(text), nlohmann::json::parse(R"({
        "command": "verify", "namespace": "root/cimv2", "simulated": true, "conforms": false,
        "classes": [{"class": "Thing", "names": 2, "instances": 2, "singles": 2, "problems": [
            {"request": "names", "path": "root/cimv2:Th\\xffing\u00b0.Name=\"a\"", "text": "the class is not Thing"}
        ]}]})"));
    EXPECT_EQ(text.find('\xb0'), std::string::npos);
    EXPECT_EQ(text.back(), '\n');
}

TEST_F(VerifyTest, JsonOfWhatConformsHasNoProblems) {
    const auto document = nlohmann::json::parse(verificationJson(verified(), std::nullopt));
    EXPECT_EQ(document["simulated"], nullptr);
    EXPECT_EQ(document["conforms"], true);
    EXPECT_EQ(document["classes"][0]["problems"], nlohmann::json::array());
}

TEST_F(VerifyTest, FindingsByAManagerNameTheLikelyCause) {
    m_names = pathsOf({thingOf(" a", 1)});
    m_instances = replyOf(CMPI_RC_OK, {instanceOf("Thing", "b", {{"Name", Value::null(CMPI_string)}})});
    m_get.status = {CMPI_RC_ERR_FAILED, "no such thing"};
    const std::string text = verificationText(verified(THING, host::Via::Manager));
    EXPECT_EQ(
        text,
        "names root/cimv2:Thing.Name=\" a\": key Name begins or ends with a blank\n"
        "    likely cause: managers trim the blanks around a key in a request, so that this instance cannot be "
        "asked for\n"
        "instances root/cimv2:Thing.Name=\"b\": key property Name is not set\n"
        "    likely cause: the provider does not set it, or with another type: a manager empties such a property\n"
        "instances root/cimv2:Thing.Name=\"b\": property Reading is missing\n"
        "    likely cause: the manager has another version of the class; it sends what its own class declares, "
        "with the types of that, and drops the rest\n"
        "get root/cimv2:Thing.Name=\" a\": the server answered 1 CMPI_RC_ERR_FAILED: no such thing\n"
        "    likely cause: the provider, or the manager before it asks the provider; the log on that machine "
        "says which\n"
        "Thing: 1 name, 1 instance, 1 single request, 4 problems\n");
    EXPECT_THAT(verificationJson(verified(THING, host::Via::Manager), std::nullopt),
                testing::HasSubstr("\"cause\": \"managers trim"));
    EXPECT_THAT(verificationText(verified()), testing::Not(testing::HasSubstr("likely cause")));
}

}  // namespace
