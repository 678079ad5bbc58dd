// A nameless file in memory that output is sent to: unlike a pipe it takes any amount without a reader.
#ifndef ZELSENSORS_TESTS_MEMORYFILE_H
#define ZELSENSORS_TESTS_MEMORYFILE_H

#include <string>

// The descriptor is the caller's to close. Throws std::system_error on failure, as does takeContents.
int makeMemoryFile();
// Everything in the file, which is empty afterwards.
std::string takeContents(int file);

#endif
