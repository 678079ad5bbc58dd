#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <type_traits>
#include <vector>

#include "CimText.h"
#include "TQS_SystemEventLog.h"
#include "broker/Broker.h"

using testing::ElementsAre;

namespace {

class SystemEventLogTest : public testing::Test {
  protected:
    broker::Broker m_broker;
    broker::Request m_request{m_broker};
    TQS_SystemEventLog m_log;

    SystemEventLogTest() {
        m_log.setLogFull(true);
        m_log.setLogLines({"first", "", "third"});
        m_log.setLogMultipleEventCountIncrement(7);
        m_log.setLogMultipleEventTimeWindow(60);
        m_log.setLogValid(true);
    }

    broker::Instance instance() { return broker::copyOut(m_log.getInstance(m_broker.handle())); }
    std::string property(const char* name) {
        const broker::Instance made = instance();
        const broker::Value* value = made.findProperty(name);
        return value == nullptr ? "absent" : describe(*value);
    }
};

}  // namespace

TEST_F(SystemEventLogTest, HasOneFixedName) {
    EXPECT_STREQ(m_log.getName(), "Quorvel POS System Event Log");
    EXPECT_EQ(m_log.getName(), TQS_SystemEventLog().getName());
    EXPECT_TRUE(std::has_virtual_destructor_v<TQS_SystemEventLog>);
}

TEST_F(SystemEventLogTest, InstanceHasAllPropertiesInOrder) {
    EXPECT_THAT(
        describe(instance().properties),
        ElementsAre("Caption=chars 'Quorvel POS System Event Log'", "CreationClassName=chars 'TQS_SystemEventLog'",
                    "Description=chars 'The Quorvel POS System Event Log is a motherboard level storage device that "
                    "contains a record of critical system events such as POST errors, disk check errors, etc.'",
                    "DeviceID=chars 'Quorvel POS System Event Log'", "LogFull=boolean true",
                    "LogLines=chars[] ['first', '', 'third']", "LogMultipleEventCountIncrement=uint8 7",
                    "LogMultipleEventTimeWindow=uint8 60", "LogValid=boolean true",
                    "Name=chars 'Quorvel POS System Event Log'", "SystemCreationClassName=chars 'Computer System'",
                    "SystemName=chars 'Quorvel POS Sensor Drivers and System Event Log'"));
}

TEST_F(SystemEventLogTest, LogWithoutLinesHasNoLogLines) {
    m_log.setLogLines({});
    EXPECT_THAT(propertyNames(instance()),
                ElementsAre("Caption", "CreationClassName", "Description", "DeviceID", "LogFull",
                            "LogMultipleEventCountIncrement", "LogMultipleEventTimeWindow", "LogValid", "Name",
                            "SystemCreationClassName", "SystemName"));
}

TEST_F(SystemEventLogTest, ClearTakesTheLinesAloneAway) {
    m_log.clear();
    EXPECT_EQ(property("LogLines"), "absent");
    EXPECT_EQ(property("LogFull"), "boolean true");
    EXPECT_EQ(property("LogValid"), "boolean true");
    EXPECT_EQ(property("LogMultipleEventCountIncrement"), "uint8 7");
    EXPECT_EQ(property("LogMultipleEventTimeWindow"), "uint8 60");
}

TEST_F(SystemEventLogTest, SecondListOfLinesReplacesTheFirst) {
    m_log.setLogLines({"fourth"});
    EXPECT_EQ(property("LogLines"), "chars[] ['fourth']");
}

TEST_F(SystemEventLogTest, CountersComeOutAtTheirLimits) {
    m_log.setLogMultipleEventCountIncrement(0);
    m_log.setLogMultipleEventTimeWindow(255);
    EXPECT_EQ(property("LogMultipleEventCountIncrement"), "uint8 0");
    EXPECT_EQ(property("LogMultipleEventTimeWindow"), "uint8 255");
    m_log.setLogMultipleEventCountIncrement(255);
    m_log.setLogMultipleEventTimeWindow(0);
    EXPECT_EQ(property("LogMultipleEventCountIncrement"), "uint8 255");
    EXPECT_EQ(property("LogMultipleEventTimeWindow"), "uint8 0");
}

TEST_F(SystemEventLogTest, SwitchesComeOutByThemselves) {
    m_log.setLogFull(false);
    EXPECT_EQ(property("LogFull"), "boolean false");
    EXPECT_EQ(property("LogValid"), "boolean true");
    m_log.setLogFull(true);
    m_log.setLogValid(false);
    EXPECT_EQ(property("LogFull"), "boolean true");
    EXPECT_EQ(property("LogValid"), "boolean false");
}

