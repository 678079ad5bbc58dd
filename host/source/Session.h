// A provider loaded into this process, as an object manager loads it.
#ifndef ZELSENSORS_SOURCE_SESSION_H
#define ZELSENSORS_SOURCE_SESSION_H

#include <memory>
#include <string>

#include "broker/Broker.h"
#include "broker/ProviderLibrary.h"
#include "source/Source.h"

namespace host {

// A loaded and initialised provider, as long as it is asked. The end cleans it up and unloads it.
class Session : public Source {
  public:
    // The provider's library, and the name that its factory bears. Its chip library is there already. Throws
    // broker::LoadError.
    Session(std::string path, std::string providerName);

    broker::Reply enumerateInstanceNames(const broker::ObjectPath& classPath) override;
    broker::Reply enumerateInstances(const broker::ObjectPath& classPath) override;
    broker::Reply getInstance(const broker::ObjectPath& path) override;
    broker::Reply createInstance(const broker::ObjectPath& classPath, const broker::Instance& instance) override;
    broker::Reply modifyInstance(const broker::ObjectPath& path, const broker::Instance& instance) override;
    broker::Reply deleteInstance(const broker::ObjectPath& path) override;
    broker::Reply execQuery(const broker::ObjectPath& classPath, const std::string& query,
                            const std::string& language) override;

    // Cleans the provider up, unloads it and loads it again. True, but where loading fails:
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
    broker::Broker m_broker;
    std::unique_ptr<Loaded> m_loaded;  // null where loading it anew has failed
};

}  // namespace host

#endif
