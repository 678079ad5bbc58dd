#include "chip.h"

CPOSSystem CPOSSystem::s_instance;

// A machine that Linux's own drivers serve is of none of the terminal's models.
bool CPOSSystem::IsGrebel() {
    return false;
}

bool CPOSSystem::IsZan() {
    return false;
}
