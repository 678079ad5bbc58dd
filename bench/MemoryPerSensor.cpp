// What the heap holds for each sensor while the provider is up, without what the simulated chip holds. Prints a line
// for each number of sensors: the number, a tab, the bytes per sensor.
#include <malloc.h>

#include <exception>
#include <stdexcept>

#include "Silence.h"
#include "Stage.h"
#include "Terminal.h"
#include "chip.h"

namespace {

long heapInUse() {
    const struct mallinfo2 heap = mallinfo2();
    return static_cast<long>(heap.uordblks + heap.hblkhd);
}

long chipAlone(int sensors) {
    playTerminal(sensors);
    const long before = heapInUse();
    CChip chip;
    if (chip.Initialise() != 0) throw std::runtime_error("the simulated chip cannot be initialised");
    return heapInUse() - before;
}

long provider(const broker::ProviderLibrary& library, broker::Broker& broker, int sensors) {
    playTerminal(sensors);
    const long before = heapInUse();
    const broker::InstanceProvider made(library, "SensorProvider", broker);
    return heapInUse() - before;
}

}  // namespace

int main() {
    Silence silence;
    try {
        broker::Broker broker;
        const broker::ProviderLibrary library(PROVIDER_LIBRARY);
        provider(library, broker, 1);  // what stays from the first start on is not the sensors'
        for (const int sensors : {10, 100, 1000}) {
            silence.output << sensors << "\t" << (provider(library, broker, sensors) - chipAlone(sensors)) / sensors
                           << "\n";
        }
    } catch (const std::exception& error) {
        silence.errors << error.what() << "\n";
        return 1;
    }
}
