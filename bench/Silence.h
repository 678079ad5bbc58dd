// Where the provider's diagnostics go while it is measured.
#ifndef ZELSENSORS_BENCH_SILENCE_H
#define ZELSENSORS_BENCH_SILENCE_H

#include <ext/stdio_filebuf.h>
#include <ostream>

class Silence {
    // Before the streams that use them.
    __gnu_cxx::stdio_filebuf<char> m_output;
    __gnu_cxx::stdio_filebuf<char> m_errors;

  public:
    // Enters the private directories (see Sandbox.h) with a log without a limit, and sends standard output and standard
    // error to /dev/null from then on. Exits the program with a message where there can be no private directories: the
    // machine's own are never touched.
    Silence();
    Silence(const Silence&) = delete;
    Silence& operator=(const Silence&) = delete;

    // To where standard output and standard error led.
    std::ostream output;
    std::ostream errors;
};

#endif
