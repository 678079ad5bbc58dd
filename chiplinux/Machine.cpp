#include "Machine.h"

#include <algorithm>
#include <mutex>
#include <new>
#include <utility>

#include "Status.h"

namespace {

// A search takes milliseconds, in which nobody can read.
constexpr std::chrono::seconds BETWEEN_SEARCHES{10};

using Found = std::vector<Measurement>::const_iterator;

// Those with this key, which stand side by side.
std::pair<Found, Found> withKey(const std::vector<Measurement>& found, const Key& key) {
    const auto first = std::lower_bound(found.begin(), found.end(), key, [](const Measurement& one, const Key& wanted) {
        return comesBefore(one.key, wanted);
    });
    return {first, std::find_if(first, found.end(), [&](const Measurement& one) { return !(one.key == key); })};
}

// Null where none matches, or more than one.
template <typename Matches>
const Measurement* onlyOne(const std::pair<Found, Found>& range, Matches matches) {
    const Found first = std::find_if(range.first, range.second, matches);
    if (first == range.second || std::find_if(first + 1, range.second, matches) != range.second) return nullptr;
    return &*first;
}

bool isSame(const Directory& left, const Directory& right) {
    return left.node != 0 && left.node == right.node && left.device == right.device;
}

}  // namespace

sscode Machine::initialise() {
    std::vector<Measurement> found;
    m_lastSearch = now();
    const sscode status = m_hwmon.search(found);
    if (status == 0) publish(found);
    return status;
}

// Names and handles are those of all measurements, so that one that cannot be read today changes no other's.
void Machine::publish(const std::vector<Measurement>& found) {
    std::vector<Key> keys;
    std::vector<Labelled> labels;
    for (const Measurement& measurement : found) {
        keys.push_back(measurement.key);
        labels.push_back({measurement.key.prefix, measurement.key.feature, measurement.label});
    }
    const std::vector<unsigned> handles = handlesFor(keys);
    const std::vector<std::string> names = namesFor(labels);
    for (std::size_t i = 0; i < found.size(); ++i) {
        Sensor& sensor = m_sensors.emplace_back();
        sensor.handle = handles[i];
        sensor.key = found[i].key;
        // Equal keys stand side by side.
        sensor.isKeyUnique =
            (i == 0 || !(keys[i - 1] == keys[i])) && (i + 1 == keys.size() || !(keys[i + 1] == keys[i]));
        sensor.device = found[i].device();
        sensor.quantity = found[i].quantity;
        sensor.source = found[i].source;
        sensor.lastDirectory = found[i].source.directory;
        if (!readOnce(sensor) && !readOnce(sensor)) {
            m_sensors.pop_back();
            continue;
        }
        sensor.information = describe(found[i].quantity, m_hwmon.readLimits(found[i]), names[i]);
        m_byHandle.emplace(sensor.handle, &sensor);
    }
    if (m_hwmon.wasShort()) throw std::bad_alloc();  // a sensor may be missing that there is
}

sscode Machine::enumerate(CSensorHandleList& handles) const {
    handles.reserve(handles.size() + m_sensors.size());
    for (const Sensor& sensor : m_sensors) handles.push_back(sensor.handle);
    return 0;
}

sscode Machine::information(unsigned handle, CSensorInformation& information) const {
    const auto found = m_byHandle.find(handle);
    if (found == m_byHandle.end()) return STATUS_UNKNOWN_HANDLE;
    CSensorInformation copy = found->second->information;
    information = std::move(copy);
    return 0;
}

sscode Machine::read(unsigned handle, CSensorReading& reading) {
    const auto found = m_byHandle.find(handle);
    if (found == m_byHandle.end()) return STATUS_UNKNOWN_HANDLE;
    Sensor& sensor = *found->second;
    std::optional<int> value = readOnce(sensor);
    if (!value) value = readOnce(sensor);
    reading.value = value ? *value : sensor.lastReading.recall();
    return 0;
}

std::optional<int> Machine::readOnce(Sensor& sensor) {
    {
        const std::shared_lock<std::shared_mutex> lock(m_guard);
        const std::optional<int> value = readBound(sensor);
        if (value || isThere(sensor)) return value;
    }
    recover(sensor);
    const std::shared_lock<std::shared_mutex> lock(m_guard);
    return readBound(sensor);
}

std::optional<int> Machine::readBound(Sensor& sensor) const {
    const std::optional<double> value = sensor.source ? m_hwmon.read(*sensor.source) : std::nullopt;
    if (!value) return std::nullopt;
    const int scaled = scaledReading(sensor.quantity, *value);
    sensor.lastReading.keep(scaled);
    return scaled;
}

bool Machine::isThere(const Sensor& sensor) {
    return sensor.source && sensor.source->directory.isThere();
}

void Machine::recover(const Sensor& sensor) {
    const std::lock_guard<std::shared_mutex> lock(m_guard);
    if (isThere(sensor) || now() - m_lastSearch < BETWEEN_SEARCHES) return;
    try {
        searchAnew();
    } catch (const std::bad_alloc&) {
        // What was not found by then stays lost until the next search.
    }
}

void Machine::searchAnew() {
    m_lastSearch = now();
    for (Sensor& sensor : m_sensors) sensor.source.reset();
    std::vector<Measurement> found;
    if (m_hwmon.search(found) == 0) bindAll(found);
}

// The same directory is the same chip. Otherwise only what cannot be another one counts: the one measurement with this
// key, or, where there are more, the one of them on this device.
void Machine::bindAll(const std::vector<Measurement>& found) {
    for (Sensor& sensor : m_sensors) {
        const std::pair<Found, Found> range = withKey(found, sensor.key);
        const Measurement* match =
            onlyOne(range, [&](const Measurement& one) { return isSame(one.source.directory, sensor.lastDirectory); });
        if (match == nullptr) {
            match = onlyOne(
                range, [&](const Measurement& one) { return sensor.isKeyUnique || one.device() == sensor.device; });
        }
        if (match == nullptr) continue;
        sensor.source = match->source;
        sensor.lastDirectory = match->source.directory;
    }
}
