// The provider's own lines, kept apart from ours.
#ifndef ZELSENSORS_CLI_PROVIDEROUTPUT_H
#define ZELSENSORS_CLI_PROVIDEROUTPUT_H

#include <string>

namespace host {

// While it lives, what is written to the process's standard output and standard error (descriptors 1 and 2, which is
// where the provider and the chip library write) goes elsewhere, and the real ones are reached through descriptors of
// ours, which no child inherits. One at a time.
class ProviderOutput {
  public:
    // An empty destination: collected up to endStart(), then discarded. "-": collected to the end. Otherwise a file,
    // replaced. Throws UsageError when the file cannot be written, having changed nothing.
    explicit ProviderOutput(const std::string& destination);
    // Gives the descriptors back.
    ~ProviderOutput();
    ProviderOutput(const ProviderOutput&) = delete;
    ProviderOutput& operator=(const ProviderOutput&) = delete;

    // The real ones; -1 where the process was started without.
    int standardOutput() const { return m_output; }
    int standardError() const { return m_error; }

    // The provider's start is over: with an empty destination nothing more is collected, however long it runs.
    void endStart();

    // What has been collected so far, in the order written; always empty where it goes to a file.
    std::string collected() const;

  private:
    bool m_isCollecting;
    int m_sink;
    int m_nowhere;  // -1 unless the sink is for the start alone
    int m_output;
    int m_error;
};

}  // namespace host

#endif
