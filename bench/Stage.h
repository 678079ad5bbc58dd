// The provider and its floor, side by side on one broker and one simulated terminal.
#ifndef ZELSENSORS_BENCH_STAGE_H
#define ZELSENSORS_BENCH_STAGE_H

#include <map>
#include <memory>
#include <optional>

#include "Floor.h"
#include "broker/Broker.h"
#include "broker/ProviderLibrary.h"

class Stage {
  public:
    // Loads the library and stops the clock (FakeClock.h). Throws broker::LoadError, and std::runtime_error when
    // provider and floor do not make the same broker calls with the same values: there would be nothing to compare.
    Stage();
    Stage(const Stage&) = delete;
    Stage& operator=(const Stage&) = delete;

    // The program's one stage, made when it is first asked for.
    static Stage& get();

    // Gives both so many sensors; takes time only when there were not as many before. Right after it no sensor is due.
    void setSensors(int count);
    void advanceToNextReading();  // every sensor is due after it

    CMPIInstanceMI* provider() { return m_provider->mi(); }
    CMPIInstanceMI* floor() { return m_floors.at(m_count)->mi(); }

    // One request each, as an object manager makes it. The last is for the sensor at a position, counted from 0. Throw
    // std::runtime_error when the request fails.
    void askNames(CMPIInstanceMI* mi);
    void askInstances(CMPIInstanceMI* mi);
    void askInstance(CMPIInstanceMI* mi, int position);

    // Makes a provider object and throws it away; setSensors() afterwards makes its own anew.
    void startAndStop(int sensors);

  private:
    broker::Broker m_broker;
    broker::ProviderLibrary m_library;
    std::optional<broker::InstanceProvider> m_provider;
    std::map<int, std::unique_ptr<Floor>> m_floors;  // by their number of sensors
    int m_count = 0;                                 // of m_provider
};

#endif
