// Answers of an object manager as XML, by DSP0201. A manager is not trusted: what is no answer to the request is
// refused with a sentence, and nothing in it (nesting, entities, encodings) makes the reader do more than read.
#ifndef ZELSENSORS_SOURCE_CIMXMLREADER_H
#define ZELSENSORS_SOURCE_CIMXMLREADER_H

#include <stdexcept>
#include <string>

#include "broker/Model.h"
#include "source/CimXmlWriter.h"

namespace host {

// The text is no answer to the request; what() says why, fit for a terminal.
class AnswerError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

struct CimXmlAnswer {
    broker::Reply reply;  // an ERROR element is its status; its lists may hold something beside it
    // A text holds bytes that are no UTF-8, or control characters, which XML forbids and managers pass on. The texts
    // hold them as they came.
    bool hasUnfitText = false;
};

// Reads the answer to `request`. Values have the types that the answer declares; a property without a value is null.
// Paths without a namespace get the request's, and a single instance gets the path that was asked for. Entities that
// XML does not define stay as they are written. Throws AnswerError.
CimXmlAnswer readCimXml(const std::string& body, const CimXmlRequest& request);

}  // namespace host

#endif
