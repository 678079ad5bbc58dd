// NVMe drives played by the test: this program's own `ioctl` takes the place of the C library's, for the code under
// test too, also in a library that was loaded with dlopen. The device nodes are plain files in the sandbox's /dev.
//
// Commands are scripted: each expected command is compared field by field, in order, and one that comes unexpected or
// is left over, or goes to a drive that was opened for writing, fails the test.
#ifndef ZELSENSORS_TESTS_FAKEDRIVES_H
#define ZELSENSORS_TESTS_FAKEDRIVES_H

#include <linux/nvme_ioctl.h>
#include <sys/ioctl.h>

#include <cstdint>
#include <string>
#include <vector>

namespace drives {

// What a scripted command is answered.
struct Answer {
    int returned = 0;                // the ioctl's return; below 0 sets errno
    int error = 0;                   // errno when `returned` is below 0
    std::uint32_t result = 0;        // completion dword 0
    std::vector<std::uint8_t> data;  // copied to the start of the caller's buffer when not empty
};

// One expected call of ioctl on a node such as "/dev/nvme0".
struct Expectation {
    std::string node;
    unsigned long request = NVME_IOCTL_ADMIN_CMD;
    nvme_admin_cmd command{};  // compared but for `addr` (only whether it is null), and `result`
    bool carriesData = false;  // whether addr must be set
    Answer answer;
};

// A drive's identity and thresholds, for the usual sequence.
struct Drive {
    std::string serial = "SN0001";  // padded with blanks to 20
    std::string model = "ZEL SSD";  // to 40
    std::string firmware = "1.0";   // to 8
    std::uint32_t numberOfNamespaces = 1;
    int namespaceId = -1;  // what NVME_IOCTL_ID answers
    std::uint32_t underThresholdKelvin = 273;
    std::uint32_t overThresholdKelvin = 343;
};

void makeNode(const std::string& node);  // a plain file in the sandbox's /dev

// The single expectations, with the usual good answers; change the answer before handing them to expect().
Expectation namespaceIdQuery(const std::string& node, int answer);
Expectation identifyController(const std::string& node, const Drive& drive);
Expectation identifyNamespace(const std::string& node, std::uint32_t nsid);
Expectation underThreshold(const std::string& node, std::uint32_t result);
Expectation overThreshold(const std::string& node, std::uint32_t result);
Expectation healthPage(const std::string& node, std::uint16_t kelvin);
// The whole sequence that identifies a drive, all good.
std::vector<Expectation> identification(const std::string& node, const Drive& drive);

void expect(Expectation expectation);
void expect(const std::vector<Expectation>& expectations);
// A drive that answers the usual commands in any order and as often as they come, and without an expectation. Not
// together with expectations.
void attach(const std::string& node, const Drive& drive, std::uint16_t kelvin);
// One ioctl answers -1 with this errno (1: the next); 0: none does any longer.
void failCall(unsigned nth, int error);
bool isFailurePending();  // failCall()'s call has not come yet
// Fails the running test for each expectation that is left, then forgets them. Call at the end of each test.
void verifyAllMet();
void clear();
// How many ioctl calls were made since clear().
unsigned callCount();

}  // namespace drives

#endif
