// The reader of /etc/tarn/sensor.conf. The input is the file. The switch, and the lines that go to standard error, must
// be what a second, naive reading of the rules gives; the file must be closed.
#include <AdditionalInfo.h>

#include <cstddef>
#include <cstdint>
#include <string>

#include "ConfigurationFiles.h"
#include "NaiveSettings.h"
#include "Property.h"
#include "Streams.h"

namespace {

struct Reading {
    int nvmeReadings;
    std::string errors;
};

Reading naive(const std::string& file, int before) {
    Reading reading{before, ""};
    for (const auto& [key, value] : naiveSettings(file)) {
        unsigned long number = 0;
        if (key != "NvmeReadings") {
            reading.errors += " Sensor configs not found.\n";
        } else if (naiveNumber(value, number) && (number == 0 || number == 1)) {
            reading.nvmeReadings = number == 1 ? 1 : 0;
        }
    }
    return reading;
}

void check(const std::string& file, int before) {
    CapturedStreams streams;
    AdditionalInfo additional;
    int nvmeReadings = before;
    additional.getConfig(nvmeReadings);
    const Reading expected = naive(file, before);
    requireSame(nvmeReadings, expected.nvmeReadings, "the switch");
    requireSame(streams.takeErrors(), expected.errors, "standard error");
    requireSame(streams.takeOutput(), "", "standard output");
    require(configuration::openStreams() == 0, "the configuration file is closed");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string file(data, data + size);
    configuration::setSensorFile(file);
    check(file, 7);  // 7: shows whether the switch was written at all
    configuration::setSensorFile(std::nullopt);
    check("", 7);
    return 0;
}
