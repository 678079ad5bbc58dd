// The lines of the event log: texts of the chip, whose form nobody promises. Many begin with a number, and contain a
// date.
#ifndef ZELSENSORS_HEALTH_EVENTLINES_H
#define ZELSENSORS_HEALTH_EVENTLINES_H

#include <cstddef>
#include <ctime>
#include <optional>
#include <string>
#include <vector>

#include "source/Answer.h"

namespace host {

// The first "YYYY-MM-DD HH:MM" in the text, a T instead of the blank and seconds allowed, as "YYYY-MM-DD HH:MM:SS";
// nothing where there is none that can be.
std::optional<std::string> dateIn(const std::string& line);

// The line begins with digits and a blank.
bool hasOwnNumber(const std::string& line);

// What "since" means, in the form of dateIn(): a date, with a time or without; or how long before `now` by the local
// clock, as a whole number and one of the letters s, m, h, d, w. Nothing for other words.
std::optional<std::string> momentIn(const std::string& word, std::time_t now);

// Which lines are wanted; each of these leaves others out.
struct LineFilter {
    std::optional<std::string> since;  // as momentIn() gives it
    std::string match;                 // a text that the line has, in any case of ASCII's letters; empty: all
    std::optional<std::size_t> last;   // so many of those that are left, counted from the end
};

// The lines that are left.
std::vector<std::string> wantedLines(std::vector<std::string> lines, const LineFilter& filter);

// The answer with these lines alone. A line's date is compared as it is written; a line without a date is never too
// old.
Answer withLines(Answer answer, const LineFilter& filter);

}  // namespace host

#endif
