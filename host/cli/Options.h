// What the command line asks for.
#ifndef ZELSENSORS_CLI_OPTIONS_H
#define ZELSENSORS_CLI_OPTIONS_H

#include <chrono>
#include <string>
#include <vector>

#include "health/EventLines.h"
#include "source/Request.h"

namespace host {

enum class ScenarioAction { None, List, Check };
enum class Format { Table, Json, Mof, Csv };
enum class Colouring { Auto, Always, Never };

// What `sensors` shows.
struct SensorOptions {
    std::vector<std::string> names;  // as SensorNames.h takes them; empty: all
    bool onlyProblems = false;
    std::string kind;  // empty: all
    bool isWorstFirst = false;
    Colouring colouring = Colouring::Auto;  // of watch too
    bool hasHeader = true;
};

// What `check` looks at, and how gravely it takes it.
struct CheckOptions {
    std::vector<std::string> ignored;  // sensors, as SensorNames.h takes them
    bool warnsOnCritical = false;
    bool warnsOnNoReading = false;
    bool withEventLog = false;
};

// What `record` writes.
struct RecordOptions {
    std::string file;
    double duration = 0;  // seconds; 0: one round
    bool isForced = false;
    bool isRedacted = false;
};

// The object managers that are asked over the network, and how.
struct ServerOptions {
    std::string url;   // scheme, host and port; empty: none
    std::string list;  // a file with URLs, or "-"; empty: none. Without both a provider is loaded here
    std::string user;  // empty: none
    std::string passwordFile;
    std::string caFile;
    bool isInsecure = false;
    std::chrono::milliseconds timeout{30000};  // for a whole request
};

struct Options {
    Request request;
    ScenarioAction scenarioAction = ScenarioAction::None;  // another than None: nothing is requested
    std::vector<std::string> scenarioFiles;                // of check; the two of diff
    SensorOptions sensors;
    CheckOptions check;
    RecordOptions record;
    ServerOptions server;
    double interval = 2;              // seconds between the rounds of watch
    unsigned rounds = 0;              // of watch, or looks of log; 0: until it is interrupted
    double every = 0;                 // seconds between pages of metrics, looks of log or rounds of record; 0: one
                                      // page, or the default
    std::string to;                   // the file of metrics' pages; empty: standard output
    bool hasThresholds = true;        // metrics shows them
    std::vector<std::string> schema;  // of verify: MOF files in the order of reading; empty: the own tree's

    LineFilter lines;  // of log
    bool isFollowed = false;
    std::string state;  // the file of log's state; empty: none

    std::string provider;  // the library; empty: the one of the program's own tree
    std::string providerName = "SensorProvider";
    std::string chip;      // a file or directory, "system", "simulated" or "linux"; empty: the default
    std::string scenario;  // a name or a file; empty: what the environment says
    Format format = Format::Table;
    std::string providerOutput;  // a file, or "-"; empty: only the lines of a start that fails are shown
};

}  // namespace host

#endif
