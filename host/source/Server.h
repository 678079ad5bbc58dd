#ifndef ZELSENSORS_SOURCE_SERVER_H
#define ZELSENSORS_SOURCE_SERVER_H

#include <functional>
#include <string>

#include "source/CimXmlWriter.h"
#include "source/HttpClient.h"
#include "source/Source.h"

namespace host {

// An object manager, asked by CIM-XML over HTTP as DSP0200 describes it. Nothing is asked before the first request.
//
// Every operation throws ServerError where no usable answer comes. A name that XML cannot carry is not sent: the answer
// then has the status CMPI_RC_ERR_INVALID_PARAMETER, and its message says so. Instances that came before an error are
// in the answer, as far as the manager sends them.
class Server : public Source {
  public:
    using Warning = std::function<void(const std::string&)>;

    // `warn` gets what people should know of answers that can be shown all the same, fit for a terminal, each thing
    // once. Throws ServerError.
    Server(const ServerAccess& access, Warning warn);

    broker::Reply enumerateInstanceNames(const broker::ObjectPath& classPath) override;
    broker::Reply enumerateInstances(const broker::ObjectPath& classPath) override;
    broker::Reply getInstance(const broker::ObjectPath& path) override;
    broker::Reply createInstance(const broker::ObjectPath& classPath, const broker::Instance& instance) override;
    broker::Reply modifyInstance(const broker::ObjectPath& path, const broker::Instance& instance) override;
    broker::Reply deleteInstance(const broker::ObjectPath& path) override;
    broker::Reply execQuery(const broker::ObjectPath& classPath, const std::string& query,
                            const std::string& language) override;

    // Never: a manager is restarted on its own machine.
    bool restart() override { return false; }

  private:
    template <typename Write>
    broker::Reply ask(const Write& write);
    broker::Reply answerTo(const CimXmlRequest& request);

    ServerAccess m_access;
    Warning m_warn;
    HttpClient m_client;
    unsigned m_lastMessage = 1000;
    bool m_hasWarned = false;
};

}  // namespace host

#endif
