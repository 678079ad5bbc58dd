#include "TQS_SystemEventLog.h"

#include "CimModel.h"

namespace {

constexpr char CLASS_NAME[] = "TQS_SystemEventLog";
// Key, caption and device id in one.
constexpr char LOG_NAME[] = "Quorvel POS System Event Log";
constexpr char LOG_DESCRIPTION[] =
    "The Quorvel POS System Event Log is a motherboard level storage device that contains a record of critical system "
    "events such as POST errors, disk check errors, etc.";

}  // namespace

const char* TQS_SystemEventLog::getName() const {
    return LOG_NAME;
}

CMPIObjectPath* TQS_SystemEventLog::getObjectPath(const CMPIBroker* broker) const {
    return newNamedPath(broker, CLASS_NAME, LOG_NAME);
}

CMPIInstance* TQS_SystemEventLog::getInstance(const CMPIBroker* broker) const {
    InstanceBuilder builder(broker, newNamedPath(broker, CLASS_NAME, LOG_NAME));
    builder.text("Caption", LOG_NAME);
    builder.text("CreationClassName", CLASS_NAME);
    builder.text("Description", LOG_DESCRIPTION);
    builder.text("DeviceID", LOG_NAME);
    builder.boolean("LogFull", m_logFull);
    if (!m_logLines.empty()) builder.array("LogLines", newLineArray(broker), CMPI_charsA);
    builder.uint8("LogMultipleEventCountIncrement", m_logMultipleEventCountIncrement);
    builder.uint8("LogMultipleEventTimeWindow", m_logMultipleEventTimeWindow);
    builder.boolean("LogValid", m_logValid);
    builder.text("Name", LOG_NAME);
    builder.text("SystemCreationClassName", SYSTEM_CREATION_CLASS_NAME);
    builder.text("SystemName", SYSTEM_NAME);
    return builder.instance();
}

// An element that the broker refuses is not noticed.
CMPIArray* TQS_SystemEventLog::newLineArray(const CMPIBroker* broker) const {
    CMPIStatus status = {CMPI_RC_OK, nullptr};
    CMPIArray* lines = CMNewArray(broker, static_cast<CMPICount>(m_logLines.size()), CMPI_chars, &status);
    requireMade(lines, status);
    CMPICount position = 0;
    for (const std::string& line : m_logLines) {
        CMSetArrayElementAt(lines, position, asValue(line.c_str()), CMPI_chars);
        ++position;
    }
    return lines;
}
