// CIM values and paths as text.
#ifndef ZELSENSORS_FORMAT_VALUETEXT_H
#define ZELSENSORS_FORMAT_VALUETEXT_H

#include <string>

#include "broker/Model.h"

namespace host {

// The shortest text that reads back as the same number, always with a point: "0.1", "1.0e+20". "nan" and "inf" as they
// are.
std::string realText(double number);

// root/cimv2:TQS_NumericSensor.Name="CPU(00000001)". Quotes and backslashes in key texts are escaped.
std::string pathText(const broker::ObjectPath& path);

// A value for people, fit for a terminal: texts without quotes, arrays as "{a, b}", "null" for null.
std::string valueText(const broker::Value& value);

}  // namespace host

#endif
