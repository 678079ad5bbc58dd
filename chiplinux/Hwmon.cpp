#include "Hwmon.h"

#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <new>
#include <utility>

#include "Status.h"

namespace {

constexpr sensors_subfeature_type NONE = SENSORS_SUBFEATURE_UNKNOWN;

// libsensors's words for a quantity.
struct Words {
    sensors_feature_type feature;
    Quantity quantity;
    sensors_subfeature_type reading;
    sensors_subfeature_type otherReading;  // where there is no such reading
    sensors_subfeature_type fault;
    std::array<sensors_subfeature_type, 7> limits;  // by the order of the members of Limits
};

constexpr std::array<Words, 6> ALL_WORDS = {{
    {SENSORS_FEATURE_TEMP,
     Quantity::Temperature,
     SENSORS_SUBFEATURE_TEMP_INPUT,
     NONE,
     SENSORS_SUBFEATURE_TEMP_FAULT,
     {SENSORS_SUBFEATURE_TEMP_MIN, SENSORS_SUBFEATURE_TEMP_MAX, SENSORS_SUBFEATURE_TEMP_LCRIT,
      SENSORS_SUBFEATURE_TEMP_CRIT, SENSORS_SUBFEATURE_TEMP_EMERGENCY, SENSORS_SUBFEATURE_TEMP_MAX_HYST,
      SENSORS_SUBFEATURE_TEMP_CRIT_HYST}},
    {SENSORS_FEATURE_IN,
     Quantity::Voltage,
     SENSORS_SUBFEATURE_IN_INPUT,
     NONE,
     NONE,
     {SENSORS_SUBFEATURE_IN_MIN, SENSORS_SUBFEATURE_IN_MAX, SENSORS_SUBFEATURE_IN_LCRIT, SENSORS_SUBFEATURE_IN_CRIT,
      NONE, NONE, NONE}},
    {SENSORS_FEATURE_CURR,
     Quantity::Current,
     SENSORS_SUBFEATURE_CURR_INPUT,
     NONE,
     NONE,
     {SENSORS_SUBFEATURE_CURR_MIN, SENSORS_SUBFEATURE_CURR_MAX, SENSORS_SUBFEATURE_CURR_LCRIT,
      SENSORS_SUBFEATURE_CURR_CRIT, NONE, NONE, NONE}},
    {SENSORS_FEATURE_FAN,
     Quantity::Fan,
     SENSORS_SUBFEATURE_FAN_INPUT,
     NONE,
     SENSORS_SUBFEATURE_FAN_FAULT,
     {SENSORS_SUBFEATURE_FAN_MIN, SENSORS_SUBFEATURE_FAN_MAX, NONE, NONE, NONE, NONE, NONE}},
    {SENSORS_FEATURE_HUMIDITY,
     Quantity::Humidity,
     SENSORS_SUBFEATURE_HUMIDITY_INPUT,
     NONE,
     NONE,
     {NONE, NONE, NONE, NONE, NONE, NONE, NONE}},
    {SENSORS_FEATURE_POWER,
     Quantity::Power,
     SENSORS_SUBFEATURE_POWER_INPUT,
     SENSORS_SUBFEATURE_POWER_AVERAGE,
     NONE,
     {SENSORS_SUBFEATURE_POWER_MIN, SENSORS_SUBFEATURE_POWER_MAX, SENSORS_SUBFEATURE_POWER_LCRIT,
      SENSORS_SUBFEATURE_POWER_CRIT, NONE, NONE, NONE}},
}};

Bus busOf(short type) {
    switch (type) {
        case SENSORS_BUS_TYPE_I2C:
            return Bus::Adapter;
        case SENSORS_BUS_TYPE_ISA:
        case SENSORS_BUS_TYPE_PCI:
            return Bus::Address;
        case SENSORS_BUS_TYPE_SPI:
        case SENSORS_BUS_TYPE_MDIO:
        case SENSORS_BUS_TYPE_SCSI:
            return Bus::Controller;
        default:
            return Bus::Device;
    }
}

// Empty where the path leads nowhere. Throws std::bad_alloc.
std::string realPathOf(const std::string& path) {
    const std::unique_ptr<char, decltype(&std::free)> real(realpath(path.c_str(), nullptr), std::free);
    if (real == nullptr && errno == ENOMEM) throw std::bad_alloc();
    return real == nullptr ? "" : real.get();
}

// One that leads nowhere by now has no real path, and so is never there.
Directory directoryAt(const std::string& path) {
    static constexpr char virtualDevices[] = "/sys/devices/virtual/";
    Directory directory{realPathOf(path)};
    directory.isOnBus = directory.realPath.compare(0, sizeof virtualDevices - 1, virtualDevices) != 0;
    struct stat status {};
    if (stat(directory.realPath.c_str(), &status) != 0) return directory;
    directory.device = status.st_dev;
    directory.node = status.st_ino;
    return directory;
}

// The measurement of a feature; empty for one that is no sensor's.
std::optional<Measurement> measurementOf(const LibSensors::Search& search, const sensors_chip_name& chip,
                                         const sensors_feature& feature) {
    const auto words =
        std::find_if(ALL_WORDS.begin(), ALL_WORDS.end(), [&](const Words& one) { return one.feature == feature.type; });
    if (words == ALL_WORDS.end()) return std::nullopt;
    std::optional<int> reading = search.find(chip, feature, words->reading);
    if (!reading) reading = search.find(chip, feature, words->otherReading);
    if (!reading) return std::nullopt;
    Measurement measurement;
    measurement.key.feature = feature.name;
    measurement.label = search.label(chip, feature);
    measurement.quantity = words->quantity;
    for (std::size_t i = 0; i < words->limits.size(); ++i)
        measurement.limits[i] = search.find(chip, feature, words->limits[i]);
    measurement.source.chip = &chip;
    measurement.source.reading = *reading;
    measurement.source.fault = search.find(chip, feature, words->fault);
    return measurement;
}

// Why no measurement is made of a feature.
std::string reasonToLeaveOut(sensors_feature_type type) {
    switch (type) {
        case SENSORS_FEATURE_ENERGY:
            return "energy counts up for ever, past what a reading can hold";
        case SENSORS_FEATURE_VID:
            return "a nominal voltage, not a measured one";
        case SENSORS_FEATURE_INTRUSION:
            return "nearly all boards latch the intrusion switch, mostly set";
        case SENSORS_FEATURE_BEEP_ENABLE:
            return "a setting, not a measured value";
        case SENSORS_FEATURE_IN:
        case SENSORS_FEATURE_FAN:
        case SENSORS_FEATURE_TEMP:
        case SENSORS_FEATURE_POWER:
        case SENSORS_FEATURE_CURR:
        case SENSORS_FEATURE_HUMIDITY:
            return "the driver gives no reading for it";
        default:
            return "what it measures is not known here";
    }
}

using Features = std::vector<Survey::Feature>;

void takeChip(const LibSensors::Search& search, const sensors_chip_name& chip, std::vector<Measurement>& found,
              Features& leftOut) {
    const Directory directory = directoryAt(chip.path);
    const std::string place =
        placeOf(busOf(chip.bus.type), chip.addr, search.adapterOf(chip), deviceOf(directory.realPath));
    int number = 0;
    while (const sensors_feature* feature = search.nextFeature(chip, number)) {
        std::optional<Measurement> measurement = measurementOf(search, chip, *feature);
        if (!measurement) {
            leftOut.push_back({feature->name, reasonToLeaveOut(feature->type)});
            continue;
        }
        measurement->key.prefix = chip.prefix;
        measurement->key.place = place;
        measurement->source.directory = directory;
        found.push_back(std::move(*measurement));
    }
}

void takeChips(const LibSensors::Search& search, std::vector<Measurement>& found, Survey* survey) {
    int number = 0;
    while (const sensors_chip_name* chip = search.nextChip(number)) {
        Features leftOut;
        takeChip(search, *chip, found, leftOut);
        if (survey == nullptr) continue;
        survey->chips.push_back({search.nameOf(*chip), search.adapterOf(*chip), realPathOf(chip->path), leftOut});
    }
}

bool isInOrder(const Measurement& left, const Measurement& right) {
    if (comesBefore(left.key, right.key)) return true;
    if (comesBefore(right.key, left.key)) return false;
    return compareNaturally(left.source.directory.realPath, right.source.directory.realPath) < 0;
}

}  // namespace

