// The terminal's one system event log, and how it is shown as the instance of the CIM class TQS_SystemEventLog.
//
// Reads nothing by itself: its owner fills it anew before each request for the instance. Not thread-safe.
#ifndef ZELSENSORS_TQS_SYSTEMEVENTLOG_H
#define ZELSENSORS_TQS_SYSTEMEVENTLOG_H

#include <cmpidt.h>
#include <cmpift.h>

#include <string>
#include <vector>

class TQS_SystemEventLog {
  public:
    TQS_SystemEventLog() = default;
    TQS_SystemEventLog(const TQS_SystemEventLog&) = default;
    TQS_SystemEventLog& operator=(const TQS_SystemEventLog&) = default;
    virtual ~TQS_SystemEventLog() = default;

    // Always the same static text.
    const char* getName() const;

    void setLogFull(bool logFull) { m_logFull = logFull; }
    void setLogLines(const std::vector<std::string>& logLines) { m_logLines = logLines; }
    void setLogMultipleEventCountIncrement(unsigned char increment) { m_logMultipleEventCountIncrement = increment; }
    void setLogMultipleEventTimeWindow(unsigned char window) { m_logMultipleEventTimeWindow = window; }
    void setLogValid(bool logValid) { m_logValid = logValid; }
    // Takes the lines away; the other values stay.
    void clear() { m_logLines.clear(); }

    // Both belong to the broker and are never null; a broker's refusal is thrown as a CMPIStatus* (see CimModel.h).
    CMPIObjectPath* getObjectPath(const CMPIBroker* broker) const;
    CMPIInstance* getInstance(const CMPIBroker* broker) const;

  protected:
    bool m_logFull = false;
    std::vector<std::string> m_logLines;
    unsigned char m_logMultipleEventCountIncrement = 0;
    unsigned char m_logMultipleEventTimeWindow = 0;
    bool m_logValid = false;

  private:
    CMPIArray* newLineArray(const CMPIBroker* broker) const;
};

#endif
