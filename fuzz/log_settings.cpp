// The reader of /etc/tarn/log.conf. The input is the file. What the sink makes of it must be what a second, naive
// reading of the rules gives, and the file must be closed.
#include <LogHandler.h>

#include <cstddef>
#include <cstdint>
#include <string>

#include "ConfigurationFiles.h"
#include "NaiveSettings.h"
#include "Property.h"

namespace {

struct Settings {
    unsigned long level = 2;
    std::string fileName = "/var/log/tarn/tarn.log";
    unsigned long maxLength = 10485760;
    bool isConsole = false;
};

Settings naive(const std::string& file) {
    Settings settings;
    for (const auto& [key, value] : naiveSettings(file)) {
        unsigned long number = 0;
        if (key == "FileName" && value != "") settings.fileName = value;
        if (key == "IsConsole" && (value[0] == '1' || value[0] == 'T' || value[0] == 't')) settings.isConsole = true;
        if (key == "Level" && naiveNumber(value, number) && number < 5) settings.level = number;
        if (key == "MaxLength" && naiveNumber(value, number)) settings.maxLength = number < 4096 ? 4096 : number;
    }
    return settings;
}

class OpenHandler : public FileLogHandler {
  public:
    void compare(const Settings& expected) const {
        requireSame(m_level, static_cast<long long>(expected.level), "the level");
        requireSame(m_fileName, expected.fileName, "the file's name");
        requireSame(std::to_string(m_maxLength), std::to_string(expected.maxLength), "the greatest length");
        requireSame(m_isConsole, expected.isConsole, "the console switch");
        require(m_file == nullptr && !m_stopped, "no log file is opened by reading the configuration");
    }
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string file(data, data + size);
    configuration::setLogFile(file);
    OpenHandler handler;
    handler.compare(naive(file));
    handler.GetConfig();  // the defaults come back before the file is applied again
    handler.compare(naive(file));
    configuration::setLogFile(std::nullopt);
    handler.GetConfig();
    handler.compare(Settings());
    require(configuration::openStreams() == 0, "the configuration file is closed");
    return 0;
}
