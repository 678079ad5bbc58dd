// A provider loaded into this process, as an object manager loads it.
#ifndef ZELSENSORS_SOURCE_SESSION_H
#define ZELSENSORS_SOURCE_SESSION_H

#include <memory>
#include <string>

#include "broker/Broker.h"
#include "broker/ProviderLibrary.h"
#include "source/Source.h"

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
class Session : public Source {
  public:
    // `providerName` is the name that the provider's factory bears. Throws broker::LoadError.
    Session(const LibraryChoice& choice, const std::string& providerName);

    broker::Reply enumerateInstanceNames(const broker::ObjectPath& classPath) override;
    broker::Reply enumerateInstances(const broker::ObjectPath& classPath) override;
    broker::Reply getInstance(const broker::ObjectPath& path) override;
    broker::Reply createInstance(const broker::ObjectPath& classPath, const broker::Instance& instance) override;
    broker::Reply modifyInstance(const broker::ObjectPath& path, const broker::Instance& instance) override;
    broker::Reply deleteInstance(const broker::ObjectPath& path) override;
    broker::Reply execQuery(const broker::ObjectPath& classPath, const std::string& query,
                            const std::string& language) override;

    // Cleans the provider up, unloads it and loads it again; the chip library stays. True, but where loading fails:
    // then it throws broker::LoadError, and so does every later request.
    bool restart() override;

  private:
    struct Loaded {
        Loaded(const std::string& path, const std::string& providerName, broker::Broker& broker)
            : library(path), provider(library, providerName, broker) {}
        broker::ProviderLibrary library;
        broker::InstanceProvider provider;
    };
    broker::InstanceProvider& provider();

    std::string m_path;
    std::string m_providerName;
    ChipLibrary m_chip;
    broker::Broker m_broker;
    std::unique_ptr<Loaded> m_loaded;  // null where loading it anew has failed
};

}  // namespace host

#endif
