// The log's sink, with what it keeps to itself in the open.
#ifndef ZELSENSORS_TESTS_OPENHANDLER_H
#define ZELSENSORS_TESTS_OPENHANDLER_H

#include <string>

#include "LogHandler.h"

class OpenHandler : public FileLogHandler {
  public:
    enum class State { Closed, Open, Stopped };

    using FileLogHandler::m_file;
    using FileLogHandler::m_fileName;
    using FileLogHandler::m_isConsole;
    using FileLogHandler::m_level;
    using FileLogHandler::m_maxLength;
    using FileLogHandler::m_stopped;

    State state() const {
        if (m_stopped) return State::Stopped;
        return m_file == nullptr ? State::Closed : State::Open;
    }

    void write(std::string line) { WriteLog(line); }
};

#endif
