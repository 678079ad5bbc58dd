// What NVMe drives and the kernel answer: identify and health pages, results, refusals. The drives that are listed,
// their texts and thresholds, the namespaces that are asked about and every temperature must follow from the answers by
// the formulas; all descriptors must be closed.
#include <NvmeSsd.h>
#include <glob.h>

#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "ConfigurationFiles.h"
#include "Drives.h"
#include "Input.h"
#include "Property.h"
#include "Streams.h"

namespace {

drives::Answer takeAnswer(Input& input) {
    const unsigned kind = input.choice(8);
    drives::Answer answer;
    if (kind == 1) answer.returned = -1;
    if (kind == 2) answer.returned = static_cast<int>(input.number16() & 0x7FFF);  // an NVMe status, or 0
    if (kind >= 3) answer.result = input.number32();
    return answer;
}

int takeError(Input& input) {
    static constexpr int errors[] = {0, 0, 0, 0, 0, EACCES, ENOENT, EMFILE};
    return errors[input.choice(8)];
}

template <typename Page>
void fill(Page& page, std::size_t offset, const std::string& bytes) {
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        page[(offset + i) % page.size()] = static_cast<typename Page::value_type>(bytes[i]);
    }
}

drives::Drive takeDrive(Input& input) {
    drives::Drive drive;
    drive.isListed = true;
    drive.openError = takeError(input);
    drive.laterOpenError = takeError(input);
    drive.takesFlag = input.choice(8) != 7;
    drive.namespaceId = input.flag() ? static_cast<int>(input.number32()) : -1;
    // Refused answers are rarer here, since they hide all that follows.
    if (input.choice(4) == 3) drive.identifyController = takeAnswer(input);
    if (input.choice(4) == 3) drive.identifyNamespace = takeAnswer(input);
    drive.under = takeAnswer(input);
    drive.over = takeAnswer(input);
    drive.health = takeAnswer(input);
    fill(drive.controllerPage, 0, input.text());
    fill(drive.controllerPage, 516, input.text());
    fill(drive.healthPage, 0, input.text());
    return drive;
}

bool isIdentified(const drives::Answer& answer) {
    return answer.returned != -1 && answer.result == 0;
}

bool hasOneNamespace(const drives::Drive& drive) {
    return drive.controllerPage[516] == 1 && drive.controllerPage[517] == 0 && drive.controllerPage[518] == 0 &&
           drive.controllerPage[519] == 0;
}

bool isUsable(const drives::Drive& drive) {
    if (drive.openError != 0 || !drive.takesFlag || !isIdentified(drive.identifyController)) return false;
    if (drive.namespaceId != -1 && !isIdentified(drive.identifyNamespace)) return false;
    return drive.under.returned <= 0 && drive.over.returned <= 0;
}

int celsius(const drives::Answer& answer) {
    const std::uint32_t kelvin = answer.returned == -1 ? 0 : answer.result % 65536;
    return static_cast<int>(kelvin) - 273;
}

unsigned temperature(const drives::Drive& drive) {
    if (drive.laterOpenError != 0 || drive.health.returned > 0) return 0;
    if (drive.health.returned == -1) return 65536 - 273;
    const unsigned kelvin = drive.healthPage[1] + 256U * drive.healthPage[2];
    return (kelvin + 65536 - 273) % 65536;
}

void compare(const SsdDevice& device, std::size_t number, const drives::Drive& drive) {
    const std::string page(drive.controllerPage.begin(), drive.controllerPage.end());
    require(device.present, "a listed drive is present");
    requireSame(device.devPath, "/dev/nvme" + std::to_string(number), "the path");
    requireSame(device.physicalDisk, "nvme" + std::to_string(number), "the disk");
    requireSame(device.serialNumber, page.substr(4, 20), "the serial number");
    requireSame(device.modelNumber, page.substr(24, 40), "the model");
    requireSame(device.fw_rev, page.substr(64, 8), "the firmware");
    requireSame(device.underTemperatureThreshold, celsius(drive.under), "the lower threshold");
    requireSame(device.overTemperatureThreshold, celsius(drive.over), "the upper threshold");
}

void compareQuestions(const drives::Drive& drive) {
    std::vector<std::uint32_t> expected;
    const bool isAsked = drive.openError == 0 && drive.takesFlag && isIdentified(drive.identifyController);
    if (isAsked && drive.namespaceId != -1) expected.push_back(static_cast<std::uint32_t>(drive.namespaceId));
    if (isAsked && drive.namespaceId == -1 && hasOneNamespace(drive)) expected.push_back(1);
    require(drive.askedForNamespaces == expected, "the namespaces that are asked about");
}

void checkScan(NvmeSsd& ssd, int globCode) {
    const bool added = ssd.scanNVMeDevices();
    const std::vector<SsdDevice> devices = ssd.getSsdList();
    std::size_t position = 0;
    for (std::size_t number = 0; number < drives::now().size(); ++number) {
        const drives::Drive& drive = drives::now()[number];
        if (!drive.isListed || globCode != 0) continue;
        compareQuestions(drive);
        if (!isUsable(drive)) continue;
        require(position < devices.size(), "every usable drive is listed");
        compare(devices[position], number, drive);
        ++position;
    }
    requireSame(static_cast<long long>(devices.size()), static_cast<long long>(position), "the number of drives");
    requireSame(added, position > 0, "whether a drive was added");
}

// The scan has been each drive's first opening, or this is.
void checkTemperature(NvmeSsd& ssd, std::size_t number) {
    drives::Drive drive = drives::now()[number];
    if (drive.openings == 0) drive.laterOpenError = drive.openError;
    requireSame(ssd.getSsdTemperature(static_cast<int>(number)), temperature(drive), "the temperature");
    requireSame(drives::openDescriptors(), 0, "the number of open descriptors");
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int* /*argc*/, char*** /*argv*/) {
    // Standard error is captured, so that this logs to memory.
    configuration::setLogFile("Level=4\nIsConsole=1\n");
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static constexpr int globCodes[] = {0, 0, 0, 0, 0, GLOB_NOSPACE, GLOB_ABORTED, GLOB_NOMATCH};
    Input input(data, size);
    const int globCode = globCodes[input.choice(8)];
    const unsigned listed = input.number16();
    drives::Drives machine;
    for (std::size_t number = 0; number < machine.size(); ++number) {
        if ((listed >> number & 1) != 0) machine[number] = takeDrive(input);
    }
    drives::set(machine, globCode);

    CapturedStreams streams;
    NvmeSsd ssd;
    checkScan(ssd, globCode);
    requireSame(drives::openDescriptors(), 0, "the number of open descriptors");
    requireSame(drives::unreleasedMatches(), 0, "the number of unreleased matches");
    for (std::size_t number = 0; number < machine.size(); ++number) checkTemperature(ssd, number);
    return 0;
}
