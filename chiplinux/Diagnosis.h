// What this library sees of the machine, and what it leaves out, for people.
#ifndef ZELSENSORS_CHIPLINUX_DIAGNOSIS_H
#define ZELSENSORS_CHIPLINUX_DIAGNOSIS_H

#include <string>
#include <vector>

#include "chip.h"

// As ZelchipFinding; the advice is empty where nothing is wrong.
struct Finding {
    std::string area;
    std::string subject;
    std::string text;
    std::string advice;
};

// Looks anew; in the order of showing. Throws std::bad_alloc.
std::vector<Finding> diagnose();

#endif
