// What an HTTP server is asked, and what it answers.
#ifndef ZELSENSORS_SOURCE_HTTP_H
#define ZELSENSORS_SOURCE_HTTP_H

#include <chrono>
#include <stdexcept>
#include <string>
#include <vector>

namespace host {

// No usable answer came; what() is a sentence that names the server and says what may help, fit for a terminal. It
// never holds a password.
class ServerError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

// Which server, and how it is asked.
struct ServerAccess {
    std::string url;   // "https://till17:5989": scheme, host and port, nothing else
    std::string user;  // empty: none is named
    std::string password;
    std::string caFile;                        // certificates to trust instead of the system's; empty: the system's
    bool checksCertificate = true;             // false: any certificate and any name in it will do
    std::chrono::milliseconds timeout{30000};  // for a whole request, from the search for the name to the last byte
};

// Sent by POST.
struct HttpRequest {
    std::string path;
    std::vector<std::string> headers;  // "Name: value"
    std::string body;
};

struct HttpAnswer {
    struct Header {
        std::string name;
        std::string value;
    };
    long status = 0;
    std::vector<Header> headers;  // those of the trailer too, behind the others
    std::string body;

    // The value of the last such header, in any case; empty where there is none.
    std::string header(const std::string& name) const;
};

// As a header may hold it: each byte but unreserved ASCII characters as %NN.
std::string percentEncoded(const std::string& text);
// The opposite; what is no %NN stays.
std::string percentDecoded(const std::string& text);

}  // namespace host

#endif
