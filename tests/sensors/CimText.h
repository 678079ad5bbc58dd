// CIM values as lines of text with their exact types, for comparing whole instances at a glance; and what a model
// raises.
#ifndef ZELSENSORS_TESTS_CIMTEXT_H
#define ZELSENSORS_TESTS_CIMTEXT_H

#include <functional>
#include <string>
#include <vector>

#include "broker/Broker.h"

// "sint32 -5", "chars 'text'", "chars[] ['a', 'b']", "boolean true".
std::string describe(const broker::Value& value);
// "root/cimv2:Class Name=chars 'text'", with a host in front where there is one.
std::string describe(const broker::ObjectPath& path);
// "Name: chars 'text'" for each, in order.
std::vector<std::string> describeProperties(const broker::Instance& instance);
std::vector<std::string> propertyNames(const broker::Instance& instance);

// The calls as "slot" or "slot name", in order.
std::vector<std::string> describeCalls(const std::vector<broker::RecordedCall>& calls);

// The code of the status whose address the action raises; CMPI_RC_OK when it raises nothing. Anything else passes
// through.
CMPIrc raisedCode(const std::function<void()>& action);

#endif
