// What a chip library may tell about itself and its machine, beside the chip interface, to whoever looks for the cause
// of missing or wrong sensors. `zelhost doctor` asks any library that exports `zelchip_diagnose`; the provider never
// does.
#ifndef ZELSENSORS_CHIPLINUX_FINDING_H
#define ZELSENSORS_CHIPLINUX_FINDING_H

// Texts of any bytes, which end at a zero byte and are valid until the call of ZelchipReport returns; only the advice
// may be null.
struct ZelchipFinding {
    const char* area;     // what it is about, in a word or two: "chip", "event log"
    const char* subject;  // which one
    const char* text;     // what was found
    const char* advice;   // what to do; null where nothing is wrong
};

// Must not throw.
using ZelchipReport = void (*)(void* context, const ZelchipFinding* finding);

// The type of `zelchip_diagnose`, a C function: looks at the machine as it is now, and calls back once for each finding
// before it returns. Gives 0, or an sscode where it could not look any further. Needs no CChip; one thread at a time.
using ZelchipDiagnose = unsigned (*)(ZelchipReport report, void* context);

#endif
