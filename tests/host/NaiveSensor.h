// A sensor of random numbers and what it means, read as plainly as possible: for what holds the model against it.
#ifndef ZELSENSORS_TESTS_HOST_NAIVESENSOR_H
#define ZELSENSORS_TESTS_HOST_NAIVESENSOR_H

#include <array>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include "broker/Model.h"
#include "health/Sensor.h"

struct NaiveSensor {
    // From 0 to count - 1.
    using Choose = std::function<unsigned(unsigned count)>;

    static constexpr std::array<const char*, 6> LIMITS{"UpperThresholdFatal",       "UpperThresholdCritical",
                                                       "UpperThresholdNonCritical", "LowerThresholdFatal",
                                                       "LowerThresholdCritical",    "LowerThresholdNonCritical"};

    std::string name;
    std::string device;
    unsigned type = 0;
    std::optional<int> reading;
    std::array<std::optional<int>, 6> limits;

    static NaiveSensor made(const Choose& choose) {
        NaiveSensor sensor;
        const unsigned number = choose(12);
        const std::string digit(1, "0123456789abcdef"[number]);
        sensor.name = (choose(2) == 0 ? "SSD" : "Fan") + std::to_string(number) + " Temperature(0000000" + digit + ")";
        sensor.device = choose(4) == 0 ? "0000000" + digit : std::to_string(number);
        sensor.type = choose(2) == 0 ? 0 : choose(20);
        if (choose(16) != 0) sensor.reading = numberBy(choose);
        for (std::optional<int>& limit : sensor.limits) {
            if (choose(2) == 0) limit = numberBy(choose);
        }
        return sensor;
    }

    broker::Instance instance() const {
        using broker::Value;
        broker::Instance made{{"", "root/cimv2", "TQS_NumericSensor", {{"Name", Value::ofText(name)}}}, {}};
        made.properties = {{"Name", Value::ofText(name)},
                           {"DeviceID", Value::ofText(device)},
                           {"SensorType", Value::ofUnsigned(type, CMPI_uint16)}};
        if (reading) made.properties.push_back({"CurrentReading", Value::ofSigned(*reading)});
        for (std::size_t i = 0; i < limits.size(); ++i) {
            if (limits[i]) made.properties.push_back({LIMITS[i], Value::ofSigned(*limits[i])});
        }
        return made;
    }

    // What the model's reading has wrong, in words; empty where it agrees.
    std::string differenceFrom(const host::Sensor& model) const {
        const std::optional<long> value = meaning();
        if (model.reading.has_value() != value.has_value()) return "whether there is a reading";
        if (value && *model.reading != *value) return "the reading: " + std::to_string(*model.reading);
        if (model.reason.empty() != value.has_value()) return "whether there is a reason";
        if (model.stateWord() != word()) return "the state: " + model.stateWord() + ", not " + word();
        if (model.isProblem() != (word() != "ok")) return "whether it is a problem";
        return "";
    }

  private:
    static int numberBy(const Choose& choose) {
        static constexpr std::array edges{0, 1, -1, 32767, 32768, 65263, 65535, -273, -2147483647 - 1, 2147483647};
        const unsigned which = choose(20);
        if (which < edges.size()) return edges[which] + static_cast<int>(which < 8 ? choose(3) : 0);
        return static_cast<int>(choose(400)) - 200;
    }

    bool isDrive() const {
        for (const char* each : {"1", "2", "3", "4", "5", "6", "7", "8", "9"}) {
            const std::string number = each;
            if (name == "SSD" + number + " Temperature(0000000" + number + ")") return type == 0 && device == number;
        }
        return name == "SSD10 Temperature(0000000a)" && type == 0 && device == "10";
    }

    std::optional<long> meaning() const {
        if (!reading || *reading == -2147483647 - 1) return std::nullopt;
        if (!isDrive()) return *reading;
        if (*reading == 0 || *reading == 65263) return std::nullopt;
        return *reading > 32767 ? *reading - 65536L : *reading;
    }

    // In the order of LIMITS.
    bool isPast(std::size_t which, long value) const {
        if (!limits[which] || *limits[which] == -2147483647 - 1) return false;
        const bool isCritical = which == 1 || which == 4;
        if (isDrive() && (!isCritical || *limits[which] == -273)) return false;
        const bool isTwoState = type == 7 || type == 8 || type == 11 || type == 16;
        if (isTwoState && value == *limits[which]) return true;
        return which < 3 ? value > *limits[which] : value < *limits[which];
    }

    std::string word() const {
        const std::optional<long> value = meaning();
        if (!value) return "no reading";
        if (isPast(0, *value)) return "fatal high";
        if (isPast(3, *value)) return "fatal low";
        if (isPast(1, *value)) return "critical high";
        if (isPast(4, *value)) return "critical low";
        if (isPast(2, *value)) return "high";
        return isPast(5, *value) ? "low" : "ok";
    }
};

#endif
