// The scenario inside the library. Constant, so any thread may read it.
#ifndef ZELSENSORS_CHIPSIM_BUILTINSCENARIO_H
#define ZELSENSORS_CHIPSIM_BUILTINSCENARIO_H

// The text of the scenario that is used when none is named.
extern const char* const BUILTIN_SCENARIO;

#endif
