// The log file taken apart, so that tests compare whole sequences of messages. The form of each line's prefix is
// checked on the way; a line of another form fails the running test.
#ifndef ZELSENSORS_TESTS_LOGLINES_H
#define ZELSENSORS_TESTS_LOGLINES_H

#include <string>
#include <vector>

struct LogLine {
    std::string level;    // "Error", "Info", "Debug", "Trace"; without the padding
    std::string message;  // newlines of its own included, the line's end not
    unsigned process = 0;
    unsigned thread = 0;
};

std::vector<LogLine> parseLog(const std::string& contents);
// The following read the sandbox's default log file.
std::vector<LogLine> loggedLines();
std::vector<std::string> loggedMessages();
std::vector<std::string> messagesAt(const std::string& level);

#endif
