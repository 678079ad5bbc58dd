#include "Words.h"

WordList sensorTypeWords() {
    static constexpr Word words[] = {
        {"unknown", 0},          {"other", 1},     {"temperature", 2}, {"voltage", 3}, {"current", 4},
        {"tachometer", 5},       {"counter", 6},   {"switch", 7},      {"lock", 8},    {"humidity", 9},
        {"smoke-detection", 10}, {"presence", 11}, {"air-flow", 12},
    };
    return words;
}

WordList baseUnitsWords() {
    static constexpr Word words[] = {
        {"unknown", 0}, {"other", 1},  {"degrees-c", 2}, {"degrees-f", 3}, {"degrees-k", 4},   {"volts", 5},
        {"amps", 6},    {"watts", 7},  {"joules", 8},    {"coulombs", 9},  {"va", 10},         {"nits", 11},
        {"lumens", 12}, {"lux", 13},   {"candelas", 14}, {"kpa", 15},      {"psi", 16},        {"newtons", 17},
        {"cfm", 18},    {"rpm", 19},   {"hertz", 20},    {"seconds", 21},  {"minutes", 22},    {"hours", 23},
        {"days", 24},   {"weeks", 25}, {"ohms", 49},     {"decibels", 54}, {"percentage", 65}, {"pascals", 66},
    };
    return words;
}

WordList rateUnitsWords() {
    static constexpr Word words[] = {
        {"none", 0},     {"per-microsecond", 1}, {"per-millisecond", 2}, {"per-second", 3}, {"per-minute", 4},
        {"per-hour", 5}, {"per-day", 6},         {"per-week", 7},        {"per-month", 8},  {"per-year", 9},
    };
    return words;
}
