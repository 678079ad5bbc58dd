// An object manager whose sensors a test makes up.
#ifndef ZELSENSORS_TESTS_HOST_MADEMANAGER_H
#define ZELSENSORS_TESTS_HOST_MADEMANAGER_H

#include <optional>
#include <string>
#include <vector>

struct MadeSensor {
    std::string name;
    int reading = 0;                     // by itself
    std::optional<int> enumerated = {};  // in an enumeration, where it is another
    bool fails = false;                  // with status 1
};

// A temperature with the critical limit 60, or the sensor of a drive where the name is that of one.
struct MadeManager {
    std::vector<MadeSensor> sensors;

    // The HTTP answer to the request with this body; an enumeration with a sensor that fails, fails.
    std::string answer(const std::string& requestBody) const;
};

// How the request is named, and of which sensor: "GetInstance CPU(00000010)".
std::string requestNamed(const std::string& requestBody);

#endif
