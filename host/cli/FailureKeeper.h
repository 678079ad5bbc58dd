// A source that is asked again and again: keeps what there is to say of its last failure, however long it is asked.
#ifndef ZELSENSORS_CLI_FAILUREKEEPER_H
#define ZELSENSORS_CLI_FAILUREKEEPER_H

#include <string>
#include <vector>

#include "cli/ProviderOutput.h"
#include "source/Source.h"

namespace host {

// Passes every request on. Where a server gives no usable answer (ServerError), the answer has the status
// CMPI_RC_ERROR_SYSTEM and the reason as its message. Both must outlive this object.
class FailureKeeper : public Source {
  public:
    FailureKeeper(Source& source, ProviderOutput& output) : m_source(source), m_output(output) {}

    // What the provider wrote while it answered the last request that failed.
    const std::string& linesOfFailure() const { return m_linesOfFailure; }
    // The status stands for a request that had no usable answer, and its message is the reason.
    bool isUnanswered(const broker::Status& status) const {
        return m_hasUnanswered && status.rc == CMPI_RC_ERROR_SYSTEM;
    }

    broker::Reply enumerateInstanceNames(const broker::ObjectPath& classPath) override;
    broker::Reply enumerateInstances(const broker::ObjectPath& classPath) override;
    broker::Reply getInstance(const broker::ObjectPath& path) override;
    broker::Reply createInstance(const broker::ObjectPath& classPath, const broker::Instance& instance) override;
    broker::Reply modifyInstance(const broker::ObjectPath& path, const broker::Instance& instance) override;
    broker::Reply deleteInstance(const broker::ObjectPath& path) override;
    broker::Reply execQuery(const broker::ObjectPath& classPath, const std::string& query,
                            const std::string& language) override;
    bool restart() override { return m_source.restart(); }

  private:
    template <typename Ask>
    broker::Reply kept(Ask ask);

    Source& m_source;
    ProviderOutput& m_output;
    std::string m_linesOfFailure;
    bool m_hasUnanswered = false;
};

}  // namespace host

#endif