TEST_F(SystemEventLogTest, PathEqualsTheInstancesPath) {
    const broker::ObjectPath path = broker::copyOut(m_log.getObjectPath(m_broker.handle()));
    EXPECT_EQ(describe(path), "root/cimv2:TQS_SystemEventLog Name=chars 'Quorvel POS System Event Log'");
    EXPECT_EQ(instance().path, path);
}

TEST_F(SystemEventLogTest, RefusedPropertyIsThrownAtOnceAndTheLogKeepsItsValues) {
    const broker::Instance whole = instance();
    const Strings names = propertyNames(whole);
    ASSERT_EQ(names.size(), 12U);
    for (unsigned nth = 1; nth <= names.size(); ++nth) {
        m_broker.startRecording();
        m_broker.planFault("setProperty", nth, broker::Fault::Refuse, CMPI_RC_ERR_NO_SUCH_PROPERTY);
        EXPECT_EQ(thrownCode([&] { m_log.getInstance(m_broker.handle()); }), CMPI_RC_ERR_NO_SUCH_PROPERTY) << nth;
        EXPECT_EQ(m_broker.recordedCalls().back().name, names[nth - 1]);
    }
    EXPECT_EQ(instance(), whole);
}

TEST_F(SystemEventLogTest, RefusedPathIsThrown) {
    m_broker.planFault("newObjectPath", 1, broker::Fault::Refuse, CMPI_RC_ERR_INVALID_NAMESPACE);
    m_broker.planFault("newObjectPath", 2, broker::Fault::Refuse, CMPI_RC_ERR_INVALID_CLASS);
    EXPECT_EQ(thrownCode([&] { m_log.getObjectPath(m_broker.handle()); }), CMPI_RC_ERR_INVALID_NAMESPACE);
    EXPECT_EQ(thrownCode([&] { m_log.getInstance(m_broker.handle()); }), CMPI_RC_ERR_INVALID_CLASS);
}

TEST_F(SystemEventLogTest, RefusedInstanceIsThrown) {
    m_broker.planFault("newInstance", 1, broker::Fault::Refuse, CMPI_RC_ERR_INVALID_CLASS);
    EXPECT_EQ(thrownCode([&] { m_log.getInstance(m_broker.handle()); }), CMPI_RC_ERR_INVALID_CLASS);
}

TEST_F(SystemEventLogTest, RefusedOrMissingArrayIsThrown) {
    m_broker.planFault("newArray", 1, broker::Fault::Refuse, CMPI_RC_ERR_INVALID_DATA_TYPE);
    m_broker.startRecording();
    EXPECT_EQ(thrownCode([&] { m_log.getInstance(m_broker.handle()); }), CMPI_RC_ERR_INVALID_DATA_TYPE);
    EXPECT_EQ(m_broker.recordedCalls().back().function, "newArray");

    m_broker.planFault("newArray", 1, broker::Fault::ReturnNull);
    m_broker.startRecording();
    EXPECT_EQ(thrownCode([&] { m_log.getInstance(m_broker.handle()); }), CMPI_RC_ERR_FAILED);
    EXPECT_EQ(m_broker.recordedCalls().back().function, "newArray");
}

TEST_F(SystemEventLogTest, RefusedElementIsNotNoticed) {
    m_broker.planFault("setElementAt", 1, broker::Fault::Refuse);
    const broker::Instance made = instance();
    EXPECT_EQ(m_broker.faultsLeft(), 0U);
    EXPECT_EQ(made.properties.size(), 12U);
    const broker::Value* lines = made.findProperty("LogLines");
    ASSERT_NE(lines, nullptr);
    ASSERT_EQ(lines->elements.size(), 3U);
    EXPECT_TRUE(lines->elements[0].isNull);
    EXPECT_EQ(describe(lines->elements[2]), "chars 'third'");
}

TEST_F(SystemEventLogTest, RefusedKeyIsNotNoticed) {
    m_broker.planFault("addKey", 1, broker::Fault::Refuse);
    m_broker.planFault("addKey", 2, broker::Fault::Refuse);
    EXPECT_EQ(describe(broker::copyOut(m_log.getObjectPath(m_broker.handle()))), "root/cimv2:TQS_SystemEventLog");
    EXPECT_EQ(instance().properties.size(), 12U);
    EXPECT_EQ(m_broker.faultsLeft(), 0U);
}
