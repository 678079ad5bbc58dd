#include "Guest.h"

#include <sys/wait.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>

#include "FileContents.h"

namespace {

// What the suite's boot came to.
struct Outcome {
    std::string unavailable;  // why there was no boot
    std::string trouble;      // why what came out is no good
    std::map<std::string, Strings> sections;
    Strings trace;
};

Outcome outcome;

Strings linesOf(const std::filesystem::path& path) {
    std::ifstream file(path);
    Strings lines;
    for (std::string line; std::getline(file, line);) lines.push_back(line);
    return lines;
}

std::map<std::string, Strings> sectionsOf(const Strings& transcript) {
    std::map<std::string, Strings> sections;
    std::string title;
    for (const std::string& line : transcript) {
        if (line.compare(0, 3, "## ") == 0)
            sections[title = line.substr(3)];
        else
            sections[title].push_back(line);
    }
    return sections;
}

// Software emulation everywhere: a /dev/kvm that is there may not work. The guest's clock counts its instructions, 4 ns
// each, and jumps to the next timer where the guest only waits: its kernel's patience with a drive then does not depend
// on how busy this machine is. The hour is there to end an emulator that hangs. The files' paths hold no quotes.
std::string commandLine(const Machine& machine, const std::filesystem::path& run) {
    std::ostringstream line;
    line << "cd '" << run.string()
         << "' && timeout -k 5 3500 qemu-system-x86_64 -accel tcg -icount shift=2,sleep=off -machine q35 -m 512 "
            "-nodefaults "
            "-display none -no-reboot"
         << " -device isa-debug-exit,iobase=0xf4,iosize=1 -kernel '" << GUEST << "/vmlinuz' -initrd '" << GUEST
         << "/initrd.cpio' -append 'console=ttyS0 panic=-1 quiet group=" << machine.group << ' ' << machine.kernel
         << "' -serial file:console -serial file:transcript " << machine.devices;
    for (unsigned i = 0; i < machine.drives; ++i) {
        line << " -blockdev null-co,node-name=n" << i << ",size=16777216,read-zeroes=on -device nvme,serial=ZEL" << i
             << ",drive=n" << i;
    }
    if (machine.hasTrace) {
        for (const char* event : {"admin_cmd", "identify", "getfeat", "get_log", "map_prp", "enqueue_req_completion"})
            line << " -trace pci_nvme_" << event;
        line << " -trace 'pci_nvme_err*' -D trace";
    }
    line << " </dev/null >emulator 2>&1";
    return line.str();
}

}  // namespace

void GuestTest::boot(const Machine& machine) {
    outcome = Outcome();
    if (!std::filesystem::exists(GUEST "/initrd.cpio")) {
        outcome.unavailable = contentsOf(GUEST "/unavailable");
        if (outcome.unavailable.empty()) outcome.unavailable = "the test " GUEST_TEST " has not made a guest";
        return;
    }
    const std::filesystem::path run = std::filesystem::path(RUNS) / machine.group;
    std::filesystem::remove_all(run);
    std::filesystem::create_directories(run);
    for (const auto& [name, contents] : machine.files) std::ofstream(run / name, std::ios::binary) << contents;
    const int status = std::system(commandLine(machine, run).c_str());
    const int code = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    // Only the guest's own word gives 3; a panic and a power-off give 0.
    if (code != 3) {
        outcome.trouble = "the emulator's exit code is " + std::to_string(code) + "\n" + contentsOf(run / "emulator") +
                          contentsOf(run / "console") + contentsOf(run / "transcript");
    }
    outcome.sections = sectionsOf(linesOf(run / "transcript"));
    outcome.trace = linesOf(run / "trace");
}

void GuestTest::TearDownTestSuite() {
    outcome = Outcome();
}

void GuestTest::SetUp() {
    if (!outcome.unavailable.empty()) {
        ASSERT_EQ(std::getenv("CI"), nullptr) << outcome.unavailable;
        GTEST_SKIP() << outcome.unavailable;
    }
    ASSERT_TRUE(outcome.trouble.empty()) << outcome.trouble;
}

Strings GuestTest::section(const std::string& title) {
    const auto found = outcome.sections.find(title);
    if (found == outcome.sections.end()) {
        ADD_FAILURE() << "the guest reported nothing of '" << title << "'";
        return {};
    }
    return found->second;
}

const Strings& GuestTest::trace() {
    return outcome.trace;
}
