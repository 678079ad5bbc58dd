// Runs the main paths, each between two marks. Under callgrind, which is to start without collecting, each path leaves
// a dump that bears its name. Under strace the marks are writes to no file: "begin <path> <times>" and "end".
//
// What a path must do only the first time in a process is done before its first mark, except where that is the path.
#include <unistd.h>
#include <valgrind/callgrind.h>

#include <exception>
#include <functional>
#include <stdexcept>
#include <string>

#include "AnsweringDrives.h"
#include "NvmeSsd.h"
#include "Silence.h"
#include "Stage.h"
#include "log.h"

namespace {

constexpr int SENSORS = 100;
constexpr int TIMES = 10;

// The write fails, and is meant to.
void mark(const std::string& text) {
    if (write(-1, text.data(), text.size()) >= 0) throw std::logic_error("the mark went to a file");
}

void run(const std::string& path, const std::function<void()>& once, int times = TIMES) {
    mark("begin " + path + " " + std::to_string(times));
    CALLGRIND_ZERO_STATS;
    CALLGRIND_TOGGLE_COLLECT;
    for (int i = 0; i < times; ++i) once();
    CALLGRIND_TOGGLE_COLLECT;
    CALLGRIND_DUMP_STATS_AT(path.c_str());
    mark("end");
}

void runTwice(const std::string& path, const std::function<void()>& once) {
    once();
    run(path, once);
}

void runRequests(Stage& stage) {
    stage.setSensors(SENSORS);
    CMPIInstanceMI* mi = stage.provider();
    runTwice("names", [&] { stage.askNames(mi); });
    runTwice("fresh-instances", [&] { stage.askInstances(mi); });
    runTwice("due-instances", [&] {
        stage.advanceToNextReading();
        stage.askInstances(mi);
    });
    runTwice("first-instance", [&] { stage.askInstance(mi, 0); });
    runTwice("last-instance", [&] { stage.askInstance(mi, SENSORS - 1); });
    runTwice("due-instance", [&] {
        stage.advanceToNextReading();
        stage.askInstance(mi, SENSORS - 1);
    });
    runTwice("start-and-stop", [&] { stage.startAndStop(SENSORS); });
}

void runLog() {
    run(
        "log-first-line", [] { LogQuick(LOG_INFO, "the first"); }, 1);
    runTwice("log-filtered", [] { Log(LOG_DEBUG, "Class::operation - value=%d", 42); });
    runTwice("log-written", [] { Log(LOG_INFO, "Class::operation - value=%d", 42); });
    runTwice("log-written-quick", [] { LogQuick(LOG_INFO, "Class::operation"); });
}

void runDrives() {
    makeDrives(10);
    runTwice("drive-scan", [] { NvmeSsd().scanNVMeDevices(); });
    runTwice("drive-temperature", [] { NvmeSsd().getSsdTemperature(9); });
}

}  // namespace

int main() {
    Silence silence;
    try {
        runRequests(Stage::get());
        runLog();
        runDrives();
    } catch (const std::exception& error) {
        silence.errors << error.what() << "\n";
        return 1;
    }
}
