// Who is asked: a provider loaded here, or an object manager elsewhere.
#ifndef ZELSENSORS_SOURCE_SOURCE_H
#define ZELSENSORS_SOURCE_SOURCE_H

#include <string>

#include "broker/Model.h"
#include "source/Request.h"

namespace host {

// Every operation is one CIM request; its answer stays valid after the source. A class path has no keys. A request that
// fails is a status in the answer; what the source itself cannot do is thrown, as each source says. Not for two threads
// at a time.
class Source {
  public:
    virtual ~Source();

    virtual broker::Reply enumerateInstanceNames(const broker::ObjectPath& classPath) = 0;
    virtual broker::Reply enumerateInstances(const broker::ObjectPath& classPath) = 0;
    virtual broker::Reply getInstance(const broker::ObjectPath& path) = 0;
    virtual broker::Reply createInstance(const broker::ObjectPath& classPath, const broker::Instance& instance) = 0;
    virtual broker::Reply modifyInstance(const broker::ObjectPath& path, const broker::Instance& instance) = 0;
    virtual broker::Reply deleteInstance(const broker::ObjectPath& path) = 0;
    virtual broker::Reply execQuery(const broker::ObjectPath& classPath, const std::string& query,
                                    const std::string& language) = 0;

    // After status 16 (a provider whose start failed does not try again): unloads what answered and loads it anew.
    // False where this source cannot.
    virtual bool restart() = 0;

  protected:
    Source() = default;
    Source(const Source&) = default;
    Source& operator=(const Source&) = default;
};

// The one request that a command stands for; verify, doctor, watch and the commands of the model make many of their
// own.
broker::Reply ask(Source& source, const Request& request);

}  // namespace host

#endif
