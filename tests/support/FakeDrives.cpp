#include "FakeDrives.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <limits.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdarg>
#include <cstring>
#include <deque>
#include <fstream>
#include <mutex>
#include <sstream>
#include <stdexcept>

namespace {

constexpr std::uint32_t IDENTIFY_LENGTH = 4096;
constexpr std::uint32_t HEALTH_PAGE_LENGTH = 512;

std::mutex s_guard;
std::deque<drives::Expectation> s_expected;
unsigned s_calls = 0;
std::vector<drives::Expectation> s_attached;
unsigned s_callsToFailure = 0;  // 0: no single call is to fail
int s_singleFailure = 0;

std::string nodeOf(int descriptor) {
    std::array<char, PATH_MAX> name{};
    const std::string link = "/proc/self/fd/" + std::to_string(descriptor);
    const ssize_t length = readlink(link.c_str(), name.data(), name.size());
    return length < 0 ? "no open file" : std::string(name.data(), static_cast<std::size_t>(length));
}

std::string describe(const std::string& node, unsigned long request, const nvme_admin_cmd* command) {
    std::ostringstream text;
    text << std::hex << std::showbase << node << " request " << request;
    if (command != nullptr)
        text << " opcode " << unsigned{command->opcode} << " nsid " << command->nsid << " cdw10 " << command->cdw10
             << " cdw11 " << command->cdw11 << " data_len " << command->data_len;
    return text.str();
}

std::string describe(const drives::Expectation& one) {
    return describe(one.node, one.request, one.request == NVME_IOCTL_ADMIN_CMD ? &one.command : nullptr);
}

void compareField(std::ostringstream& differences, const char* name, std::uint64_t wanted, std::uint64_t got) {
    if (wanted != got)
        differences << "  " << name << ": expected " << std::hex << std::showbase << wanted << ", got " << got << "\n";
}

void compareCommand(std::ostringstream& differences, const drives::Expectation& one, const nvme_admin_cmd& got) {
    const nvme_admin_cmd& wanted = one.command;
    compareField(differences, "opcode", wanted.opcode, got.opcode);
    compareField(differences, "flags", wanted.flags, got.flags);
    compareField(differences, "rsvd1", wanted.rsvd1, got.rsvd1);
    compareField(differences, "nsid", wanted.nsid, got.nsid);
    compareField(differences, "cdw2", wanted.cdw2, got.cdw2);
    compareField(differences, "cdw3", wanted.cdw3, got.cdw3);
    compareField(differences, "metadata", wanted.metadata, got.metadata);
    compareField(differences, "whether addr is set", one.carriesData ? 1 : 0, got.addr != 0 ? 1 : 0);
    compareField(differences, "metadata_len", wanted.metadata_len, got.metadata_len);
    compareField(differences, "data_len", wanted.data_len, got.data_len);
    compareField(differences, "cdw10", wanted.cdw10, got.cdw10);
    compareField(differences, "cdw11", wanted.cdw11, got.cdw11);
    compareField(differences, "cdw12", wanted.cdw12, got.cdw12);
    compareField(differences, "cdw13", wanted.cdw13, got.cdw13);
    compareField(differences, "cdw14", wanted.cdw14, got.cdw14);
    compareField(differences, "cdw15", wanted.cdw15, got.cdw15);
    compareField(differences, "timeout_ms", wanted.timeout_ms, got.timeout_ms);
}

int refuse(const std::string& message) {
    ADD_FAILURE() << message;
    errno = ENOTTY;
    return -1;
}

int answer(const drives::Answer& given, nvme_admin_cmd* command) {
    if (command != nullptr) {
        const std::size_t length = std::min<std::size_t>(given.data.size(), command->data_len);
        if (length > 0) std::memcpy(reinterpret_cast<void*>(command->addr), given.data.data(), length);
        if (given.returned >= 0) command->result = given.result;
    }
    if (given.returned < 0) errno = given.error;
    return given.returned;
}

// The attached drives' answer to this command; null when they have none.
const drives::Expectation* findAttached(const std::string& node, unsigned long request, const nvme_admin_cmd* command) {
    const auto found = std::find_if(s_attached.begin(), s_attached.end(), [&](const drives::Expectation& one) {
        if (one.node != node || one.request != request) return false;
        return command == nullptr || (one.command.opcode == command->opcode && one.command.cdw10 == command->cdw10 &&
                                      one.command.cdw11 == command->cdw11);
    });
    return found == s_attached.end() ? nullptr : &*found;
}

int playDrive(int descriptor, unsigned long request, nvme_admin_cmd* command) {
    const std::lock_guard<std::mutex> lock(s_guard);
    ++s_calls;
    const std::string node = nodeOf(descriptor);
    // Not by fcntl, which a test may have replaced too.
    if ((syscall(SYS_fcntl, descriptor, F_GETFL) & O_ACCMODE) != O_RDONLY)
        return refuse(node + " was opened for writing");
    if (s_callsToFailure > 0 && --s_callsToFailure == 0) {
        errno = s_singleFailure;
        return -1;
    }
    if (const drives::Expectation* one = findAttached(node, request, command)) return answer(one->answer, command);
    if (s_expected.empty()) return refuse("unexpected ioctl: " + describe(node, request, command));
    const drives::Expectation one = s_expected.front();
    s_expected.pop_front();
    std::ostringstream differences;
    if (node != one.node) differences << "  node: expected " << one.node << ", got " << node << "\n";
    compareField(differences, "request", one.request, request);
    if (one.request == request && command != nullptr) compareCommand(differences, one, *command);
    if (!differences.str().empty())
        return refuse("ioctl differs from the one expected, " + describe(one) + ":\n" + differences.str());
    return answer(one.answer, command);
}

void putText(std::vector<std::uint8_t>& data, std::size_t offset, std::size_t length, const std::string& text) {
    for (std::size_t i = 0; i < length; ++i)
        data[offset + i] = i < text.size() ? static_cast<std::uint8_t>(text[i]) : std::uint8_t{' '};
}

drives::Expectation command(const std::string& node, std::uint8_t opcode, std::uint32_t nsid, std::uint32_t cdw10) {
    drives::Expectation one;
    one.node = node;
    one.command.opcode = opcode;
    one.command.nsid = nsid;
    one.command.cdw10 = cdw10;
    return one;
}

drives::Expectation reading(drives::Expectation one, std::uint32_t length) {
    one.command.data_len = length;
    one.carriesData = true;
    one.answer.data.assign(length, 0);
    return one;
}

constexpr std::uint32_t ALL_NAMESPACES = 0xFFFFFFFF;

// Get Features, Temperature Threshold, its default value.
drives::Expectation threshold(const std::string& node, std::uint32_t kind, std::uint32_t result) {
    drives::Expectation one = command(node, 0x0A, ALL_NAMESPACES, 0x104);
    one.command.cdw11 = kind;
    one.answer.result = result;
    return one;
}

}  // namespace

