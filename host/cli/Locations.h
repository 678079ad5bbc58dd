// Where the libraries, the scenarios and the schema are.
#ifndef ZELSENSORS_CLI_LOCATIONS_H
#define ZELSENSORS_CLI_LOCATIONS_H

#include <string>
#include <vector>

#include "cli/Options.h"
#include "source/ChipLibrary.h"

namespace host {

// What belongs to the tree that the program stands in, built or installed.
struct InstallTree {
    std::string provider;        // a path; "libzelsensors.so.0", for the loader to find, where the tree has none
    std::string simulatedChip;   // a path, or empty
    std::string scenarios;       // a directory, or empty
    std::string schema;          // a directory, or empty
    bool isInstalled = true;     // otherwise it is a build tree, which simulates unless it is asked not to
    std::string linuxChip = {};  // a path, or empty: the chip library on Linux's own drivers
};

// The directory of the running program. Throws std::runtime_error where /proc does not say.
std::string programDirectory();

// Of the scenarios in that directory, sorted: what --scenario calls them.
std::vector<std::string> scenarioNames(const std::string& directory);

// What is to be loaded, and with which scenario.
struct LibraryChoice {
    std::string provider;
    ChipChoice chip;
    std::string scenario;  // a file; empty: as the environment says
};

InstallTree installTree(const std::string& programDirectory);

// Throws UsageError for a scenario that is not there (the message lists those that are) or is no regular file, and for
// a chip library that is asked for by its word and is not there.
LibraryChoice choose(const Options& options, const InstallTree& tree);

// The MOF files that verify compares with, in the order of reading. Throws UsageError where none is named and the tree
// has none.
std::vector<std::string> schemaFiles(const Options& options, const InstallTree& tree);

}  // namespace host

#endif
