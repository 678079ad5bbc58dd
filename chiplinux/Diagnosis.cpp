#include "Diagnosis.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <set>

#include "Hwmon.h"
#include "Smbios.h"
#include "Status.h"
#include "Surroundings.h"

namespace {

namespace fs = std::filesystem;

using Findings = std::vector<Finding>;
using Measurements = std::vector<Measurement>;

std::string counted(std::size_t count, const std::string& noun) {
    return std::to_string(count) + ' ' + noun + (count == 1 ? "" : "s");
}

void reportLibrary(sscode status, const Survey& survey, Findings& findings) {
    const std::string subject = survey.version.empty() ? "-" : survey.version;
    const auto report = [&](const std::string& text, const std::string& advice) {
        findings.push_back({"libsensors", subject, text, advice});
    };
    switch (status) {
        case 0:
            return report("finds " + counted(survey.chips.size(), "chip"), "");
        case STATUS_NO_LIBRARY:
            return report("it cannot be loaded", "apt install --reinstall libsensors5 zelsensors-linux");
        case STATUS_SETTINGS:
            return report("it refuses its settings as a whole", "");  // the line follows
        case STATUS_SHORTAGE:
            return report("there was no memory or no free descriptor for it", "find what uses them up");
        default:
            return report("it cannot read the kernel's list of chips", "mount /sys, readable for this user");
    }
}

// The files that libsensors reads, in its order.
std::vector<fs::path> settingsFiles() {
    std::vector<fs::path> files;
    std::error_code error;
    for (const char* file : {"/etc/sensors3.conf", "/etc/sensors.conf"}) {
        if (files.empty() && fs::exists(file, error)) files.emplace_back(file);
    }
    const auto common = static_cast<std::ptrdiff_t>(files.size());
    for (fs::directory_iterator entries("/etc/sensors.d", error); !error && entries != fs::directory_iterator();
         entries.increment(error)) {
        std::error_code unknown;
        if (entries->path().filename().string().front() != '.' && entries->is_regular_file(unknown))
            files.push_back(entries->path());
    }
    std::sort(files.begin() + common, files.end());
    return files;
}

void reportSettingsFile(const fs::path& file, const Survey& survey, Findings& findings) {
    if (!std::ifstream(file)) {
        findings.push_back({"libsensors", file, std::string("it cannot be read: ") + std::strerror(errno),
                            "chmod a+r " + file.string()});
        return;
    }
    const auto isHere = [&](const Survey::Mistake& mistake) { return mistake.file == file; };
    if (std::none_of(survey.mistakes.begin(), survey.mistakes.end(), isHere))
        findings.push_back({"libsensors", file, "it is read", ""});
}

void reportSettings(const Survey& survey, Findings& findings) {
    const std::vector<fs::path> files = settingsFiles();
    if (files.empty())
        findings.push_back({"libsensors", "/etc/sensors3.conf", "there is none, and none is needed", ""});
    for (const fs::path& file : files) reportSettingsFile(file, survey, findings);
    for (const Survey::Mistake& mistake : survey.mistakes) {
        const std::string place = mistake.file.empty() ? "-" : mistake.file;
        const std::string line = mistake.line > 0 ? "line " + std::to_string(mistake.line) + ": " : "";
        findings.push_back({"libsensors", place, line + mistake.text,
                            "mend " + (mistake.file.empty() ? "libsensors's settings" : place) +
                                (line.empty() ? "" : ", line " + std::to_string(mistake.line)) +
                                ": sensors3.conf(5) says what may stand there"});
    }
}

// "temp1" of "temp1_input"; empty for the name of a file that holds no reading of what sensors measure.
std::string featureRead(const std::string& file) {
    static constexpr std::array words = {"in", "fan", "temp", "power", "curr", "humidity"};
    const std::size_t mark = file.find('_');
    const std::string feature = file.substr(0, mark);
    const std::string word = feature.substr(0, feature.find_first_of("0123456789"));
    const bool isReading = mark != std::string::npos && (file == feature + "_input" || file == feature + "_average");
    return isReading && std::find(words.begin(), words.end(), word) != words.end() ? feature : "";
}

std::set<std::string> readableFeatures(const std::string& directory) {
    std::set<std::string> features;
    std::error_code error;
    for (fs::directory_iterator files(directory, error); !error && files != fs::directory_iterator();
         files.increment(error)) {
        const std::string feature = featureRead(files->path().filename());
        if (!feature.empty()) features.insert(feature);
    }
    return features;
}

Finding leftOut(const Survey::Chip& chip, const std::string& feature, const std::string& reason,
                const std::string& advice) {
    return {"left out", chip.name + ' ' + feature, reason, advice};
}

// The chip's sensors that can be read are counted, the others told.
std::size_t reportUnread(const Survey::Chip& chip, const Measurements& measurements, const Hwmon& hwmon,
                         Findings& findings) {
    std::size_t sensors = 0;
    for (const Measurement& one : measurements) {
        const std::string reason = hwmon.whyUnread(one.source);
        if (reason.empty()) {
            ++sensors;
            continue;
        }
        findings.push_back(leftOut(chip, one.key.feature, reason,
                                   "where a sensor cannot be read or is marked faulty: look at the kernel's log "
                                   "(dmesg), and whether something is connected there; if nothing is to be, hide it "
                                   "by an ignore line, as sensors3.conf(5) says"));
    }
    return sensors;
}

void reportIgnored(const Survey::Chip& chip, const Measurements& measurements, Findings& findings) {
    std::set<std::string> features = readableFeatures(chip.realPath);
    for (const Measurement& one : measurements) features.erase(one.key.feature);
    for (const Survey::Feature& one : chip.leftOut) features.erase(one.name);
    for (const std::string& feature : features)
        findings.push_back(leftOut(chip, feature, "an ignore line of libsensors's settings hides it", ""));
}

void reportChip(const Survey::Chip& chip, const Measurements& all, const Hwmon& hwmon, Findings& chips,
                Findings& others) {
    Measurements measurements;
    std::copy_if(all.begin(), all.end(), std::back_inserter(measurements),
                 [&](const Measurement& one) { return one.source.directory.realPath == chip.realPath; });
    const std::size_t sensors = reportUnread(chip, measurements, hwmon, others);
    for (const Survey::Feature& feature : chip.leftOut)
        others.push_back(leftOut(chip, feature.name, feature.reason, ""));
    reportIgnored(chip, measurements, others);
    chips.push_back(
        {"chip", chip.name, counted(sensors, "sensor") + (chip.adapter.empty() ? "" : "; " + chip.adapter), ""});
}

void reportChips(const Survey& survey, const Measurements& measurements, const Hwmon& hwmon, Findings& findings) {
    std::vector<Survey::Chip> chips = survey.chips;
    std::sort(chips.begin(), chips.end(), [](const Survey::Chip& left, const Survey::Chip& right) {
        return compareNaturally(left.name, right.name) < 0;
    });
    Findings others;
    for (const Survey::Chip& chip : chips) reportChip(chip, measurements, hwmon, findings, others);
    findings.insert(findings.end(), others.begin(), others.end());
}

void reportDrivers(const Measurements& measurements, bool hasChips, Findings& findings) {
    std::vector<std::string> prefixes;
    for (const Measurement& one : measurements) prefixes.push_back(one.key.prefix);
    const auto append = [&](const Findings& more) { findings.insert(findings.end(), more.begin(), more.end()); };
    if (!hasChips) append(whyNoChip());
    append(missingDrivers(prefixes));
}

Finding eventLog() {
    const auto finding = [](const std::string& text, const std::string& advice) -> Finding {
        return {"event log", "the firmware's", text, advice};
    };
    CSystemEventLog log{};
    switch (readEventLog(log)) {
        case 0:
            break;
        case STATUS_LOG_FORBIDDEN:
            return finding("this user may not read it", "let root run what shall show the event log");
        default:
            return finding("it could not be read this time", "look at the kernel's log (dmesg)");
    }
    const std::string lines = counted(log.lines.size(), "line");
    if (log.logValid == 0 && log.lines.empty())
        return finding("there is none, or none that the kernel has a way to, or it is not valid", "");
    if (log.logValid == 0)
        return finding(lines + ", but it is not valid", "clear the event log in the firmware's set-up");
    if (log.logFull != 0) return finding(lines + "; it is full", "clear the event log in the firmware's set-up");
    return finding(lines, "");
}

}  // namespace

std::vector<Finding> diagnose() {
    Findings findings;
    Hwmon hwmon;
    Measurements measurements;
    Survey survey;
    const sscode status = hwmon.survey(measurements, survey);
    reportLibrary(status, survey, findings);
    reportSettings(survey, findings);
    if (status == 0) {
        reportChips(survey, measurements, hwmon, findings);
        reportDrivers(measurements, !survey.chips.empty(), findings);
    }
    findings.push_back(eventLog());
    return findings;
}
