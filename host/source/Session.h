#ifndef ZELSENSORS_SOURCE_SESSION_H
#define ZELSENSORS_SOURCE_SESSION_H

#include <string>

#include "broker/Broker.h"
#include "broker/ProviderLibrary.h"
#include "cli/Locations.h"
#include "cli/Options.h"

namespace host {

// The chip library, loaded before the provider: a library that needs libzelchip.so.0 gets the one that is there
// already.
class ChipLibrary {
  public:
    // An empty path loads nothing, and leaves the choice to the loader. Throws broker::LoadError.
    explicit ChipLibrary(const std::string& path);
    ~ChipLibrary();
    ChipLibrary(const ChipLibrary&) = delete;
    ChipLibrary& operator=(const ChipLibrary&) = delete;

  private:
    void* m_handle = nullptr;
};

// A loaded and initialised provider, as long as it is asked. The end cleans it up and unloads it.
class Session {
  public:
    // Throws broker::LoadError.
    Session(const Options& options, const Choice& choice);

    // One request, as the options ask. The answer stays valid after the session.
    broker::Reply request();

    // For requests of other kinds, as long as the session.
    broker::InstanceProvider& provider() { return m_provider; }

  private:
    const Options& m_options;
    ChipLibrary m_chip;
    broker::Broker m_broker;
    broker::ProviderLibrary m_library;
    broker::InstanceProvider m_provider;
};

}  // namespace host

#endif