namespace drives {

void makeNode(const std::string& node) {
    if (!std::ofstream(node)) throw std::runtime_error("cannot make " + node);
}

Expectation namespaceIdQuery(const std::string& node, int answer) {
    Expectation one;
    one.node = node;
    one.request = NVME_IOCTL_ID;
    one.answer.returned = answer;
    one.answer.error = ENOTTY;
    return one;
}

Expectation identifyController(const std::string& node, const Drive& drive) {
    Expectation one = reading(command(node, 0x06, 0, 1), IDENTIFY_LENGTH);
    putText(one.answer.data, 4, 20, drive.serial);
    putText(one.answer.data, 24, 40, drive.model);
    putText(one.answer.data, 64, 8, drive.firmware);
    for (unsigned i = 0; i < 4; ++i)
        one.answer.data[516 + i] = static_cast<std::uint8_t>(drive.numberOfNamespaces >> (8 * i));
    return one;
}

Expectation identifyNamespace(const std::string& node, std::uint32_t nsid) {
    return reading(command(node, 0x06, nsid, 0), IDENTIFY_LENGTH);
}

Expectation underThreshold(const std::string& node, std::uint32_t result) {
    return threshold(node, 0x100000, result);
}

Expectation overThreshold(const std::string& node, std::uint32_t result) {
    return threshold(node, 0, result);
}

Expectation healthPage(const std::string& node, std::uint16_t kelvin) {
    Expectation one = reading(command(node, 0x02, ALL_NAMESPACES, 0x007F0002), HEALTH_PAGE_LENGTH);
    one.answer.data[1] = static_cast<std::uint8_t>(kelvin & 0xFF);
    one.answer.data[2] = static_cast<std::uint8_t>(kelvin >> 8);
    return one;
}

std::vector<Expectation> identification(const std::string& node, const Drive& drive) {
    std::vector<Expectation> all{namespaceIdQuery(node, drive.namespaceId), identifyController(node, drive)};
    if (drive.namespaceId != -1)
        all.push_back(identifyNamespace(node, static_cast<std::uint32_t>(drive.namespaceId)));
    else if (drive.numberOfNamespaces == 1)
        all.push_back(identifyNamespace(node, 1));
    all.push_back(underThreshold(node, drive.underThresholdKelvin));
    all.push_back(overThreshold(node, drive.overThresholdKelvin));
    return all;
}

void expect(Expectation expectation) {
    const std::lock_guard<std::mutex> lock(s_guard);
    s_expected.push_back(std::move(expectation));
}

void expect(const std::vector<Expectation>& expectations) {
    for (const Expectation& one : expectations) expect(one);
}

void attach(const std::string& node, const Drive& drive, std::uint16_t kelvin) {
    makeNode(node);
    const std::vector<Expectation> usual = identification(node, drive);
    const std::lock_guard<std::mutex> lock(s_guard);
    s_attached.insert(s_attached.end(), usual.begin(), usual.end());
    s_attached.push_back(healthPage(node, kelvin));
}

void failCall(unsigned nth, int error) {
    const std::lock_guard<std::mutex> lock(s_guard);
    s_callsToFailure = nth;
    s_singleFailure = error;
}

bool isFailurePending() {
    const std::lock_guard<std::mutex> lock(s_guard);
    return s_callsToFailure > 0;
}

void verifyAllMet() {
    const std::lock_guard<std::mutex> lock(s_guard);
    for (const Expectation& one : s_expected) ADD_FAILURE() << "expected ioctl that never came: " << describe(one);
    s_expected.clear();
}

void clear() {
    const std::lock_guard<std::mutex> lock(s_guard);
    s_expected.clear();
    s_attached.clear();
    s_callsToFailure = 0;
    s_calls = 0;
}

unsigned callCount() {
    const std::lock_guard<std::mutex> lock(s_guard);
    return s_calls;
}

}  // namespace drives

extern "C" __attribute__((visibility("default"))) int ioctl(int descriptor, unsigned long request, ...) noexcept {
    va_list arguments;
    va_start(arguments, request);
    void* argument = va_arg(arguments, void*);
    va_end(arguments);
    if (request == NVME_IOCTL_ADMIN_CMD) return playDrive(descriptor, request, static_cast<nvme_admin_cmd*>(argument));
    if (request == NVME_IOCTL_ID) return playDrive(descriptor, request, nullptr);
    return static_cast<int>(syscall(SYS_ioctl, descriptor, request, argument));
}
