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
    // An empty destination: collected, until forget(). "-": collected to the end. Otherwise a file, replaced. Throws
    // UsageError when the file cannot be written, having changed nothing.
    explicit ProviderOutput(const std::string& destination);
    // Gives the descriptors back.
    ~ProviderOutput();
    ProviderOutput(const ProviderOutput&) = delete;
    ProviderOutput& operator=(const ProviderOutput&) = delete;

    // The real ones; -1 where the process was started without.
    int standardOutput() const { return m_output; }
    int standardError() const { return m_error; }

    // The provider's start is over: with an empty destination its lines are in start() from now on, and collected() has
    // what follows.
    void endStart();
    const std::string& start() const { return m_start; }

    // What has been collected so far, in the order written; always empty where it goes to a file.
    std::string collected() const;
    // With an empty destination, begins to collect anew, so that it does not grow however long the provider runs.
    void forget();

  private:
    bool m_isCollecting;
    bool m_isForgetful;  // an empty destination
    int m_sink;
    std::string m_start;
    int m_output;
    int m_error;
};

}  // namespace host

#endif
