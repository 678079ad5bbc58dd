// Loading and driving an instance provider as an object manager does.
#ifndef ZELSENSORS_BROKER_PROVIDERLIBRARY_H
#define ZELSENSORS_BROKER_PROVIDERLIBRARY_H

#include <stdexcept>
#include <string>
#include <vector>

#include "broker/Broker.h"

namespace broker {

// The library or its factory cannot be had; what() says why, with the path.
class LoadError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

// A provider library, loaded with RTLD_NOW and RTLD_GLOBAL (as one object manager does) and unloaded at the end.
class ProviderLibrary {
  public:
    // A path with a slash is taken as it is, another is searched as dlopen does. Throws LoadError.
    explicit ProviderLibrary(const std::string& path);
    ~ProviderLibrary();
    ProviderLibrary(const ProviderLibrary&) = delete;
    ProviderLibrary& operator=(const ProviderLibrary&) = delete;

    using Factory = CMPIInstanceMI* (*)(const CMPIBroker*, const CMPIContext*, CMPIStatus*);
    // <providerName>_Create_InstanceMI. Throws LoadError where the library has none.
    Factory factory(const std::string& providerName) const;
    const std::string& path() const { return m_path; }

  private:
    std::string m_path;
    void* m_handle;
};

// An instance provider made by its factory, which is called in the constructor. Each operation is one request of its
// own: the objects made in it are freed before the operation returns. The library and the broker must outlive this
// object.
class InstanceProvider {
  public:
    // Throws LoadError when there is no factory, or when it answers null or a status other than 0.
    InstanceProvider(const ProviderLibrary& library, const std::string& providerName, Broker& broker);
    // Calls cleanup (terminating true) unless cleanUp has been called and was not put off (codes 50 and 51).
    ~InstanceProvider();
    InstanceProvider(const InstanceProvider&) = delete;
    InstanceProvider& operator=(const InstanceProvider&) = delete;

    // An empty list of property names means all.
    Reply enumerateInstanceNames(const ObjectPath& classPath);
    Reply enumerateInstances(const ObjectPath& classPath, const std::vector<std::string>& properties = {});
    Reply getInstance(const ObjectPath& path, const std::vector<std::string>& properties = {});
    Reply createInstance(const ObjectPath& classPath, const Instance& instance);
    Reply modifyInstance(const ObjectPath& path, const Instance& instance,
                         const std::vector<std::string>& properties = {});
    Reply deleteInstance(const ObjectPath& path);
    Reply execQuery(const ObjectPath& classPath, const std::string& query, const std::string& language);
    Status cleanUp(bool terminating);

    CMPIInstanceMI* mi() const { return m_mi; }

  private:
    Broker& m_broker;
    CMPIInstanceMI* m_mi;
    bool m_cleanedUp = false;
};

}  // namespace broker

#endif
