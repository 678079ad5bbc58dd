// What this process writes to a descriptor, taken aside into a file while the object lives.
#ifndef ZELSENSORS_TESTS_OUTPUTCAPTURE_H
#define ZELSENSORS_TESTS_OUTPUTCAPTURE_H

#include <string>

class OutputCapture {
  public:
    explicit OutputCapture(int descriptor);  // STDOUT_FILENO or STDERR_FILENO; the stdio stream is flushed first
    ~OutputCapture();
    OutputCapture(const OutputCapture&) = delete;
    OutputCapture& operator=(const OutputCapture&) = delete;

    // Flushes the stream and gives what has been written since the start or the last take().
    std::string take();

  private:
    int m_descriptor;
    int m_saved;
    int m_file;
};

#endif
