#ifndef ZELSENSORS_SOURCE_SERVERURL_H
#define ZELSENSORS_SOURCE_SERVERURL_H

#include <stdexcept>
#include <string>

namespace host {

// What was given is no server's address; what() says what is missing or too much, without repeating it, since there may
// be a password in it.
class ServerUrlError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

// "http://till17:5988" for "http://till17", "https://till17:5989" for "HTTPS://till17/": scheme, host and port alone,
// the port being the one that DSP0200 gives the scheme where none is named. Throws ServerUrlError.
std::string serverUrl(const std::string& given);

}  // namespace host

#endif
