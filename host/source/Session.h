// A provider loaded into this process, as an object manager loads it.
#ifndef ZELSENSORS_SOURCE_SESSION_H
#define ZELSENSORS_SOURCE_SESSION_H

#include <string>

#include "broker/Broker.h"
#include "broker/ProviderLibrary.h"
#include "source/Request.h"

namespace host {

// What is to be loaded, and with which scenario.
struct LibraryChoice {
    std::string provider;
    std::string chip;      // a path; empty: the loader finds the system's
    bool isChipSimulated;  // the tree's own simulated chip library
    std::string scenario;  // a file; empty: as the environment says
};

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
    // `providerName` is the name that the provider's factory bears. Throws broker::LoadError.
    Session(const LibraryChoice& choice, const std::string& providerName);

    // The answer stays valid after the session.
    broker::Reply ask(const Request& request);

    // For requests of other kinds, as long as the session.
    broker::InstanceProvider& provider() { return m_provider; }

  private:
    ChipLibrary m_chip;
    broker::Broker m_broker;
    broker::ProviderLibrary m_library;
    broker::InstanceProvider m_provider;
};

}  // namespace host

#endif
