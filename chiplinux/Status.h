// What the operations of this chip library answer where they fail. 0 is success.
#ifndef ZELSENSORS_CHIPLINUX_STATUS_H
#define ZELSENSORS_CHIPLINUX_STATUS_H

#include "chip.h"

constexpr sscode STATUS_NOT_INITIALISED = 0xE1000001;  // no Initialise has succeeded before
constexpr sscode STATUS_UNKNOWN_HANDLE = 0xE1000002;   // this handle was never given out
constexpr sscode STATUS_NO_LIBRARY = 0xE1000003;       // Initialise: libsensors cannot be loaded
constexpr sscode STATUS_NO_HWMON = 0xE1000004;         // Initialise: libsensors cannot read the kernel's list of chips
constexpr sscode STATUS_SETTINGS = 0xE1000009;         // Initialise: libsensors refuses the machine's sensors3.conf
constexpr sscode STATUS_SHORTAGE = 0xE1000005;         // no memory or no descriptor was left
constexpr sscode STATUS_LOG_FORBIDDEN = 0xE1000006;    // GetSystemEventLog: the process may not read it; root may
constexpr sscode STATUS_LOG_UNREADABLE = 0xE1000007;   // GetSystemEventLog: reading it failed otherwise
constexpr sscode STATUS_FAILED = 0xE1000008;           // what must not happen did: a failure of no other kind

#endif
