// The short forms in which people name sensors.
#ifndef ZELSENSORS_HEALTH_SENSORNAMES_H
#define ZELSENSORS_HEALTH_SENSORNAMES_H

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "broker/Model.h"

namespace host {

// The keys "Name" of the paths; empty texts where there is none.
std::vector<std::string> namesIn(const std::vector<broker::ObjectPath>& paths);

// "CPU Fan" of "CPU Fan(00000040)"; a name without a handle in brackets at its end is all label.
std::string labelOf(const std::string& name);

// What a word may mean among names: their places, in order. The case of ASCII letters counts only for a name that is
// written out. The first of these that fits any name decides:
// - the name itself
// - with * (any characters) or ? (any one) in it: the names, or the labels, that it fits as a whole
// - a name without regard to case, a label, or a handle as names show it ("00000040") or as a number ("0x40")
// - the beginning of names: what only one name begins with means that name
struct NameMatch {
    std::vector<std::size_t> places;  // none: nothing fits
    bool isAmbiguous = false;         // a beginning of more than one name
};
NameMatch namesMeantBy(const std::string& word, const std::vector<std::string>& names);

}  // namespace host

#endif
