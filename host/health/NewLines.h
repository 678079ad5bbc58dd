// Which lines of an event log have come since the last look. The log itself does not say: its lines bear no numbers,
// new ones come at the end, the oldest go when it is full, and it may be cleared.
#ifndef ZELSENSORS_HEALTH_NEWLINES_H
#define ZELSENSORS_HEALTH_NEWLINES_H

#include <cstddef>
#include <string>
#include <vector>

namespace host {

// The position in `now` of the first line that is new against `before`; those behind it are new too, and now.size()
// means that none is.
//
// The first of these that holds decides. All of `before` begins `now`: what follows has been appended. The end of
// `before` begins `now`: the log has dropped its oldest lines, and what follows the longest such overlap is new. Else
// what follows the common beginning is new: all of it after the log has been cleared. With lines that differ from each
// other, none is lost and none is taken twice. Of lines that repeat word for word some may be lost when the oldest are
// dropped, and a line that goes again before it has been looked at is never seen.
std::size_t firstNewLine(const std::vector<std::string>& before, const std::vector<std::string>& now);

}  // namespace host

#endif