bool Directory::isThere() const {
    struct stat status {};
    if (stat(realPath.c_str(), &status) != 0) return false;
    return isOnBus || (status.st_dev == device && status.st_ino == node);
}

sscode Hwmon::search(std::vector<Measurement>& found) {
    return search(found, nullptr);
}

sscode Hwmon::survey(std::vector<Measurement>& found, Survey& survey) {
    return search(found, &survey);
}

sscode Hwmon::search(std::vector<Measurement>& found, Survey* survey) {
    found.clear();
    // Kept only after a success.
    std::unique_ptr<LibSensors> sensors = std::move(m_sensors);
    if (sensors == nullptr) sensors = LibSensors::load();
    if (sensors == nullptr) return STATUS_NO_LIBRARY;
    std::vector<Measurement> all;
    {
        LibSensors::Search search(*sensors, survey);
        if (search.hasList()) takeChips(search, all, survey);
        if (!search.end()) return STATUS_SHORTAGE;
        if (!search.hasList()) return search.areSettingsAtFault() ? STATUS_SETTINGS : STATUS_NO_HWMON;
    }
    std::stable_sort(all.begin(), all.end(), isInOrder);
    found = std::move(all);
    m_sensors = std::move(sensors);
    return 0;
}

std::optional<double> Hwmon::value(const Source& source, int subfeature) const {
    return m_sensors->read(*source.chip, source.directory.realPath, subfeature);
}

bool Hwmon::isMarkedFaulty(const Source& source) const {
    return source.fault && value(source, *source.fault).value_or(0) != 0;
}

std::optional<double> Hwmon::read(const Source& source) const {
    if (isMarkedFaulty(source)) return std::nullopt;
    const std::optional<double> reading = value(source, source.reading);
    // Afterwards: a node that is gone never comes back, so the reading was this chip's.
    return source.directory.isOnBus || !reading || source.directory.isThere() ? reading : std::nullopt;
}

std::string Hwmon::whyUnread(const Source& source) const {
    if (isMarkedFaulty(source)) return "the chip marks it faulty";
    const std::string reason = m_sensors->whyUnread(*source.chip, source.directory.realPath, source.reading);
    return reason.empty() ? "" : "it cannot be read: " + reason;
}

Limits Hwmon::readLimits(const Measurement& measurement) const {
    const auto limit = [&](std::size_t i) -> std::optional<double> {
        if (!measurement.limits[i]) return std::nullopt;
        return value(measurement.source, *measurement.limits[i]);
    };
    return {limit(0), limit(1), limit(2), limit(3), limit(4), limit(5), limit(6)};
}
