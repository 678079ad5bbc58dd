// The TOML parser, toml++, for asciiToml()'s texts alone: its test for white space runs, for many other characters,
// into what it declares unreachable.
//
// Its assertions do not hold for every faulty file ("[!" for one); the checks that stand behind them report the fault.
// So they are left out, and NDEBUG, with which they turn into promises to the compiler, is not defined for it.
//
// To be included by one source file alone, before any other part of toml++.
#ifndef ZELSENSORS_CHIPSIM_TOML_H
#define ZELSENSORS_CHIPSIM_TOML_H

#undef NDEBUG
#define TOML_ASSERT(condition) static_assert(true)
#define TOML_HEADER_ONLY 1
#define TOML_ENABLE_FORMATTERS 0

#include <toml++/toml.h>

#endif
