// What the log's benchmarks write.
#ifndef ZELSENSORS_BENCH_LINEPATTERN_H
#define ZELSENSORS_BENCH_LINEPATTERN_H

constexpr char MESSAGE[] = "SensorProvider::initialise - Initialise Service Driver done, sscode=0x00000000";

// The provider's line in the words of spdlog; ids decimal, which spdlog has no hexadecimal form for.
constexpr char LINE_PATTERN[] = "%d/%m/%Y %H:%M:%S.%e\tP[%P] T[%t]\t%l\t%v";

#endif
