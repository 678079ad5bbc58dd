// A simulated terminal with so many sensors.
#ifndef ZELSENSORS_BENCH_TERMINAL_H
#define ZELSENSORS_BENCH_TERMINAL_H

// The sensors' handles count up from here.
constexpr unsigned FIRST_HANDLE = 0x1000;

// Makes it the one that the next chip object plays. All its sensors read 400 for ever, so that requests can be
// compared.
void playTerminal(int sensors);

#endif
