#include <benchmark/benchmark.h>

#include <exception>

#include "Silence.h"

int main(int argc, char** argv) {
    Silence silence;
    try {
        benchmark::Initialize(&argc, argv);
        benchmark::ConsoleReporter reporter(benchmark::ConsoleReporter::OO_Tabular);
        reporter.SetOutputStream(&silence.output);
        reporter.SetErrorStream(&silence.errors);
        return benchmark::RunSpecifiedBenchmarks(&reporter) == 0 ? 1 : 0;
    } catch (const std::exception& error) {
        silence.errors << error.what() << "\n";
        return 1;
    }
}
