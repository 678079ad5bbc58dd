// An object manager that answers from what is recorded of one.
#ifndef ZELSENSORS_TESTS_HOST_REPLAY_H
#define ZELSENSORS_TESTS_HOST_REPLAY_H

#include <string>

#include "RawServer.h"

// The body of the recorded answer to the request with this body, under the request's message id. A single instance that
// was not asked for while recording is taken from the recorded enumeration. Throws where nothing fits.
std::string replayedBody(const std::string& manager, const std::string& scenario, const std::string& requestBody);

// Answers so to all requests of each connection.
RawServer::Behaviour replaying(const std::string& manager, const std::string& scenario);

#endif
