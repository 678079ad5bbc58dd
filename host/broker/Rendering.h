// Text for people, as the broker's toString gives it.
#ifndef ZELSENSORS_BROKER_RENDERING_H
#define ZELSENSORS_BROKER_RENDERING_H

#include <string>

#include "broker/Model.h"

namespace broker {

// //host/root/cimv2:Class.Key="text",Other=1 ; the host's part only where there is a host.
std::string rendered(const ObjectPath& path);
// instance of Class { Property = value; ... }
std::string rendered(const Instance& instance);
// Text, dates and references in quotation marks; NULL; TRUE and FALSE; arrays in braces.
std::string rendered(const Value& value);

}  // namespace broker

#endif
