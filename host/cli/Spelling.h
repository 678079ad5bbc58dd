// What somebody meant who mistyped a word. Pure functions, thread-safe.
#ifndef ZELSENSORS_CLI_SPELLING_H
#define ZELSENSORS_CLI_SPELLING_H

#include <string>
#include <vector>

namespace host {

// The candidate that a mistyped word most likely means: the first of those with the fewest letters to be added, left
// out or replaced, two at most and fewer than the word has; case does not count. Empty where none is so near.
std::string nearestTo(const std::string& word, const std::vector<std::string>& candidates);

}  // namespace host

#endif
