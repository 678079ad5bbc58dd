// CIM-XML over HTTP, as DSP0200 describes it.
#ifndef ZELSENSORS_SOURCE_CIMXMLOVERHTTP_H
#define ZELSENSORS_SOURCE_CIMXMLOVERHTTP_H

#include "source/CimXmlReader.h"
#include "source/CimXmlWriter.h"
#include "source/Http.h"

namespace host {

HttpRequest httpRequestOf(const CimXmlRequest& request);

// What the server, which was asked with this access, answers to the request. Throws ServerError for what is no usable
// answer.
CimXmlAnswer cimXmlAnswerIn(const HttpAnswer& answer, const CimXmlRequest& request, const ServerAccess& access);

// What to say of an answer that has unfit texts.
std::string unfitTextWarning(const std::string& url);

}  // namespace host

#endif
