// Standard output and standard error, led elsewhere.
#ifndef ZELSENSORS_TESTS_STREAMSTO_H
#define ZELSENSORS_TESTS_STREAMSTO_H

// While it lives, both lead to this descriptor, which it closes.
class StreamsTo {
  public:
    explicit StreamsTo(int descriptor);
    ~StreamsTo();
    StreamsTo(const StreamsTo&) = delete;
    StreamsTo& operator=(const StreamsTo&) = delete;

    // What is written there is gone.
    static int nowhere();

  private:
    int m_output;
    int m_error;
};

#endif
