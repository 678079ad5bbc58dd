// Where log records end up: the sink, and the one there is, which appends to a file of limited size or writes to
// standard error.
#ifndef ZELSENSORS_LOG_LOGHANDLER_H
#define ZELSENSORS_LOG_LOGHANDLER_H

#include <cstdint>
#include <cstdio>
#include <mutex>
#include <string>

#include "LogLevel.h"

class LogRecord;

// A sink. The order of the virtual operations is part of the library's layout.
class LogHandler {
  public:
    virtual ~LogHandler() = default;

    // Writes the record, whatever its level: the front end has compared the levels already.
    virtual void Log(LogRecord& record) = 0;

    // The highest level that is to be handed to Log().
    virtual LOG_LEVEL GetLevel() = 0;
};

// Set up once, from /etc/tarn/log.conf, when it is made. The file is opened by the first line, reopened when it was
// deleted, and left alone for good once it has reached its limit. No failure is reported: the line is lost, that is
// all.
//
// Log() and WriteLog() may be called from several threads. Owns its stream, which closes with it.
class FileLogHandler : public LogHandler {
  public:
    FileLogHandler();
    ~FileLogHandler() override;
    FileLogHandler(const FileLogHandler&) = delete;
    FileLogHandler& operator=(const FileLogHandler&) = delete;

    void Log(LogRecord& record) override;
    LOG_LEVEL GetLevel() override;

    // Sets the defaults, then applies the configuration file, where there is one. Not while another thread logs.
    void GetConfig();

    // Appends the line's bytes to the file and flushes. If the file was open, reports its link count on standard output
    // first.
    void WriteLog(std::string& line);

    // Gives what fputs to standard error gave: negative when it failed.
    int WriteConsole(std::string& line);

  protected:
    // The order of these is part of the library's layout.
    LOG_LEVEL m_level = LOG_OFF;
    std::string m_fileName;
    std::uint64_t m_maxLength = 0;  // bytes; looked at before a line is written, so the file may end a line past it
    bool m_isConsole = false;
    std::FILE* m_file = nullptr;  // null while the file is not open
    bool m_stopped = false;       // the limit was reached; never cleared

  private:
    void ApplySetting(const std::string& key, const std::string& value);
    void OpenFile();
    void CloseFile();

    std::mutex m_writing;  // held for the whole of WriteLog()
};

#endif
