// What the code under test writes through stdio to standard output and standard error, kept in memory. The C library
// lets the two streams be replaced; the descriptors below them, and with them the fuzzer's own reports, are untouched.
#ifndef ZELSENSORS_FUZZ_STREAMS_H
#define ZELSENSORS_FUZZ_STREAMS_H

#include <cstdio>
#include <string>

// One at a time.
class CapturedStreams {
  public:
    CapturedStreams();
    ~CapturedStreams();
    CapturedStreams(const CapturedStreams&) = delete;
    CapturedStreams& operator=(const CapturedStreams&) = delete;

    // Each gives what has been written since the last call or the start.
    std::string takeOutput();
    std::string takeErrors();

  private:
    std::FILE* m_output;
    std::FILE* m_errors;
};

#endif
