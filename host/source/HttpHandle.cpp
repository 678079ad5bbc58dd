#include "source/HttpHandle.h"

#include <cerrno>
#include <cstring>
#include <new>
#include <string_view>
#include <utility>

#include "text/Blanks.h"
#include "text/Utf8.h"

namespace host {
namespace {

// The longest body that is taken.
constexpr std::size_t LARGEST_BODY = std::size_t{32} << 20;

// A server that never ends its headers shall not fill the memory.
constexpr std::size_t MOST_HEADER_BYTES = std::size_t{1} << 20;

constexpr const char* NOTHING_CAME = "ended the connection without an answer; does this port want https?";

void startCurl() {
    static const CURLcode code = curl_global_init(CURL_GLOBAL_DEFAULT);
    if (code != CURLE_OK) throw ServerError(std::string("HTTP is not available: ") + curl_easy_strerror(code));
}

std::string secondsText(std::chrono::milliseconds time) {
    std::string text = std::to_string(time.count() / 1000);
    if (const auto rest = time.count() % 1000; rest != 0) {
        std::string digits = std::to_string(1000 + rest).substr(1);
        digits.erase(digits.find_last_not_of('0') + 1);
        text += '.' + digits;
    }
    return text + " s";
}

CURL* newHandle() {
    startCurl();
    CURL* curl = curl_easy_init();
    if (curl == nullptr) throw ServerError("HTTP is not available");
    return curl;
}

}  // namespace

template <typename Setting>
void HttpHandle::set(CURLoption option, Setting setting) const {
    const CURLcode code = curl_easy_setopt(m_curl, option, setting);
    if (code != CURLE_OK) throw ServerError(std::string("HTTP cannot be set up: ") + curl_easy_strerror(code));
}

template <typename Number>
Number HttpHandle::number(CURLINFO what) const {
    Number value = 0;
    curl_easy_getinfo(m_curl, what, &value);
    return value;
}

std::size_t HttpHandle::takeBody(const char* data, std::size_t /*one*/, std::size_t count, void* user) {
    auto& receipt = *static_cast<Receipt*>(user);
    if (receipt.answer.body.size() + count > LARGEST_BODY) {
        receipt.isTooLong = true;
        return 0;
    }
    receipt.answer.body.append(data, count);
    return count;
}

std::size_t HttpHandle::takeHeader(const char* data, std::size_t /*one*/, std::size_t count, void* user) {
    auto& receipt = *static_cast<Receipt*>(user);
    const std::string_view line(data, count);
    receipt.headerBytes += count;
    if (receipt.headerBytes > MOST_HEADER_BYTES) {
        receipt.isTooLong = true;
        return 0;
    }
    if (line.rfind("HTTP/", 0) == 0) {
        receipt.answer.headers.clear();  // an interim answer, such as 100, came before
        return count;
    }
    const std::size_t colon = line.find(':');
    if (colon == std::string_view::npos) return count;
    receipt.answer.headers.push_back(
        {std::string(withoutBlanks(line.substr(0, colon))), std::string(withoutBlanks(line.substr(colon + 1)))});
    return count;
}

HttpHandle::List HttpHandle::listOf(const std::vector<std::string>& lines) {
    List list;
    for (const std::string& line : lines) {
        curl_slist* longer = curl_slist_append(list.get(), line.c_str());
        if (longer == nullptr) throw std::bad_alloc();
        static_cast<void>(list.release());  // it is in the longer one
        list.reset(longer);
    }
    return list;
}

std::string HttpHandle::timeoutReason() const {
    const std::string time = secondsText(m_access.timeout);
    if (number<curl_off_t>(CURLINFO_CONNECT_TIME_T) > 0) {
        return "gave no whole answer within " + time + "; --timeout gives it longer";
    }
    return "could not be reached within " + time +
           "; is the machine on, and does every firewall between let this port through?";
}

std::string HttpHandle::certificateReason() const {
    const std::string hint = m_access.caFile.empty() ? "; --ca names a file with the certificates to trust"
                                                     : "; it was checked against " + printable(m_access.caFile);
    return "has a certificate that is not trusted (" + printable(m_message.data()) + ')' + hint;
}

std::string HttpHandle::connectionReason() const {
    const auto error = static_cast<int>(number<long>(CURLINFO_OS_ERRNO));
    if (error == ECONNREFUSED) {
        return "refuses the connection; is the object manager running, and does it listen on this port?";
    }
    const std::string cause = error == 0 ? "" : std::string(" (") + std::strerror(error) + ')';
    return "cannot be reached" + cause + "; is the machine on, and does the network lead there?";
}

std::string HttpHandle::reason(CURLcode code) const {
    if (m_receipt.isTooLong) return "sends more than an answer can be (32 MiB, or 1 MiB of headers)";
    switch (code) {
        case CURLE_COULDNT_RESOLVE_HOST:
            return "has a name that is not known here; is it spelled right, and does the name service know it?";
        case CURLE_COULDNT_CONNECT:
            return connectionReason();
        case CURLE_OPERATION_TIMEDOUT:
            return timeoutReason();
        case CURLE_PEER_FAILED_VERIFICATION:
            return certificateReason();
        case CURLE_SSL_CACERT_BADFILE:
            return "is not asked: " + printable(m_access.caFile) + " holds no certificates that can be read";
        case CURLE_SSL_CONNECT_ERROR:
            return "does not speak TLS here (" + printable(m_message.data()) +
                   "); is this the port for https, and not that for http?";
        case CURLE_GOT_NOTHING:
            return NOTHING_CAME;
        case CURLE_RECV_ERROR:
            if (m_receipt.headerBytes == 0) return NOTHING_CAME;
            return "broke its answer off";
        case CURLE_PARTIAL_FILE:
            return "broke its answer off";
        case CURLE_WEIRD_SERVER_REPLY:
        case CURLE_UNSUPPORTED_PROTOCOL:
            return "does not answer in HTTP; is this the port of an object manager?";
        default:
            return std::string("gave no answer: ") +
                   printable(m_message[0] != '\0' ? m_message.data() : curl_easy_strerror(code));
    }
}

HttpHandle::HttpHandle(const ServerAccess& access) : m_access(access), m_curl(newHandle()) {
    set(CURLOPT_NOSIGNAL, 1L);
    set(CURLOPT_ERRORBUFFER, m_message.data());
    set(CURLOPT_WRITEFUNCTION, takeBody);
    set(CURLOPT_HEADERFUNCTION, takeHeader);
    const long milliseconds = access.timeout.count();
    set(CURLOPT_TIMEOUT_MS, milliseconds);
    set(CURLOPT_CONNECTTIMEOUT_MS, milliseconds);
    set(CURLOPT_PROTOCOLS_STR, "http,https");
    set(CURLOPT_PROXY, "");
    if (!access.user.empty()) {
        set(CURLOPT_HTTPAUTH, CURLAUTH_BASIC);
        set(CURLOPT_USERNAME, access.user.c_str());
        set(CURLOPT_PASSWORD, access.password.c_str());
    }
    set(CURLOPT_SSL_VERIFYPEER, access.checksCertificate ? 1L : 0L);
    set(CURLOPT_SSL_VERIFYHOST, access.checksCertificate ? 2L : 0L);
    if (!access.caFile.empty()) {
        set(CURLOPT_CAINFO, access.caFile.c_str());
        set(CURLOPT_CAPATH, static_cast<const char*>(nullptr));
    }
}

HttpHandle::~HttpHandle() {
    curl_easy_cleanup(m_curl);
}

void HttpHandle::prepare(const std::string& url, HttpRequest request) {
    m_access.url = url;
    m_request = std::move(request);
    m_headers = listOf(m_request.headers);
    m_receipt = {};
    m_message[0] = '\0';
    set(CURLOPT_URL, (url + m_request.path).c_str());
    set(CURLOPT_HTTPHEADER, m_headers.get());
    set(CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(m_request.body.size()));
    set(CURLOPT_POSTFIELDS, m_request.body.data());
    set(CURLOPT_WRITEDATA, &m_receipt);
    set(CURLOPT_HEADERDATA, &m_receipt);
}

HttpAnswer HttpHandle::take(CURLcode code) {
    if (code != CURLE_OK) throw ServerError(m_access.url + ' ' + reason(code));
    m_receipt.answer.status = number<long>(CURLINFO_RESPONSE_CODE);
    return std::move(m_receipt.answer);
}

}  // namespace host
