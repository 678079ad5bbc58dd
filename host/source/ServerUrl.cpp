#include "source/ServerUrl.h"

#include <curl/curl.h>

#include <memory>

namespace host {
namespace {

struct UrlCloser {
    void operator()(CURLU* url) const { curl_url_cleanup(url); }
};
using Url = std::unique_ptr<CURLU, UrlCloser>;

struct TextCloser {
    void operator()(char* text) const { curl_free(text); }
};

// Empty where the address has no such part.
std::string partOf(const Url& url, CURLUPart part) {
    char* text = nullptr;
    if (curl_url_get(url.get(), part, &text, 0) != CURLUE_OK) return "";
    const std::unique_ptr<char, TextCloser> owner(text);
    return text;
}

}  // namespace

std::string serverUrl(const std::string& given) {
    const Url url(curl_url());
    if (!url || given.find('\0') != std::string::npos ||
        curl_url_set(url.get(), CURLUPART_URL, given.c_str(), 0) != CURLUE_OK) {
        throw ServerUrlError("that is no address like http://till17:5988");
    }
    const std::string scheme = partOf(url, CURLUPART_SCHEME);
    if (scheme != "http" && scheme != "https") {
        throw ServerUrlError("the address begins neither with http:// nor with https://");
    }
    if (!partOf(url, CURLUPART_USER).empty() || !partOf(url, CURLUPART_PASSWORD).empty()) {
        throw ServerUrlError(
            "a user or password does not belong into the address; give --user, and the password in a "
            "file or when asked");
    }
    const std::string path = partOf(url, CURLUPART_PATH);
    const bool hasMore = !partOf(url, CURLUPART_QUERY).empty() || !partOf(url, CURLUPART_FRAGMENT).empty();
    if ((!path.empty() && path != "/") || hasMore) {
        throw ServerUrlError("the address holds more than a server and its port");
    }
    const std::string port = partOf(url, CURLUPART_PORT);
    const char* usualPort = scheme == "http" ? "5988" : "5989";
    return scheme + "://" + partOf(url, CURLUPART_HOST) + ':' + (port.empty() ? usualPort : port);
}

}  // namespace host
