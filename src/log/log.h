// The front end of the log: what the rest of the library reports through.
//
// A message more detailed than the sink's level is passed over. The sink, a FileLogHandler, is made by the first call
// in the process, whatever that call's level.
//
// The line brings its own newline, so texts carry none at their end. Five keep theirs on purpose, and leave an empty
// line behind them: the openings of the two enumerations ("... class = %s, namespace = %s\n"), the failure of
// GetSensorInformation at the start, and the results of the two temperature thresholds.
//
// All three may be called from any thread. A message that has no text (null), or for which there is no memory, is
// dropped. What leaves a call is only what was thrown inside it: an allocation's std::bad_alloc, or an exception of the
// sink. Where nothing may leave, wrap the call in quietly() (Quietly.h).
#ifndef ZELSENSORS_LOG_LOG_H
#define ZELSENSORS_LOG_LOG_H

#include "LogLevel.h"

// Formats as printf does. The text is cut to 4095 bytes; where formatting fails, to what was made until then.
void Log(LOG_LEVEL level, const char* format, ...) __attribute__((format(printf, 2, 3)));

// Formats as wprintf does and converts to the multibyte form of the current locale. The text is cut to 4095 wide
// characters and to 4095 bytes, never inside a character. A text that cannot be formatted, or a character that the
// locale does not have, drops the message.
void WLog(LOG_LEVEL level, const wchar_t* format, ...);

// Writes the message as it stands, of any length.
void LogQuick(LOG_LEVEL level, const char* message);

#endif
