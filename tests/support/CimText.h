// CIM values as lines of text with their exact types, for comparing whole instances at a glance; and what a model
// throws.
#ifndef ZELSENSORS_TESTS_CIMTEXT_H
#define ZELSENSORS_TESTS_CIMTEXT_H

#include <functional>
#include <string>
#include <vector>

#include "broker/Broker.h"

using Strings = std::vector<std::string>;

// "sint32 -5", "chars 'text'", "chars[] ['a', 'b']", "boolean true"; a path or an instance by its name: "ref 'CPU'"
std::string describe(const broker::Value& value);
// "root/cimv2:Class Name=chars 'text'", with a host in front where there is one.
std::string describe(const broker::ObjectPath& path);
// "Accuracy=sint32 1" for each, in order.
Strings describe(const std::vector<broker::NamedValue>& values);
// "newInstance", "setProperty Accuracy=sint32 1", "returnInstance instance 'CPU'"
Strings describe(const std::vector<broker::RecordedCall>& calls);

Strings propertyNames(const broker::Instance& instance);

// The code of the status whose address the action throws; CMPI_RC_OK when it throws nothing. Anything else passes
// through.
CMPIrc thrownCode(const std::function<void()>& action);

#endif
