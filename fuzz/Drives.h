// NVMe drives as the fuzzer wants them: in a program that links this, glob, open, fcntl, ioctl and close of the drives
// are answered from here, and every command is checked to be one of those that the provider sends. Calls that concern
// anything else go to the C library.
#ifndef ZELSENSORS_FUZZ_DRIVES_H
#define ZELSENSORS_FUZZ_DRIVES_H

#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace drives {

// What an ioctl answers. Where `returned` is -1 nothing else is written, as the kernel does not either.
struct Answer {
    int returned = 0;
    std::uint32_t result = 0;  // completion dword 0
};

struct Drive {
    bool isListed = false;   // glob finds it
    int openError = 0;       // errno of the first opening; 0: it opens
    int laterOpenError = 0;  // of all that follow
    bool takesFlag = true;   // whether fcntl succeeds
    int namespaceId = -1;    // what NVME_IOCTL_ID answers
    Answer identifyController;
    Answer identifyNamespace;
    Answer under;
    Answer over;
    Answer health;
    std::array<char, 4096> controllerPage{};
    std::array<std::uint8_t, 512> healthPage{};
    unsigned openings = 0;                          // so far
    std::vector<std::uint32_t> askedForNamespaces;  // by Identify Namespace, so far
};

using Drives = std::array<Drive, 10>;  // /dev/nvme0 to /dev/nvme9

// Puts the machine's drives in place of the former ones, with what glob answers (its own codes, 0 for success). All
// drives are there for open, unless their openError says otherwise.
void set(const Drives& drives, int globCode);
const Drives& now();

// What the code under test has not given back: descriptors, and matches of glob.
unsigned openDescriptors();
unsigned unreleasedMatches();

}  // namespace drives

#endif
