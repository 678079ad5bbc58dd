#include "Names.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cstdint>
#include <map>
#include <unordered_set>

namespace {

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

std::string lastPart(const std::string& path) {
    return path.substr(path.find_last_of('/') + 1);
}

std::string parentOf(const std::string& path) {
    const std::size_t slash = path.find_last_of('/');
    return slash == std::string::npos ? "" : path.substr(0, slash);
}

// Whether a number follows the word, and nothing else.
bool isNumbered(const std::string& part, const std::string& word) {
    return part.size() > word.size() && part.compare(0, word.size(), word) == 0 &&
           std::all_of(part.begin() + static_cast<std::ptrdiff_t>(word.size()), part.end(), isDigit);
}

// A device of the human interface bus is called bus:vendor:product.instance.
std::string withoutInstance(const std::string& device) {
    const std::size_t dot = device.find_last_of('.');
    const bool isOne = dot != std::string::npos && std::count(device.begin(), device.end(), ':') == 2;
    return isOne ? device.substr(0, dot) : device;
}

// ata1, host0, target0:0:0, 0:0:0:0, spi0, spi0.1, spi_master, mdio_bus and the like.
bool isChannel(const std::string& part) {
    static constexpr std::array words = {"ata", "host", "target", "spi", "mdio"};
    if (part == "spi_master" || part == "mdio_bus" || std::count(part.begin(), part.end(), ':') == 3) return true;
    return std::any_of(words.begin(), words.end(), [&](const std::string& word) {
        return part.size() > word.size() && part.compare(0, word.size(), word) == 0 && isDigit(part[word.size()]);
    });
}

std::string controllerOf(const std::string& devicePath) {
    std::string path = parentOf(devicePath);
    while (!path.empty() && isChannel(lastPart(path))) path = parentOf(path);
    return lastPart(path);
}

// How many bytes the UTF-8 character at the offset has; 0 where none is there that may be printed.
std::size_t printableAt(const std::string& text, std::size_t offset) {
    const auto byte = [&](std::size_t i) { return static_cast<unsigned>(static_cast<unsigned char>(text[i])); };
    const unsigned first = byte(offset);
    if (first < 0x80) return first >= 0x20 && first != 0x7f ? 1 : 0;
    const std::size_t length = first >= 0xf0 ? 4 : first >= 0xe0 ? 3 : 2;
    if (first < 0xc2 || first > 0xf4 || length > text.size() - offset) return 0;
    std::uint32_t code = first & (0x7fU >> length);
    for (std::size_t i = 1; i < length; ++i) {
        if ((byte(offset + i) & 0xc0) != 0x80) return 0;
        code = code << 6 | (byte(offset + i) & 0x3f);
    }
    static constexpr std::array<std::uint32_t, 5> least = {0, 0, 0x80, 0x800, 0x10000};
    const bool isSurrogate = code >= 0xd800 && code < 0xe000;
    const bool isControl = code < 0xa0 || code == 0xfffe || code == 0xffff;
    return code < least[length] || code > 0x10ffff || isSurrogate || isControl ? 0 : length;
}

std::string printable(const std::string& text) {
    std::string result;
    for (std::size_t i = 0; i < text.size();) {
        const std::size_t length = printableAt(text, i);
        result += length == 0 ? "?" : text.substr(i, length);
        i += std::max<std::size_t>(length, 1);
    }
    return result;
}

// Fowler, Noll and Vo's FNV-1a.
std::uint32_t hashOf(const Key& key) {
    std::uint32_t hash = 2166136261U;
    for (const std::string* text : {&key.prefix, &key.place, &key.feature}) {
        for (const char c : *text + '\0') hash = (hash ^ static_cast<unsigned char>(c)) * 16777619U;
    }
    return hash;
}

constexpr unsigned HIGHEST_BIT = 0x80000000;

}  // namespace

std::string placeOf(Bus bus, int address, const std::string& adapter, const std::string& devicePath) {
    switch (bus) {
        case Bus::Adapter:
            return adapter + ' ' + std::to_string(address);
        case Bus::Address:
            return std::to_string(address);
        case Bus::Controller:
            return controllerOf(devicePath) + ' ' + std::to_string(address);
        case Bus::Device:
            break;
    }
    return withoutInstance(lastPart(devicePath));
}

std::string deviceOf(const std::string& realPath) {
    if (!isNumbered(lastPart(realPath), "hwmon")) return realPath;
    const std::string parent = parentOf(realPath);
    return lastPart(parent) == "hwmon" ? parentOf(parent) : parent;
}

bool operator==(const Key& left, const Key& right) {
    return left.prefix == right.prefix && left.place == right.place && left.feature == right.feature;
}

int compareNaturally(const std::string& left, const std::string& right) {
    std::size_t i = 0;
    std::size_t j = 0;
    while (i < left.size() && j < right.size()) {
        if (!isDigit(left[i]) || !isDigit(right[j])) {
            if (left[i] != right[j])
                return static_cast<unsigned char>(left[i]) < static_cast<unsigned char>(right[j]) ? -1 : 1;
            ++i;
            ++j;
            continue;
        }
        const auto digitsAt = [](const std::string& text, std::size_t& at) {
            const std::size_t start = std::min(text.find_first_not_of('0', at), text.size());
            at = start;
            while (at < text.size() && isDigit(text[at])) ++at;
            return text.substr(start, at - start);
        };
        const std::string first = digitsAt(left, i);
        const std::string second = digitsAt(right, j);
        if (first.size() != second.size()) return first.size() < second.size() ? -1 : 1;
        if (const int order = first.compare(second)) return order;
    }
    if (i < left.size()) return 1;
    return j < right.size() ? -1 : left.compare(right);
}

bool comesBefore(const Key& left, const Key& right) {
    if (const int order = compareNaturally(left.prefix, right.prefix)) return order < 0;
    if (const int order = compareNaturally(left.place, right.place)) return order < 0;
    return compareNaturally(left.feature, right.feature) < 0;
}

std::vector<unsigned> handlesFor(const std::vector<Key>& keys) {
    std::vector<unsigned> handles;
    std::unordered_set<unsigned> taken;
    for (const Key& key : keys) {
        unsigned handle = HIGHEST_BIT | hashOf(key);
        while (!taken.insert(handle).second) handle = HIGHEST_BIT | (handle + 1);
        handles.push_back(handle);
    }
    return handles;
}

std::vector<std::string> namesFor(const std::vector<Labelled>& sensors) {
    std::vector<std::string> names;
    std::map<std::string, unsigned> uses;
    for (const Labelled& sensor : sensors) {
        names.push_back(printable(sensor.label.empty() ? sensor.feature : sensor.label));
        ++uses[names.back()];
    }
    for (std::size_t i = 0; i < sensors.size(); ++i) {
        if (uses[names[i]] > 1 || names[i] == sensors[i].feature)
            names[i] = printable(sensors[i].prefix) + ' ' + names[i];
    }
    return names;
}
