// What the provider of this process writes to its log: the cause of its errors.
#ifndef ZELSENSORS_CLI_PROVIDERLOG_H
#define ZELSENSORS_CLI_PROVIDERLOG_H

#include <sys/types.h>

#include <string>

namespace host {

// The provider's own settings, from /etc/tarn/log.conf, read as the provider reads them.
struct LogSettings {
    std::string file = "/var/log/tarn/tarn.log";
    bool isConsole = false;      // the lines go to standard error
    unsigned level = 2;          // 0: off
    off_t maxLength = 10485760;  // bytes, at which nothing more is written
};
LogSettings readLogSettings();

class ProviderLog {
  public:
    // Notes where the log ends: make it before the provider is loaded. `isPrivate`: nobody else sees that log.
    explicit ProviderLog(bool isPrivate);

    // For people, each line with a newline: the lines of level Error that this process has added, the last ten of them
    // after a line that says whose they are; or why they cannot be had. Empty where there are none. `console` is what
    // the provider has written to standard error.
    std::string explanation(const std::string& console) const;

  private:
    std::string explanationOfFile() const;

    LogSettings m_settings;
    bool m_isPrivate;
    dev_t m_device = 0;  // of the file at the beginning, and how much it held
    ino_t m_inode = 0;
    off_t m_size = 0;
};

}  // namespace host

#endif
