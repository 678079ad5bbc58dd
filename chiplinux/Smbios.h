// The firmware's event log as the kernel gives it, under /sys/firmware/dmi/entries/15-0.
#ifndef ZELSENSORS_CHIPLINUX_SMBIOS_H
#define ZELSENSORS_CHIPLINUX_SMBIOS_H

#include "chip.h"

// Answers as CChip::GetSystemEventLog, and leaves the record as it was when it fails: STATUS_LOG_FORBIDDEN where the
// process may not read the log, STATUS_SHORTAGE, STATUS_LOG_UNREADABLE. A firmware without a log, or with one that the
// kernel has no way to read, has a log that is not valid and has no lines. Thread-safe. Throws std::bad_alloc.
sscode readEventLog(CSystemEventLog& log);

#endif
