// The reader of the "key=value" files under /etc/tarn.
#ifndef ZELSENSORS_LOG_SETTINGSFILE_H
#define ZELSENSORS_LOG_SETTINGSFILE_H

#include <functional>
#include <string>

// Hands each setting of the file, in the file's order, to `setting`. Does nothing when the file cannot be opened; after
// a read error nothing more is handed over. An exception of `setting` passes through.
//
// The key is all that stands before the line's first "=", blanks included. The value is all after it but the line's
// last character, taken to be the newline whatever it is: the last line of a file that lacks its newline is thus
// shortened. A line is cut at its first NUL byte. Lines without "=" or with nothing before it are no settings; there
// are no comments.
void readSettings(const char* path,
                  const std::function<void(const std::string& key, const std::string& value)>& setting);

// Reads a number as scanf's "%lu" does: leading white space and a sign are taken, what follows the digits is ignored, a
// negative number wraps around, one too large gives the largest. False, with `number` left alone, when there is no
// digit.
bool scanUnsigned(const std::string& value, unsigned long& number);

#endif
