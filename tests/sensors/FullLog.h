// Runs a piece of a test in a process of its own whose log takes every level, so that the whole of what is logged there
// can be compared (LogLines.h) when it has ended.
#ifndef ZELSENSORS_TESTS_FULLLOG_H
#define ZELSENSORS_TESTS_FULLLOG_H

#include <functional>
#include <string>

// Needs the sandbox. Fails the test when the body fails, when an expected drive command is left over, or when a drive
// is still open at the end. Gives what the body wrote to standard error.
std::string runWithFullLog(const std::function<void()>& body);

#endif
