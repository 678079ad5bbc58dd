#include "LogLines.h"

#include <gtest/gtest.h>

#include <cctype>
#include <cstdlib>
#include <sstream>

#include "Sandbox.h"

namespace {

// Digits for '0', lower-case hexadecimal ones for 'x', anything for '*'; the rest stands for itself.
const std::string PREFIX_FORM = "00/00/0000 00:00:00.000\tP[xxxxxxxx] T[xxxxxxxx]\t";
constexpr std::size_t PROCESS_AT = 26;
constexpr std::size_t THREAD_AT = 38;

bool matches(char form, char got) {
    const bool isDigit = std::isdigit(static_cast<unsigned char>(got)) != 0;
    if (form == '0') return isDigit;
    if (form == 'x') return isDigit || (got >= 'a' && got <= 'f');
    return form == got;
}

bool hasPrefix(const std::string& line) {
    if (line.size() < PREFIX_FORM.size()) return false;
    for (std::size_t i = 0; i < PREFIX_FORM.size(); ++i)
        if (!matches(PREFIX_FORM[i], line[i])) return false;
    return line.find('\t', PREFIX_FORM.size()) != std::string::npos;
}

unsigned hexadecimal(const std::string& line, std::size_t at) {
    return static_cast<unsigned>(std::strtoul(line.substr(at, 8).c_str(), nullptr, 16));
}

std::string wordOf(const std::string& levelColumn) {
    EXPECT_TRUE(levelColumn.empty() || levelColumn.size() == 5) << "level column '" << levelColumn << "'";
    return levelColumn.substr(0, levelColumn.find(' '));
}

LogLine takeApart(const std::string& line) {
    const std::size_t levelEnd = line.find('\t', PREFIX_FORM.size());
    LogLine parts;
    parts.level = wordOf(line.substr(PREFIX_FORM.size(), levelEnd - PREFIX_FORM.size()));
    parts.message = line.substr(levelEnd + 1);
    parts.process = hexadecimal(line, PROCESS_AT);
    parts.thread = hexadecimal(line, THREAD_AT);
    return parts;
}

}  // namespace

std::vector<LogLine> parseLog(const std::string& contents) {
    EXPECT_TRUE(contents.empty() || contents.back() == '\n') << "the log's last line has no end";
    std::vector<LogLine> lines;
    std::istringstream stream(contents);
    for (std::string line; std::getline(stream, line);) {
        if (hasPrefix(line))
            lines.push_back(takeApart(line));
        else if (!lines.empty())
            lines.back().message += "\n" + line;  // the message had a newline of its own
        else
            ADD_FAILURE() << "not a log line: " << line;
    }
    return lines;
}

std::vector<LogLine> loggedLines() {
    return parseLog(sandbox::readLog());
}

std::vector<std::string> loggedMessages() {
    std::vector<std::string> messages;
    for (const LogLine& line : loggedLines()) messages.push_back(line.message);
    return messages;
}

std::vector<std::string> messagesAt(const std::string& level) {
    std::vector<std::string> messages;
    for (const LogLine& line : loggedLines())
        if (line.level == level) messages.push_back(line.message);
    return messages;
}
