// The exchanges with object managers in tests/host/cim-xml, and what was asked in each.
#ifndef ZELSENSORS_TESTS_HOST_RECORDEDEXCHANGES_H
#define ZELSENSORS_TESTS_HOST_RECORDEDEXCHANGES_H

#include <string>
#include <vector>

#include "source/CimXmlWriter.h"
#include "source/Request.h"

constexpr const char* FIRST_MESSAGE_ID = "1001";  // of every exchange

// An answer's place, as cim-xml/MANAGER/SCENARIO/OPERATION.answer.
struct Recorded {
    std::string manager;
    std::string scenario;
    std::string operation;

    std::string answer() const;  // the bytes
    std::string body() const;    // without the HTTP header, for those that came in one piece
};
// Of all managers and scenarios that are there, chunked ones too; or of one of each.
std::vector<Recorded> allRecorded();
std::vector<Recorded> recordedOf(const std::string& manager, const std::string& scenario);

struct RecordedRequest {
    std::string scenario;
    std::string operation;
    std::string head;  // the HTTP header
    std::string body;
};
std::vector<RecordedRequest> allRecordedRequests();

// What was asked; "healthy-chunked" is like "healthy".
host::Request requestOf(const std::string& scenario, const std::string& operation);
// The same as the writer makes it.
host::CimXmlRequest writtenRequest(const host::Request& request);

#endif
