// Boots the program's guest for a suite of tests, and holds what came out of it.
#ifndef ZELSENSORS_TESTS_GUEST_H
#define ZELSENSORS_TESTS_GUEST_H

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>
#include <string>
#include <vector>

using Strings = std::vector<std::string>;

struct Machine {
    std::string group;         // the file of steps, in the guest's groups
    unsigned drives = 0;       // the emulator's own NVMe controllers, with the serial numbers ZEL0, ZEL1, ...
    bool hasTrace = false;     // whether the emulator records what its controllers are sent
    std::string kernel = "";   // more for the kernel's command line
    std::string devices = "";  // more for the emulator's
    std::map<std::string, std::string> files = {};  // contents by name, in the directory where the emulator runs
};

// Each suite boots once, in its SetUpTestSuite.
class GuestTest : public testing::Test {
  protected:
    static void boot(const Machine& machine);
    static void TearDownTestSuite();
    void SetUp() override;

    // The lines that the guest reported in the section of this title. An unknown title fails the test.
    static Strings section(const std::string& title);
    // The emulator's records, in order.
    static const Strings& trace();
};

#endif
