// Scenarios of all kinds, for properties that hold for each.
#ifndef ZELSENSORS_TESTS_HOST_RANDOMSCENARIO_H
#define ZELSENSORS_TESTS_HOST_RANDOMSCENARIO_H

#include <string>

// A scenario file; the same for the same seed.
std::string randomScenario(unsigned seed);

#endif
