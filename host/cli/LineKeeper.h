// A source whose provider writes lines of its own: keeps those of the last failure, however long it is asked.
#ifndef ZELSENSORS_CLI_LINEKEEPER_H
#define ZELSENSORS_CLI_LINEKEEPER_H

#include <string>
#include <vector>

#include "cli/ProviderOutput.h"
#include "source/Source.h"

namespace host {

// Passes every request on. Both must outlive this object.
class LineKeeper : public Source {
  public:
    LineKeeper(Source& source, ProviderOutput& output) : m_source(source), m_output(output) {}

    // What the provider wrote while it answered the last request that failed.
    const std::string& linesOfFailure() const { return m_linesOfFailure; }

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
};

}  // namespace host

#endif
