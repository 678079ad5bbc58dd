// Requests to an object manager as XML, by DSP0201 (the elements) and DSP0200 (the operations and their parameters).
#ifndef ZELSENSORS_SOURCE_CIMXMLWRITER_H
#define ZELSENSORS_SOURCE_CIMXMLWRITER_H

#include <stdexcept>
#include <string>

#include "broker/Model.h"

namespace host {

// One operation, ready to be sent.
struct CimXmlRequest {
    std::string messageId;      // the answer carries the same
    std::string method;         // "GetInstance"
    broker::ObjectPath object;  // the class or the instance that is asked for
    std::string body;           // UTF-8
};

// A name or value that XML cannot carry: no UTF-8, or with control characters. what() says which one.
class UnsendableError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

// Each throws UnsendableError. Paths need no host; class paths no keys.
CimXmlRequest enumerateInstanceNamesXml(const std::string& messageId, const broker::ObjectPath& classPath);
CimXmlRequest enumerateInstancesXml(const std::string& messageId, const broker::ObjectPath& classPath);
CimXmlRequest getInstanceXml(const std::string& messageId, const broker::ObjectPath& path);
CimXmlRequest createInstanceXml(const std::string& messageId, const broker::ObjectPath& classPath,
                                const broker::Instance& instance);
CimXmlRequest modifyInstanceXml(const std::string& messageId, const broker::ObjectPath& path,
                                const broker::Instance& instance);
CimXmlRequest deleteInstanceXml(const std::string& messageId, const broker::ObjectPath& path);
CimXmlRequest execQueryXml(const std::string& messageId, const broker::ObjectPath& classPath, const std::string& query,
                           const std::string& language);

}  // namespace host

#endif
