// What drivers write into their attributes. The input is the contents of the files of a chip: any bytes, or no file.
// They lie in the tests' private /sys, and are read by libsensors itself. Which sensors there are, their limits and
// their readings must be what a naive reading of the files gives.
#include <Machine.h>

#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "Input.h"
#include "Property.h"
#include "Sandbox.h"
#include "SandboxEntry.h"
#include "SensorTree.h"

namespace {

namespace fs = std::filesystem;
using Files = std::map<std::string, std::string>;
using Number = std::optional<double>;

// A feature, its type, and what the kernel's unit is of libsensors's and of the sensor's.
struct Feature {
    std::string name;
    int type;
    double unit;
    double scale;
};
const std::vector<Feature> FEATURES = {{"temp1", 2, 1000, 1000},     {"in0", 3, 1000, 1000},
                                       {"curr1", 4, 1000, 1000},     {"fan1", 5, 1, 1},
                                       {"humidity1", 9, 1000, 1000}, {"power1", 1, 1000000, 1000}};
const std::vector<std::string> ATTRIBUTES = {"input", "average", "label",     "fault",    "min",      "max",
                                             "lcrit", "crit",    "emergency", "max_hyst", "crit_hyst"};

const fs::path& chipDirectory() {
    static const fs::path directory = [] {
        sandbox::enter();
        if (!sandbox::whyUnavailable().empty()) fail(sandbox::whyUnavailable());
        sandbox::hideHardware();
        return sensortree::addI2c(0, "chip", 0, 0x48, {});
    }();
    return directory;
}

Files takeFiles(Input& input) {
    Files files;
    while (!input.isEmpty()) {
        const Feature& feature = FEATURES[input.choice(static_cast<unsigned>(FEATURES.size()))];
        const std::string& attribute = ATTRIBUTES[input.choice(static_cast<unsigned>(ATTRIBUTES.size()))];
        files[feature.name + '_' + attribute] = input.text();
    }
    return files;
}

// Those of the run before go, unless this one has them too.
void writeFiles(const Files& files) {
    static std::set<std::string> before;
    for (const std::string& name : before)
        if (files.count(name) == 0) fs::remove(chipDirectory() / name);
    before.clear();
    for (const auto& [name, contents] : files) {
        std::ofstream(chipDirectory() / name, std::ios::binary | std::ios::trunc) << contents;
        before.insert(name);
    }
}

// By the C library's own reading of numbers.
Number numberIn(const Files& files, const std::string& name, double unit) {
    const auto file = files.find(name);
    double number = 0;
    if (file == files.end() || std::sscanf(file->second.c_str(), "%lf", &number) != 1) return std::nullopt;
    return number / unit;
}

int scaled(const Number& number, double scale) {
    if (!number || std::isnan(*number)) return NOT_AVAILABLE;
    const double whole = std::round(*number * scale);
    return std::fabs(whole) < 2147483648.0 ? static_cast<int>(whole) : NOT_AVAILABLE;
}

// One sensor as it must be published; empty for none.
class Model {
  public:
    Model(const Files& files, const Feature& feature) : m_files(files), m_feature(feature) {}

    bool isPublished() const {
        const bool hasFault = m_feature.name == "temp1" || m_feature.name == "fan1";
        return reading() && (!hasFault || numberIn(m_files, m_feature.name + "_fault", 1).value_or(0) == 0);
    }
    int value() const {
        return m_feature.name == "fan1" && *reading() < 0 ? NOT_AVAILABLE : scaled(reading(), m_feature.scale);
    }

    void check(const CSensorInformation& information) const {
        requireSame(information.sensorType, m_feature.type, "the type");
        const auto [minimum, maximum] = pair("min", "max");
        const auto [lower, critical] = pair("lcrit", "crit");
        requireSame(information.lowerThresholdNonCritical, scaled(minimum, m_feature.scale), "the minimum");
        requireSame(information.upperThresholdNonCritical, scaled(maximum, m_feature.scale), "the maximum");
        requireSame(information.lowerThresholdCritical, scaled(lower, m_feature.scale), "the lower critical limit");
        requireSame(information.upperThresholdCritical, scaled(critical, m_feature.scale), "the critical limit");
        const bool isTemperature = m_feature.name == "temp1";
        const Number emergency = isTemperature ? believed(limit("emergency"), true) : std::nullopt;
        requireSame(information.upperThresholdFatal, scaled(emergency, m_feature.scale), "the fatal limit");
        Number hysteresis;
        for (const auto& [upper, name] : {std::pair{maximum, "max_hyst"}, std::pair{critical, "crit_hyst"}}) {
            const Number end = isTemperature ? limit(name) : std::nullopt;
            if (!hysteresis && upper && end && *upper - *end >= 0) hysteresis = *upper - *end;
        }
        requireSame(information.hysteresis, scaled(hysteresis, m_feature.scale), "the hysteresis");
    }

  private:
    Number reading() const {
        const bool isAverage = m_feature.name == "power1" && m_files.count("power1_input") == 0;
        return numberIn(m_files, m_feature.name + (isAverage ? "_average" : "_input"), m_feature.unit);
    }

    Number limit(const std::string& name) const {
        static const std::map<std::string, std::set<std::string>> lacking = {
            {"humidity1", {"min", "max", "lcrit", "crit"}}, {"fan1", {"lcrit", "crit"}}};
        const auto lacks = lacking.find(m_feature.name);
        if (lacks != lacking.end() && lacks->second.count(name) != 0) return std::nullopt;
        return numberIn(m_files, m_feature.name + '_' + name, m_feature.unit);
    }

    Number believed(const Number& number, bool isUpper) const {
        if (!number) return number;
        if (m_feature.name == "temp1" && !(*number > -273 && *number < 1000)) return std::nullopt;
        if (m_feature.name == "temp1" && isUpper && !(*number > 0)) return std::nullopt;
        if (m_feature.name == "fan1" && !(*number > 0 && *number <= 100000)) return std::nullopt;
        return number;
    }

    std::pair<Number, Number> pair(const std::string& lower, const std::string& upper) const {
        const Number low = limit(lower);
        const Number high = limit(upper);
        if (low && high && !(*low < *high)) return {std::nullopt, std::nullopt};
        return {believed(low, false), believed(high, true)};
    }

    const Files& m_files;
    const Feature& m_feature;
};

void check(const Files& files) {
    Machine machine;
    requireSame(machine.initialise(), 0, "the start");
    CSensorHandleList handles;
    requireSame(machine.enumerate(handles), 0, "the list's status");
    std::map<int, unsigned> byType;
    for (const unsigned handle : handles) {
        CSensorInformation information{};
        requireSame(machine.information(handle, information), 0, "a description's status");
        require(!information.name.empty(), "a sensor has a name");
        for (const char c : information.name) require(static_cast<unsigned char>(c) >= 0x20, "a name is printable");
        require(byType.emplace(information.sensorType, handle).second, "each feature is one sensor");
    }
    std::size_t published = 0;
    for (const Feature& feature : FEATURES) {
        const Model model(files, feature);
        const auto found = byType.find(feature.type);
        requireSame(found != byType.end(), model.isPublished(), (feature.name + " is there").c_str());
        if (found == byType.end()) continue;
        ++published;
        CSensorInformation information{};
        machine.information(found->second, information);
        model.check(information);
        CSensorReading reading{0, READING_PRESET};
        requireSame(machine.read(found->second, reading), 0, "a reading's status");
        requireSame(reading.value, model.value(), ("the value of " + feature.name).c_str());
    }
    requireSame(static_cast<long long>(handles.size()), static_cast<long long>(published), "the sensors");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Input input(data, size);
    const Files files = takeFiles(input);
    writeFiles(files);
    check(files);
    return 0;
}
